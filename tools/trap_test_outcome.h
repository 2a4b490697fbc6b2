#pragma once

#include "tools/receiver_status.h"

#include <string>

namespace talvik::ctl {

/// What is known of a test notification.
enum class TestOutcome {
    Open,          ///< it waits, or is on its way without an answer
    Sent,          ///< a trap was handed to the network; nothing tells whether it arrived
    Acknowledged,  ///< the receiver acknowledged the inform
    Failed,        ///< it could not be sent, or the inform was refused or given up
};

/// For programs: "waiting", "sent", "acknowledged", "failed".
std::string outcomeName(TestOutcome outcome);

/// What became of a notification that was queued for the receiver when it was as in `before`. What
/// waited then goes first, so it is counted off; on a busy receiver the state tells how the last
/// one fared.
TestOutcome testOutcome(const ReceiverStatus& before, const ReceiverStatus& now);

}  // namespace talvik::ctl
