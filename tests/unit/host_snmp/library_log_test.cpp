#include "host/snmp/library_log.h"

#include "host/snmp/net_snmp.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using talvik::LibraryLog;

class LibraryLogOf : public testing::Test {
protected:
    static void complain(int times)
    {
        for (int i = 0; i < times; ++i) {
            snmp_log(LOG_ERR, "complaint %d\n", i);
        }
    }

    talvik::test::LoggerCapture capture{"net-snmp"};
    talvik::test::ManualClock clock;
    std::unique_ptr<LibraryLog> log = std::make_unique<LibraryLog>(clock.budget());
};

TEST_F(LibraryLogOf, LinesGoToTheLog)
{
    snmp_log(LOG_ERR, "in two ");
    snmp_log(LOG_ERR, "pieces\n");

    EXPECT_EQ(capture.lines(), std::vector<std::string>{"in two pieces"});
}

TEST_F(LibraryLogOf, AFloodIsCutAndItsRestCounted)
{
    complain(10000);
    ASSERT_EQ(capture.lines().size(), 20u);
    EXPECT_EQ(capture.lines().back(), "complaint 19");

    clock.advance(std::chrono::seconds(1));
    snmp_log(LOG_ERR, "another\n");

    ASSERT_EQ(capture.lines().size(), 21u);
    EXPECT_EQ(capture.lines().back(), "another (9980 more lines of net-snmp were left out)");
}

TEST_F(LibraryLogOf, TheEndTellsWhatWasLeftOut)
{
    complain(23);

    log.reset();

    ASSERT_EQ(capture.lines().size(), 21u);
    EXPECT_EQ(capture.lines().back(), "3 more lines of net-snmp were left out");
}

TEST_F(LibraryLogOf, LinesBelowTheLevelOfTheLogCostNothing)
{
    for (int i = 0; i < 100; ++i) {
        snmp_log(LOG_DEBUG, "a detail\n");
    }
    complain(20);

    EXPECT_EQ(capture.lines().size(), 20u);
}

TEST_F(LibraryLogOf, KeptLinesAreAllKeptAndCostNothing)
{
    log->startKeeping();
    complain(100);
    const auto kept = log->stopKeeping();
    complain(20);

    ASSERT_EQ(kept.size(), 100u);
    EXPECT_EQ(kept.back().text, "complaint 99");
    EXPECT_EQ(capture.lines().size(), 20u);
}

}  // namespace
