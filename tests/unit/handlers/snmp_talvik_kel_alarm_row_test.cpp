#include "tests/unit/handlers/alarm_table_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using namespace std::string_literals;
using testing::IsEmpty;
using testing::SizeIs;

class AlarmRow : public AlarmRowTest {};

/// The twelve cells of the known alarm's row, in their order.
std::vector<CellBytes> knownRow(const std::string& time)
{
    return {{1, 2, "NODE-1\0"s},
            {2, 2, "Enclosure E1\0"s},
            {3, 2, "Replace D3.\0"s},
            {4, 2, "Disk failed\0"s},
            {5, 4, "\x02\0\0\0"s},
            {6, 4, "\x04\0\0\0"s},
            {7, 3, "\x01\0\xC9\0"s},
            {12, 3, "\x01\0\xC9\0\x0F\0\0\0"s},
            {8, 1, time},
            {9, 3, "\x2A\0\0\0"s},
            {10, 2, "Disk D3 failed.\0"s},
            {11, 4, "\x01\0\0\0"s}};
}

TEST_F(AlarmRow, HasTwelveCellsInOrder)
{
    EXPECT_EQ(rowOf(activeAlarm()), knownRow("\x07\xEA\0\0\0\0\0\0\x03\xE8"s));
}

TEST_F(AlarmRow, OfADerivedHandlerMayHaveItsTimeAsText)
{
    AlarmTableWithTimesAsText withText;
    CTLVRecordV3 row;

    withText.fillRspRecord(*activeAlarm().record(), &row);

    EXPECT_EQ(cellsOf(row), knownRow("second 1000"));
    EXPECT_EQ(host.count("convertTime2DateTime"), 0U);
    EXPECT_EQ(host.count("convertTime2DateTimeStr"), 1U);
}

TEST_F(AlarmRow, OfTheHandlerItselfNeverAsksForTimeAsText)
{
    rowOf(activeAlarm());

    EXPECT_EQ(host.count("convertTime2DateTime"), 1U);
    EXPECT_EQ(host.count("convertTime2DateTimeStr"), 0U);
}

TEST_F(AlarmRow, StandsBehindTheCellsThatTheRowHolds)
{
    const auto row = AlarmCells().record();
    const auto before = cellsOf(*row);

    handler.fillRspRecord(*activeAlarm().record(), row.get());

    const auto cells = cellsOf(*row);
    ASSERT_THAT(cells, SizeIs(before.size() + 12));
    EXPECT_EQ(std::vector<CellBytes>(cells.begin(), cells.end() - 12), before);
    EXPECT_EQ(row->ullRecordId, 7U);
}

TEST_F(AlarmRow, TracesItsSignatureAndWritesNoOtherLine)
{
    rowOf(activeAlarm());

    const auto traces = host.texts("trace");
    ASSERT_FALSE(traces.empty());
    EXPECT_EQ(traces.front(), "enter virtual void CSnmpTalvikKelAlarmHandler::fillRspRecord("
                              "const CTLVRecordV3&, CTLVRecordV3*)...");
    EXPECT_EQ(traces.back(), "leave virtual void CSnmpTalvikKelAlarmHandler::fillRspRecord("
                             "const CTLVRecordV3&, CTLVRecordV3*): OK");
    EXPECT_EQ(host.log.front().moduleId, 4U);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmRow, AsksForTheNodeCodeEachTime)
{
    EXPECT_EQ(valueOf(activeAlarm(), 1), "NODE-1\0"s);
    host.nodeCode = "";
    EXPECT_EQ(valueOf(activeAlarm(), 1), "\0"s);
    host.nodeCode.reset();
    EXPECT_EQ(valueOf(activeAlarm(), 1), ""s);
}

TEST_F(AlarmRow, LevelsAreThoseOfTheManagementSystem)
{
    const std::pair<unsigned, char> levels[] = {{1, 4}, {2, 5}, {3, 4}, {4, 3}, {5, 2},
                                                {6, 1}, {7, 1}, {8, 4}, {0, 4}, {4294967295U, 4}};
    for (const auto& [level, shown] : levels) {
        EXPECT_EQ(valueOf(activeAlarm().number(2, level), 6), std::string{shown} + "\0\0\0"s)
            << level;
    }
}

