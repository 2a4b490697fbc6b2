#include "tests/unit/host_platform/table_engine_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <numeric>
#include <vector>

namespace {

using namespace talvik::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

unsigned short onlyEven(std::uint32_t key)
{
    return key % 2 == 0 ? kNoMark : kBrokenTag;
}

unsigned short none(std::uint32_t)
{
    return kBrokenTag;
}

class TableEngineLeavesOut : public TableEngine {};

TEST_F(TableEngineLeavesOut, ARecordThatCannotBeShown)
{
    const LoggerCapture log("host");
    serve({1001, 1002, 1003, 1004}, onlyEven);

    EXPECT_EQ(query(kGetBulk), 0);
    EXPECT_THAT(rows(), ElementsAre("1002", "1004", "end"));
    EXPECT_EQ(query(kGetBulk), 0);

    EXPECT_THAT(log.lines(),
                ElementsAre(AllOf(HasSubstr("2 of the back end's records cannot be shown"),
                                  HasSubstr(" is 1003: broken record"))))
        << "once";
}

TEST_F(TableEngineLeavesOut, OneInFrontOfAllOthers)
{
    serve({2001, 2002}, onlyEven);

    EXPECT_EQ(query(kGetNext), 0);

    EXPECT_THAT(rows(), ElementsAre("2002", "end"));
}

TEST_F(TableEngineLeavesOut, OneBehindAllOthers)
{
    serve({3002, 3003}, onlyEven);
    EXPECT_EQ(query(kGetNext), 0);
    ASSERT_THAT(rows(), ElementsAre("3002"));

    EXPECT_EQ(query(kGetNext, 3002), 0);

    EXPECT_THAT(rows(), ElementsAre("end"));
}

TEST_F(TableEngineLeavesOut, NothingWhenTheHandlerFailsForAllThatItGets)
{
    serve({4001, 4003}, none);
    EXPECT_EQ(failureOf(kGetNext), "CKEL_Exception: broken record");
    EXPECT_EQ(failureOf(kGetBulk), "CKEL_Exception: broken record");

    serve({4001, 4002}, onlyEven);
    EXPECT_EQ(query(kGetBulk), 0) << "the next query works again";
    EXPECT_THAT(rows(), ElementsAre("4002", "end"));
}

TEST_F(TableEngineLeavesOut, NothingOfALongTableEither)
{
    std::vector<std::uint32_t> keys(5000);
    std::iota(keys.begin(), keys.end(), 10000);
    serve(keys, none);

    EXPECT_EQ(failureOf(kGetBulk), "CKEL_Exception: broken record");

    EXPECT_THAT(backEnd.asked, SizeIs(1000 / 50));
}

TEST_F(TableEngineLeavesOut, NoMoreThanAHundredLines)
{
    const LoggerCapture log("host");
    std::vector<std::uint32_t> keys(400);
    std::iota(keys.begin(), keys.end(), 50000);
    serve(keys, onlyEven);

    for (std::uint64_t after = 50000; after < 50400; after += 2) {
        EXPECT_EQ(query(kGetNext, after), 0);
    }

    ASSERT_THAT(log.lines(), SizeIs(100));
    EXPECT_THAT(log.lines().back(), HasSubstr("no more of these lines are written"));
}

}  // namespace
