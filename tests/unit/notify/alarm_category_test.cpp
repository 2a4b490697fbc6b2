#include "tests/support/throw_text.h"
#include "tests/unit/notify/notify_kit.h"

namespace {

using namespace talvik::test;

struct Category {
    const char* name;
    AlarmCells cells;
    unsigned expected;

    friend std::ostream& operator<<(std::ostream& os, const Category& row)
    {
        return os << row.name;
    }
};

class AlarmCategory : public NotifyTest, public testing::WithParamInterface<Category> {};

TEST_P(AlarmCategory, IsReadFromTheRecord)
{
    unsigned category = 77;

    handler.getAlarmCategory(*GetParam().cells.record(), category);

    EXPECT_EQ(category, GetParam().expected);
}

AlarmCells ofEventKind()
{
    return AlarmCells().identifiedBy(kEventRecord);
}

const Category kCategories[] = {
    {"FaultWithoutClearTimes", AlarmCells(), 1},
    {"ClearByTagSix", AlarmCells().wide(6, 1), 2},
    {"ClearByTagFive", AlarmCells().wide(5, 1), 2},
    {"ClearByBoth", AlarmCells().wide(5, 1).wide(6, 1), 2},
    {"ClearByTagSixThoughTagFiveIsMissing", AlarmCells().without(5).wide(6, 1), 2},
    {"ClearByTagSixThoughTagFiveIsText", AlarmCells().text(5, "x").wide(6, 1), 2},
    {"ClearOfTheEventKind", ofEventKind().wide(5, 1), 2},
    {"TagSixWithAnEmptyLowHalf", AlarmCells().wide(6, 0x100000000), 1},
    {"TagFiveWithAnEmptyLowHalf", AlarmCells().wide(5, 0x100000000), 1},
    {"TagSixWithAnEmptyLowHalfAndTagFive", AlarmCells().wide(6, 0x100000000).wide(5, 1), 2},
    {"TagSixOfOneByte", AlarmCells().cell(6, CTLVCell::TLV_INT, "\x01"), 2},
    {"TagSixWithoutBytes", AlarmCells().cell(6, CTLVCell::TLV_UINT, ""), 1},
    {"Event", ofEventKind().number(73, 1), 3},
    {"EventKindWithFlagZero", ofEventKind().number(73, 0), 1},
    {"EventKindWithFlagTwo", ofEventKind().number(73, 2), 1},
    {"EventFlagOfMoreThan32Bits", ofEventKind().wide(73, 0x100000001), 3},
    {"FlagOfAnotherKind", AlarmCells().number(73, 1), 1},
    {"FlagOfTheKindBefore", AlarmCells().identifiedBy(kEventRecord - 1).number(73, 1), 1},
    {"FlagOfTheLowHalfOfTheKind", AlarmCells().identifiedBy(0x00C900B6).number(73, 1), 1},
    {"TextAsFlagOfAnotherKind", AlarmCells().text(73, "1"), 1},
};

INSTANTIATE_TEST_SUITE_P(Records, AlarmCategory, testing::ValuesIn(kCategories),
                         [](const auto& row) { return row.param.name; });

class AlarmCategoryFailure : public NotifyTest {
protected:
    std::string refusalOf(const AlarmCells& cells)
    {
        unsigned category = 77;
        auto text = textOfThrown([&] { handler.getAlarmCategory(*cells.record(), category); });
        EXPECT_EQ(category, 77u);
        return text;
    }
};

TEST_F(AlarmCategoryFailure, NamesTheCellThatIsMissing)
{
    const std::string text = "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to ";

    EXPECT_EQ(refusalOf(AlarmCells().without(6).without(5)), text + "6");
    EXPECT_EQ(refusalOf(AlarmCells().without(5)), text + "5");
    EXPECT_EQ(refusalOf(ofEventKind()), text + "73");
}

TEST_F(AlarmCategoryFailure, NamesTheCellThatIsNoNumber)
{
    const std::string text = "CKEL_Exception: CTLVCell isn't numerical type! tag equal to ";

    EXPECT_EQ(refusalOf(AlarmCells().text(6, "1").text(5, "1")), text + "6");
    EXPECT_EQ(refusalOf(AlarmCells().text(5, "1")), text + "5");
    EXPECT_EQ(refusalOf(ofEventKind().text(73, "1")), text + "73");
}

TEST(EventKind, IsTheOneThatBackEndsReport)
{
    EXPECT_EQ(kEventRecord, 55847747766u);
}

class AlarmTime : public NotifyTest {
protected:
    Snmp_pp::OctetStr text{"before"};
    Snmp_pp::OctetStr value{"before"};
};

TEST_F(AlarmTime, GoesOutAsDateAndTime)
{
    handler.time2DateTime(text, value, 1000);

    EXPECT_EQ(text.as_string(), textOfTime(1000));
    EXPECT_EQ(value.as_string(), octetsOfTime(1000));
}

TEST_F(AlarmTime, OfTheOidBasedHandlerGoesOutAsText)
{
    oidBased.time2DateTime(text, value, 1000);

    EXPECT_EQ(text.as_string(), textOfTime(1000));
    EXPECT_EQ(value.as_string(), textOfTime(1000));
    EXPECT_EQ(host.count("convertTime2DateTime"), 0u);
}

/// A handler that a host derived, to see that the choice is a virtual one.
class Undecided : public CTalvikNotifyMsgHandler {
public:
    bool useDateAndTime() override { return dateAndTime; }
    bool dateAndTime = false;
};

TEST_F(AlarmTime, GoesByTheVirtualOperation)
{
    Undecided undecided;

    undecided.time2DateTime(text, value, 1);
    EXPECT_EQ(value.as_string(), textOfTime(1));
    undecided.dateAndTime = true;
    undecided.time2DateTime(text, value, 1);

    EXPECT_EQ(value.as_string(), octetsOfTime(1));
    EXPECT_TRUE(handler.useDateAndTime());
    EXPECT_FALSE(oidBased.useDateAndTime());
}

}  // namespace
