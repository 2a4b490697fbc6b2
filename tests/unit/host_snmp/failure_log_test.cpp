#include "host/snmp/failure_log.h"

#include "tests/unit/host_snmp/log_kit.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;
using std::chrono::seconds;

class FailureLogOf : public testing::Test {
protected:
    void alternate(int times)
    {
        for (int i = 0; i < times; ++i) {
            log.failed(i % 2 == 0 ? "this" : "that");
        }
    }

    talvik::test::LoggerCapture capture{"host"};
    talvik::test::ManualClock clock;
    talvik::FailureLog log{"table x", clock.budget()};
};

TEST_F(FailureLogOf, TellsTheFirstFailureAChangeOfTheReasonAndTheRecovery)
{
    log.failed("this");
    log.failed("this");
    log.failed("that");
    log.succeeded();
    log.succeeded();

    EXPECT_EQ(capture.lines(), (Lines{"table x: this; requests for it are answered genErr",
                                      "table x: that; requests for it are answered genErr",
                                      "table x: works again after 3 failures"}));
}

TEST_F(FailureLogOf, TellsEachThousandthFailure)
{
    for (int i = 0; i < 2500; ++i) {
        log.failed("this");
    }

    EXPECT_EQ(capture.lines(),
              (Lines{"table x: this; requests for it are answered genErr",
                     "table x: this; 1000 failures", "table x: this; 2000 failures"}));
}

TEST_F(FailureLogOf, AlternatingReasonsDoNotFloodTheLog)
{
    alternate(10000);

    EXPECT_EQ(capture.lines().size(), 20u);
}

TEST_F(FailureLogOf, AlternatingFailureAndSuccessDoNotFloodTheLog)
{
    for (int i = 0; i < 10000; ++i) {
        log.failed("this");
        log.succeeded();
    }

    EXPECT_EQ(capture.lines().size(), 20u);
}

TEST_F(FailureLogOf, ARecoveryThatWasLeftOutIsToldLater)
{
    alternate(20);
    log.succeeded();

    clock.advance(seconds(1));
    log.succeeded();

    ASSERT_EQ(capture.lines().size(), 21u);
    EXPECT_EQ(capture.lines().back(),
              "table x: works again after 20 failures (1 further reports left out)");
}

TEST_F(FailureLogOf, AReasonThatWasLeftOutIsToldLater)
{
    alternate(20);
    log.failed("a third");

    clock.advance(seconds(1));
    log.failed("a third");

    ASSERT_EQ(capture.lines().size(), 21u);
    EXPECT_EQ(capture.lines().back(),
              "table x: a third; requests for it are answered genErr (1 further reports left out)");
}

TEST_F(FailureLogOf, TellsAFaultOnceAndNoMoreThanAHundred)
{
    for (int i = 0; i < 300; ++i) {
        log.once("fault " + std::to_string(i / 2));
    }

    ASSERT_EQ(capture.lines().size(), 100u);
    EXPECT_EQ(capture.lines().front(), "table x: fault 0 (reported once)");
}

}  // namespace
