#include "tests/unit/handlers/alarm_table_kit.h"

#include <agent_pp/snmp_pp_ext.h>
#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using namespace talvik::test;
using namespace std::string_literals;
using testing::ElementsAre;

constexpr int kGet = 160;
constexpr int kGetNext = 161;
constexpr int kGetBulk = 165;

class AlarmTableRequest : public FakeHostTest {
protected:
    AlarmTableRequest() { host.deviceItems[{"COMMAND", "GET_CURRENT_ALARM"}] = "4002"; }
};

/// Kind and key of a query, and the start and count that it asks the back end for.
struct Batch {
    const char* name;
    int kind;
    std::string key;
    std::string start;
    std::string count;

    friend std::ostream& operator<<(std::ostream& os, const Batch& row) { return os << row.name; }
};

class AlarmTableBatch : public AlarmTableRequest, public testing::WithParamInterface<Batch> {};

TEST_P(AlarmTableBatch, AsksTheBackEndFromItsStart)
{
    OpenAlarmTable handler;
    handler.m_iRequestKind = GetParam().kind;
    handler.m_sCurrentKey = GetParam().key;
    CTLVRecordV3 record;

    handler.fillReqRecord(&record);

    EXPECT_EQ(record.ullRecordId, 4002U);
    EXPECT_THAT(cellsOf(record),
                ElementsAre(CellBytes{3, 3, GetParam().start}, CellBytes{9, 3, GetParam().count}));
}

const std::string kOne = "\x01\0\0\0"s;
const std::string kFifty = "\x32\0\0\0"s;
const std::string kZero = "\0\0\0\0"s;

// The key that says that there is none has the value of the fake host.
const Batch kBatches[] = {
    {"GetOfFive", kGet, "5", "\x04\0\0\0"s, kOne},
    {"GetOfOne", kGet, "1", kZero, kOne},
    {"GetOfZero", kGet, "0", kZero, kOne},
    {"GetWithoutAKey", kGet, "no key", kZero, kOne},
    {"GetOfTheHighest", kGet, "4294967295", "\xFE\xFF\xFF\xFF", kOne},
    {"GetOfAKeyThatReadsAsZero", kGet, "00", kZero, kOne},
    {"GetBulkOfFive", kGetBulk, "5", "\x05\0\0\0"s, kFifty},
    {"GetBulkOfZero", kGetBulk, "0", kZero, kFifty},
    {"GetBulkWithoutAKey", kGetBulk, "no key", kZero, kFifty},
    {"GetNextOfFive", kGetNext, "5", "\x05\0\0\0"s, kOne},
    {"GetNextWithoutAKey", kGetNext, "no key", kZero, kOne},
    {"GetNextOfTheHighest", kGetNext, "4294967295", "\xFF\xFF\xFF\xFF", kOne},
    {"AnyOtherKind", 163, "5", "\x05\0\0\0"s, kOne},
    {"KindOfNothing", 0, "5", "\x05\0\0\0"s, kOne},
};

INSTANTIATE_TEST_SUITE_P(Queries, AlarmTableBatch, testing::ValuesIn(kBatches),
                         [](const auto& row) { return row.param.name; });

TEST_F(AlarmTableRequest, DoesNotConvertTheKeysThatMeanTheStart)
{
    host.onCall("StrToUint", [] { throw std::logic_error("converted"); });
    OpenAlarmTable handler;
    for (const auto& key : {CSnmpTableBase::INVALID_KEY, "0"s}) {
        handler.m_sCurrentKey = key;
        CTLVRecordV3 record;

        EXPECT_NO_THROW(handler.fillReqRecord(&record)) << key;
    }
    handler.m_sCurrentKey = "5";
    CTLVRecordV3 record;
    EXPECT_THROW(handler.fillReqRecord(&record), std::logic_error);
}

TEST_F(AlarmTableRequest, AppendsBehindTheCellsThatTheRecordHolds)
{
    OpenAlarmTable handler;
    const auto record = AlarmCells().record();
    const auto before = cellsOf(*record);

    handler.fillReqRecord(record.get());

    const auto cells = cellsOf(*record);
    ASSERT_EQ(cells.size(), before.size() + 2);
    EXPECT_EQ(std::vector<CellBytes>(cells.begin(), cells.end() - 2), before);
}

TEST_F(AlarmTableRequest, StartsAsAGetWithoutAKeyDrivenInBatches)
{
    const OpenAlarmTable handler;

    EXPECT_EQ(handler.m_iRequestKind, kGet);
    EXPECT_EQ(handler.m_sCurrentKey, CSnmpTableBase::INVALID_KEY);
    EXPECT_FALSE(handler.m_bWholeTable);
}

