#include "tests/support/allocation_probe.h"
#include "tests/unit/handlers/alarm_table_kit.h"

#include <gmock/gmock.h>

#include <new>

namespace {

using namespace talvik::test;
using testing::IsEmpty;
using testing::SizeIs;

/// A record that cannot be read, with the text of the exception that says why.
struct Refusal {
    const char* name;
    AlarmCells cells;
    const char* text;

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class AlarmRowRefusal : public AlarmRowTest, public testing::WithParamInterface<Refusal> {};

TEST_P(AlarmRowRefusal, IsAnExceptionThatLeavesTheRowEmpty)
{
    CTLVRecordV3 row;
    const auto record = GetParam().cells.record();

    EXPECT_EQ(textOfThrown([&] { handler.fillRspRecord(*record, &row); }),
              std::string("CKEL_Exception: ") + GetParam().text);

    EXPECT_THAT(*row.pCells, IsEmpty());
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_EQ(host.texts("trace").back().rfind("leave virtual void "
                                               "CSnmpTalvikKelAlarmHandler::fillRspRecord(",
                                               0),
              0U);
}

AlarmCells clear()
{
    return activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x08");
}

constexpr const char* kNoTag0 = "CTLVRecordV3 has no such cell! tag equal to 0";
constexpr const char* kNoTag1 = "CTLVRecordV3 has no such cell! tag equal to 1";
constexpr const char* kNoTag2 = "CTLVRecordV3 has no such cell! tag equal to 2";
constexpr const char* kNoTag3 = "CTLVRecordV3 has no such cell! tag equal to 3";
constexpr const char* kNoTag4 = "CTLVRecordV3 has no such cell! tag equal to 4";
constexpr const char* kNoTag8 = "CTLVRecordV3 has no such cell! tag equal to 8";

const Refusal kRefusals[] = {
    {"NoSerialNumber", activeAlarm().without(3), kNoTag3},
    {"NoKind", activeAlarm().without(0), kNoTag0},
    {"NoAlarmId", activeAlarm().without(1), kNoTag1},
    {"NoParameters", activeAlarm().without(8), kNoTag8},
    {"NoLevel", activeAlarm().without(2), kNoTag2},
    {"NoTime", activeAlarm().without(4), kNoTag4},
    {"SerialNumberAsText", activeAlarm().text(3, "42"),
     "CTLVCell isn't numerical type! tag equal to 3"},
    {"KindAsText", activeAlarm().text(0, "1"), "CTLVCell isn't numerical type! tag equal to 0"},
    {"KindAsBytes", activeAlarm().cell(0, CTLVCell::TLV_OCTETS, "\x01"),
     "CTLVCell isn't numerical type! tag equal to 0"},
    {"AlarmIdAsText", activeAlarm().text(1, "1"), "CTLVCell isn't numerical type! tag equal to 1"},
    {"LevelAsText", activeAlarm().text(2, "3"), "CTLVCell isn't numerical type! tag equal to 2"},
    {"TimeAsText", activeAlarm().text(4, "3"), "CTLVCell isn't numerical type! tag equal to 4"},
    {"TimeOfNoType", activeAlarm().cell(4, CTLVCell::TLV_NONE, "3"),
     "CTLVCell isn't numerical type! tag equal to 4"},
    {"ClearWithoutAlarmId", clear().without(1), kNoTag1},
    {"ClearWithoutSerialNumber", clear().without(3), kNoTag3},
    // What is read first is named.
    {"SerialNumberBeforeKind", activeAlarm().without(3).without(0), kNoTag3},
    {"KindBeforeAlarmId", activeAlarm().without(0).without(1), kNoTag0},
    {"AlarmIdBeforeParameters", activeAlarm().without(1).without(8), kNoTag1},
    {"ParametersBeforeLevel", activeAlarm().without(8).without(2), kNoTag8},
    {"LevelBeforeTime", activeAlarm().without(2).without(4), kNoTag2},
};

INSTANTIATE_TEST_SUITE_P(Records, AlarmRowRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

class AlarmRowFailure : public AlarmRowTest {
protected:
    AlarmRowFailure() : record(activeAlarm().record()) {}

    /// From here on nothing is recorded, and what is made once in a process is there.
    void prepareForCounting()
    {
        CTLVRecordV3 row;
        handler.fillRspRecord(*record, &row);
        CTLVRecordV3 request;
        handler.fillReqRecord(&request);
        host.recording = false;
    }

    std::unique_ptr<CTLVRecordV3> record;
};

TEST_F(AlarmRowFailure, WhatTheHostsConversionThrowsLeavesTheRowEmpty)
{
    host.onCall("convertTime2DateTime", [] { throw CKEL_Exception("no time"); });
    CTLVRecordV3 row;

    EXPECT_EQ(textOfThrown([&] { handler.fillRspRecord(*record, &row); }),
              "CKEL_Exception: no time");

    EXPECT_THAT(*row.pCells, IsEmpty());
}

TEST_F(AlarmRowFailure, ACatalogueThatCannotBeLoadedIsAnException)
{
    CAlarmConfigParser::destroy();
    folder.write("alarms.json", "{");
    CTLVRecordV3 row;

    EXPECT_EQ(textOfThrown([&] { handler.fillRspRecord(*record, &row); }),
              "CKEL_Exception: parse root element failed!");

    EXPECT_THAT(*row.pCells, IsEmpty());
}

TEST_F(AlarmRowFailure, ATextThatNoCellHoldsIsAnExceptionAfterTheCellsBefore)
{
    CAlarmConfigParser::destroy();
    defineAlarm("detail", "here", std::string(65535, 's'));
    CTLVRecordV3 row;
    const auto longOne = activeAlarm().wide(1, 1).record();

    EXPECT_EQ(textOfThrown([&] { handler.fillRspRecord(*longOne, &row); }),
              "CKEL_Exception: CTLVCell can't hold 65536 bytes! tag equal to 3");

    EXPECT_THAT(*row.pCells, SizeIs(2));
}

/// Each of the calls that make a cell, made to fail at each cell.
class AlarmRowCellFailure : public AlarmRowFailure,
                            public testing::WithParamInterface<const char*> {};

TEST_P(AlarmRowCellFailure, LeavesTheCellsBeforeAndNothingElse)
{
    prepareForCounting();
    for (int good = 0; good < 12; ++good) {
        int left = good;
        host.onCall(GetParam(), [&left] {
            if (left-- == 0) {
                throw std::bad_alloc();
            }
        });
        CTLVRecordV3 row;
        const AllocationProbe probe;

        EXPECT_THROW(handler.fillRspRecord(*record, &row), std::bad_alloc) << good;

        EXPECT_THAT(*row.pCells, SizeIs(good));
        row.clear();
        EXPECT_GT(probe.allocations(), 0U);
        EXPECT_EQ(probe.live(), 0) << good;
    }
}

TEST_P(AlarmRowCellFailure, LeavesNothingBehindInARequest)
{
    prepareForCounting();
    for (int good = 0; good < 2; ++good) {
        int left = good;
        host.onCall(GetParam(), [&left] {
            if (left-- == 0) {
                throw std::bad_alloc();
            }
        });
        CTLVRecordV3 request;
        const AllocationProbe probe;

        EXPECT_THROW(handler.fillReqRecord(&request), std::bad_alloc) << good;

        EXPECT_THAT(*request.pCells, SizeIs(good));
        request.clear();
        EXPECT_EQ(probe.live(), 0) << good;
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, AlarmRowCellFailure, testing::Values("set_i", "append"));

TEST_F(AlarmRowFailure, IsBalancedWhicheverAllocationFails)
{
    prepareForCounting();
    bool failed = true;
    std::size_t incomplete = 0;
    for (std::size_t count = 0; failed; ++count) {
        ASSERT_LT(count, 10000U);
        CTLVRecordV3 row;
        AllocationProbe probe;
        probe.failAfter(count);
        bool complete = false;
        try {
            handler.fillRspRecord(*record, &row);
            complete = true;
        } catch (const std::bad_alloc&) {
            ++incomplete;
        }
        failed = probe.failed();

        EXPECT_TRUE(complete || failed) << "allocation " << count;
        EXPECT_EQ(row.pCells->size() == 12, complete) << "allocation " << count;
        row.clear();
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
    EXPECT_GT(incomplete, 36U);  // a cell, its value and its place twelve times
}

TEST_F(AlarmRowFailure, AnAlarmLeftOutLeavesNothingAllocated)
{
    prepareForCounting();
    for (const auto id : {4ULL, 507010006ULL}) {
        const auto leftOut = activeAlarm().wide(1, id).record();
        CTLVRecordV3 row;
        handler.fillRspRecord(*leftOut, &row);  // the lines' own first allocations
        const AllocationProbe probe;

        handler.fillRspRecord(*leftOut, &row);

        EXPECT_GT(probe.allocations(), 0U);
        EXPECT_EQ(probe.live(), 0) << id;
    }
}

}  // namespace
