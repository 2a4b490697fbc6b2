#include "tools/trap_test_outcome.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace talvik::ctl;

ReceiverStatus status(bool inform, std::uint64_t good, std::uint64_t bad, std::uint64_t waiting,
                      const std::string& state = "ok")
{
    ReceiverStatus status;
    status.inform = inform;
    status.sent = inform ? good + bad + waiting : good;
    status.answered = inform ? good : 0;
    status.givenUp = inform ? bad : 0;
    status.failed = inform ? 0 : bad;
    status.waiting = waiting;
    status.state = state;
    return status;
}

struct Case {
    const char* name;
    ReceiverStatus before;
    ReceiverStatus now;
    TestOutcome outcome;

    friend std::ostream& operator<<(std::ostream& os, const Case& row) { return os << row.name; }
};

const Case kCases[] = {
    {"TrapOnItsWay", status(false, 5, 1, 0), status(false, 5, 1, 1), TestOutcome::Open},
    {"TrapSent", status(false, 5, 1, 0), status(false, 6, 1, 0), TestOutcome::Sent},
    {"TrapThatCannotBeSent", status(false, 5, 1, 0), status(false, 5, 2, 0, "no route"),
     TestOutcome::Failed},
    {"TrapBehindOthers", status(false, 5, 0, 2), status(false, 7, 0, 1), TestOutcome::Open},
    {"TrapAfterOthers", status(false, 5, 0, 2), status(false, 8, 0, 0), TestOutcome::Sent},
    {"TrapAfterOthersThatFailed", status(false, 5, 0, 2), status(false, 6, 2, 0),
     TestOutcome::Sent},
    {"TrapThatFailedAfterOthers", status(false, 5, 0, 2), status(false, 7, 1, 0, "no route"),
     TestOutcome::Failed},
    {"InformWithoutAnAnswerYet", status(true, 5, 0, 0), status(true, 5, 0, 1), TestOutcome::Open},
    {"InformAcknowledged", status(true, 5, 0, 0), status(true, 6, 0, 0), TestOutcome::Acknowledged},
    {"InformGivenUp", status(true, 5, 0, 0), status(true, 5, 1, 0, "does not answer informs"),
     TestOutcome::Failed},
    {"CountersThatBeganAnew", status(true, 5, 0, 0), status(true, 1, 0, 0),
     TestOutcome::Acknowledged},
};

class TestOutcomeOf : public testing::TestWithParam<Case> {};

TEST_P(TestOutcomeOf, IsReadFromTheCounters)
{
    EXPECT_EQ(testOutcome(GetParam().before, GetParam().now), GetParam().outcome)
        << outcomeName(testOutcome(GetParam().before, GetParam().now));
}

INSTANTIATE_TEST_SUITE_P(Receivers, TestOutcomeOf, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

}  // namespace