TEST_F(AlarmTableRequest, TheCommandNumberIsThatOfTheConstruction)
{
    OpenAlarmTable handler;
    host.deviceItems[{"COMMAND", "GET_CURRENT_ALARM"}] = "5002";
    CTLVRecordV3 record;

    handler.fillReqRecord(&record);

    EXPECT_EQ(record.ullRecordId, 4002U);
    EXPECT_THAT(host.itemsRead, ElementsAre(std::pair("COMMAND"s, "GET_CURRENT_ALARM"s)));
}

TEST_F(AlarmTableRequest, ANegativeCommandNumberKeepsItsBits)
{
    host.deviceItems[{"COMMAND", "GET_CURRENT_ALARM"}] = "-2";
    OpenAlarmTable handler;
    CTLVRecordV3 record;

    handler.fillReqRecord(&record);

    EXPECT_EQ(record.ullRecordId, 0xFFFFFFFFFFFFFFFEU);
}

TEST_F(AlarmTableRequest, WithoutAConfiguredCommandItsNumberIsZero)
{
    host.deviceItems.clear();
    OpenAlarmTable handler;
    CTLVRecordV3 record;

    handler.fillReqRecord(&record);

    EXPECT_EQ(record.ullRecordId, 0U);
}

TEST_F(AlarmTableRequest, WritesNoLogLine)
{
    OpenAlarmTable handler;
    CTLVRecordV3 record;

    handler.fillReqRecord(&record);
    handler.preGetRspCell(record);
    handler.postGetRspCell(record);
    handler.getIndexOfRecord(record);
    handler.getMibKey(Agentpp::Oidx("91.10.1.1.1.4.42"));

    EXPECT_TRUE(host.log.empty());
}

/// A request's OID below the module's root, and the key that it asks for.
struct Key {
    const char* name;
    const char* oid;
    std::string expected;

    friend std::ostream& operator<<(std::ostream& os, const Key& row) { return os << row.name; }
};

class AlarmTableKey : public AlarmTableRequest, public testing::WithParamInterface<Key> {};

TEST_P(AlarmTableKey, IsTheLastOfSevenSubIdentifiers)
{
    EXPECT_EQ(OpenAlarmTable().getMibKey(Agentpp::Oidx(GetParam().oid)), GetParam().expected);
}

const Key kKeys[] = {
    {"Seven", "91.10.1.1.1.4.42", "42"},
    {"SevenWithZero", "91.10.1.1.1.4.0", "0"},
    {"SevenWithTheHighest", "91.10.1.1.1.4.4294967295", "4294967295"},
    {"SevenOfAnotherTable", "1.2.3.4.5.6.7", "7"},
    {"Six", "91.10.1.1.1.4", "no key"},
    {"Eight", "91.10.1.1.1.4.42.1", "no key"},
    {"None", "", "no key"},
};

INSTANTIATE_TEST_SUITE_P(Oids, AlarmTableKey, testing::ValuesIn(kKeys),
                         [](const auto& row) { return row.param.name; });

TEST_F(AlarmTableRequest, TheIndexOfARecordIsTheTextOfItsSerialNumber)
{
    OpenAlarmTable handler;

    EXPECT_EQ(handler.getIndexOfRecord(*AlarmCells().number(3, 42).record()), "42");
    EXPECT_EQ(handler.getIndexOfRecord(*AlarmCells().number(3, 4294967295U).record()),
              "4294967295");
    EXPECT_EQ(handler.getIndexOfRecord(*AlarmCells().text(3, "as it is").record()), "as it is");
    EXPECT_EQ(textOfThrown([&] { handler.getIndexOfRecord(*AlarmCells().without(3).record()); }),
              "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to 3");
}

TEST_F(AlarmTableRequest, TheHooksAroundACellDoNothing)
{
    OpenAlarmTable handler;
    const auto record = AlarmCells().record();
    const auto before = cellsOf(*record);

    EXPECT_EQ(handler.preGetRspCell(*record), 0);
    EXPECT_EQ(handler.postGetRspCell(*record), 0);

    EXPECT_EQ(cellsOf(*record), before);
}

TEST_F(AlarmTableRequest, TimesGoOutAsDateAndTime)
{
    EXPECT_TRUE(OpenAlarmTable().useDateAndTime());
}

TEST_F(AlarmTableRequest, LeafOperationsAndChangesAreRefused)
{
    OpenAlarmTable handler;
    const CTLVPackageV3<TLVMsgHeadV3> request;
    CTLVPackageV3<TLVMsgHeadV3> response;

    EXPECT_EQ(textOfThrown([&] { handler.OnQueryLeaf(context, request, response); }),
              "CKEL_Exception: CSnmpTableHandler can't support leaf OnQueryLeaf!");
    EXPECT_EQ(handler.OnCreateTable(context, request, response), -1);
    EXPECT_EQ(handler.OnModifyTable(context, request, response), -1);
    EXPECT_EQ(handler.OnDeleteTable(context, request, response), -1);
}

}  // namespace