TEST_F(AlarmRow, NumbersAtTheirLimits)
{
    EXPECT_EQ(valueOf(activeAlarm().number(3, 4294967295U), 9), "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(valueOf(activeAlarm().number(3, 0), 9), "\0\0\0\0"s);
    EXPECT_EQ(valueOf(activeAlarm().wide(3, 0x500000007), 9), "\x07\0\0\0"s);
    EXPECT_EQ(valueOf(activeAlarm().wide(2, 0x500000002), 6), "\x05\0\0\0"s);
}

TEST_F(AlarmRow, TimesAreSignedNumbersOfSixtyFourBits)
{
    const auto dateOf = [this](const AlarmCells& cells) { return valueOf(cells, 8); };

    EXPECT_EQ(dateOf(activeAlarm().wide(4, 9223372036854775807U)),
              octetsOfTime(9223372036854775807));
    EXPECT_EQ(dateOf(activeAlarm().wide(4, 0xFFFFFFFFFFFFFFFFU)), octetsOfTime(-1));
    EXPECT_EQ(dateOf(activeAlarm().cell(4, CTLVCell::TLV_INT, "\xFE\xFF")), octetsOfTime(-2));
    EXPECT_EQ(dateOf(activeAlarm().cell(4, CTLVCell::TLV_INT, "\xFE\xFF\xFF\xFF")),
              octetsOfTime(4294967294));
    EXPECT_EQ(dateOf(activeAlarm().cell(4, CTLVCell::TLV_UINT, "")), octetsOfTime(0));
}

TEST_F(AlarmRow, ParametersMayBeACellOfAnyType)
{
    EXPECT_EQ(valueOf(activeAlarm().number(8, 17), 3), "Replace 17.\0"s);
    EXPECT_EQ(valueOf(activeAlarm().cell(8, CTLVCell::TLV_INT, "\xFE\xFF\xFF\xFF"), 3),
              "Replace -2.\0"s);
    EXPECT_EQ(valueOf(activeAlarm().cell(8, CTLVCell::TLV_OCTETS, "\x1F"), 3), "Replace 1F.\0"s);
    EXPECT_EQ(valueOf(activeAlarm().cell(8, CTLVCell::TLV_STRING, ""), 3), "Replace --.\0"s);
}

/// A record that is no row, with the lines that it leaves.
struct NoRow {
    const char* name;
    AlarmCells cells;
    Fields lines;

    friend std::ostream& operator<<(std::ostream& os, const NoRow& row) { return os << row.name; }
};

class AlarmLeftOut : public AlarmRowTest, public testing::WithParamInterface<NoRow> {};

TEST_P(AlarmLeftOut, HasNoCellsAndSaysSoOnlyOfClearsAndEvents)
{
    EXPECT_THAT(rowOf(GetParam().cells), IsEmpty());

    EXPECT_EQ(lines(), GetParam().lines);
    EXPECT_EQ(host.texts("trace").back(),
              "leave virtual void CSnmpTalvikKelAlarmHandler::fillRspRecord("
              "const CTLVRecordV3&, CTLVRecordV3*): OK");
}

std::string clearLine(const std::string& id)
{
    return "debug 0xffff fillRspRecord: ignore clear type alarm " + id;
}

std::string eventLine(const std::string& id)
{
    return "debug 0xffff fillRspRecord: ignore non-fault alarm " + id;
}

AlarmCells clear()
{
    return activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x08");
}

AlarmCells alarm(unsigned long long id)
{
    return activeAlarm().wide(1, id);
}

AlarmCells markerAlone()
{
    auto cells = AlarmCells();
    for (unsigned short tag = 1; tag <= 8; ++tag) {
        cells.without(tag);
    }
    return cells.cell(4095, CTLVCell::TLV_NONE, "");
}

const NoRow kNoRows[] = {
    {"MarkerAlone", markerAlone(), {}},
    {"MarkerBesideAnAlarm", activeAlarm().number(4095, 0), {}},
    {"MarkerBesideAClear", clear().text(4095, "end"), {}},
    {"Clear", clear(), {clearLine("64437682177")}},
    {"ClearInTwoBytes",
     activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x08\0"s),
     {clearLine("64437682177")}},
    {"ClearAsASignedNumber",
     activeAlarm().cell(0, CTLVCell::TLV_INT, "\x08"),
     {clearLine("64437682177")}},
    {"ClearOfAnUnknownAlarm", clear().wide(1, 4), {clearLine("4")}},
    {"ClearOfAlarmZero", clear().wide(1, 0), {clearLine("0")}},
    {"ClearOfAnEvent", clear().wide(1, 507010008), {clearLine("507010008")}},
    {"ClearOfAllBits", clear().wide(1, 0xFFFFFFFFFFFFFFFFU), {clearLine("18446744073709551615")}},
    {"ClearOfWhichTheRestIsMissing",
     clear().without(2).without(4).without(8),
     {clearLine("64437682177")}},
    {"FirstEvent", alarm(507010006), {eventLine("507010006")}},
    {"SecondEvent", alarm(507010007), {eventLine("507010007")}},
    {"ThirdEvent", alarm(507010008), {eventLine("507010008")}},
    {"FourthEvent", alarm(507010009), {eventLine("507010009")}},
    {"LastEvent", alarm(507010010), {eventLine("507010010")}},
    {"EventByItsLowHalf", alarm(4801977302), {eventLine("4801977302")}},
    {"EventWithoutLevelAndTime", alarm(507010006).without(2).without(4), {eventLine("507010006")}},
    {"Unknown", alarm(4), {"warn 0x1001e getAlarmInfo: alarm 4 desn't need to be parsed."}},
    {"UnknownWithoutLevelAndTime",
     alarm(4).without(2).text(4, "x"),
     {"warn 0x1001e getAlarmInfo: alarm 4 desn't need to be parsed."}},
    {"UnknownButForItsLowHalf",
     alarm(0x1F00C90001),
     {"warn 0x1001e getAlarmInfo: alarm 133157158913 desn't need to be parsed."}},
    {"AlarmZero", alarm(0), {"error 0x10014 getAlarmInfo: invalid alarm id 0"}},
    {"TextThatCannotBeFilled",
     alarm(3),
     {"error 0x10015 replaceAlarmParamInfo: no alarm parameter pos",
      "error 0x1002e getAlarmInfo: parse alarm location ## using parameter D3,E1 failed. "
      "parsed location is ."}},
};

INSTANTIATE_TEST_SUITE_P(Records, AlarmLeftOut, testing::ValuesIn(kNoRows),
                         [](const auto& row) { return row.param.name; });

/// Records that are nearly left out.
class AlarmListed : public AlarmRowTest, public testing::WithParamInterface<NoRow> {};

TEST_P(AlarmListed, HasItsRowWithoutALine)
{
    EXPECT_THAT(rowOf(GetParam().cells), SizeIs(12));

    EXPECT_THAT(lines("debug"), IsEmpty());
}

const NoRow kRows[] = {
    {"BelowTheEvents", alarm(507010005), {}},
    {"AboveTheEvents", alarm(507010011), {}},
    {"AboveTheEventsByItsLowHalf", alarm(4801977307), {}},
    {"KindZero", activeAlarm().cell(0, CTLVCell::TLV_UINT, "\0"s), {}},
    {"KindSeven", activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x07"), {}},
    {"KindNine", activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x09"), {}},
    {"KindOfTwoBytesThatEndsInEight", activeAlarm().cell(0, CTLVCell::TLV_UINT, "\x08\x01"), {}},
};

INSTANTIATE_TEST_SUITE_P(Records, AlarmListed, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(AlarmRow, IdentifiesAnAlarmOfMoreThan32BitsInBothColumns)
{
    EXPECT_EQ(valueOf(alarm(4801977307), 7), "\xDB\x5B\x38\x1E");
    EXPECT_EQ(valueOf(alarm(4801977307), 12), "\xDB\x5B\x38\x1E\x01\0\0\0"s);
}

TEST_F(AlarmRow, TextsThatADefinitionLacksAreNone)
{
    const auto cells = rowOf(alarm(507010005));

    ASSERT_THAT(cells, SizeIs(12));
    for (const auto index : {1U, 2U, 3U, 10U}) {
        EXPECT_EQ(cells[index].bytes, "None\0"s) << index;
    }
}

}  // namespace
