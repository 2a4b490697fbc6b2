#include "tools/trap_test_outcome.h"

#include "tools/receiver_output.h"

#include <cstdint>

namespace talvik::ctl {

namespace {

/// Counters begin at 0 again when the agent restarts or the row is changed.
std::uint64_t countedSince(std::uint64_t before, std::uint64_t now)
{
    return now >= before ? now - before : now;
}

}  // namespace

std::string outcomeName(TestOutcome outcome)
{
    switch (outcome) {
    case TestOutcome::Open:
        return "waiting";
    case TestOutcome::Sent:
        return "sent";
    case TestOutcome::Acknowledged:
        return "acknowledged";
    case TestOutcome::Failed:
        break;
    }
    return "failed";
}

TestOutcome testOutcome(const ReceiverStatus& before, const ReceiverStatus& now)
{
    const auto good = now.inform ? countedSince(before.answered, now.answered)
                                 : countedSince(before.sent, now.sent);
    const auto bad =
        countedSince(before.failed, now.failed) + countedSince(before.givenUp, now.givenUp);
    const bool ended = good + bad > before.waiting || (good + bad != 0 && now.waiting == 0);
    if (!ended) {
        return TestOutcome::Open;
    }
    if (good == 0 || (bad != 0 && isInTrouble(now))) {
        return TestOutcome::Failed;
    }
    return now.inform ? TestOutcome::Acknowledged : TestOutcome::Sent;
}

}  // namespace talvik::ctl
