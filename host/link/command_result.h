#pragma once

#include <string>

namespace talvik {

/// What a command's result, the back end's or the link's own, comes to for who asked.
enum class CommandOutcome {
    Done,
    NoSuchAlarm,
    BadRequest,   ///< the back end does not take what was asked
    Unavailable,  ///< the back end cannot be reached, or has no room; it may work later
    Failed
};

/// What `result` comes to; `Failed` for a number that nobody knows.
CommandOutcome outcomeOf(int result);

/// A result other than 0 in words and as a number, for a log line:
/// "no alarm with that serial number is active (0x1000014)".
std::string reasonOf(int result);

}  // namespace talvik
