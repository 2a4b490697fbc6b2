#pragma once

#include "tools/failure.h"

namespace talvik::ctl {

/// Exit status of every command; docs/talvikctl.md has the table for users.
constexpr int kExitGood = 0;
constexpr int kExitBad = 1;       ///< refused or failed, or what was looked at has faults
constexpr int kExitUsage = 2;     ///< wrong usage, or a file that the command needs cannot be used
constexpr int kExitNoAnswer = 3;  ///< no answer, or none that can be used

/// Whether the next request to the same peer would fail as well.
constexpr bool isForWantOfAnAnswer(Failure::Kind kind)
{
    return kind == Failure::Kind::Connection || kind == Failure::Kind::NoAnswer;
}

/// The exit status of a command that ended with a failure of that kind.
constexpr int exitStatusOf(Failure::Kind kind)
{
    return isForWantOfAnAnswer(kind) ? kExitNoAnswer : kExitBad;
}

}  // namespace talvik::ctl
