// Texts whose values lead back to themselves or multiply.

#include "alarmconfig/alarm_text.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::size_t kMebi = 1048576;

std::string repeated(const std::string& text, std::size_t times)
{
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

/// Each of the first `levels` values holds the next one twice; the last is "x".
Pairs doubling(unsigned levels)
{
    Pairs pairs;
    for (unsigned i = 0; i < levels; ++i) {
        const auto next = std::to_string(i + 1);
        const auto mark = "##" + std::string(next.size() == 1 ? "0" : "") + next;
        pairs.emplace_back(i, mark + mark);
    }
    pairs.emplace_back(levels, "x");
    return pairs;
}

class AlarmBound : public AlarmCatalogueTest {
protected:
    std::string fill(const std::string& text, const Pairs& pairs)
    {
        auto& loaded = parser();
        host.log.clear();
        std::string out = "untouched";
        EXPECT_EQ(loaded.replaceAlarmParamInfo(text, out, pairs), 0);
        return out;
    }
};

TEST_F(AlarmBound, LeavesAValueThatHoldsItself)
{
    EXPECT_EQ(fill("Disk ##00 at ##01.", {{0, "D##00"}, {1, "E"}}), "Disk D##00 at ##01.");

    EXPECT_THAT(lines(), ElementsAre("warn 0x1002f replaceAlarmParamInfo: alarm parameter pos 0 "
                                     "leads back to itself at character 6, so the text is left as "
                                     "it is from there on"));
}

TEST_F(AlarmBound, LeavesValuesThatHoldEachOther)
{
    EXPECT_EQ(fill("<##00>", {{0, "a##01b"}, {1, "c##02d"}, {2, "e##00f"}}), "<ace##00fdb>");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(AlarmBound, LeavesAValueThatIsNothingButItself)
{
    EXPECT_EQ(fill("##00", {{0, "##00"}}), "##00");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(AlarmBound, LeavesAValueThatDropsWhatFollowsIt)
{
    // Never twice on the way: each "##00" ends before the next is made, and takes a blank along.
    EXPECT_EQ(fill("##00    ", {{0, "##0"}}), "##0");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(AlarmBound, LeavesAValueThatReachesForTheEnd)
{
    EXPECT_EQ(fill("##00", {{0, "a##0"}}), "aa##0");

    EXPECT_THAT(lines(), ElementsAre(StartsWith("warn 0x1002f replaceAlarmParamInfo: alarm "
                                                "parameter pos 0 leads back to itself")));
}

TEST_F(AlarmBound, FinishesValuesThatReachTheEndOnceEach)
{
    EXPECT_EQ(fill("##00", {{0, "a##1"}, {1, "b##2"}, {2, "#c"}}), "ab#c");
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmBound, FinishesTheSameValueBehindItself)
{
    EXPECT_EQ(fill("##00##00##00", {{0, "(##01)"}, {1, "#"}}), "(#)(#)(#)");
    EXPECT_EQ(fill("##00##00", {{0, "##01##01"}, {1, "#."}}), "#.#.#.#.");
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmBound, FinishesTheLargestDoublingBelowIt)
{
    // 2 + 4 + ... + 32768 = 65534 placeholders stand in values.
    EXPECT_EQ(fill("##00", doubling(15)), std::string(32768, 'x'));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmBound, StopsADoublingAboveIt)
{
    const auto filled = fill("[##00]", doubling(40));

    EXPECT_EQ(filled.substr(0, 3), "[xx") << filled.substr(0, 40);
    EXPECT_EQ(filled.back(), ']');
    EXPECT_NE(filled.find("##"), std::string::npos);
    EXPECT_LT(filled.size(), 2 * talvik::kMaxNestedSubstitutions);
    EXPECT_EQ(lines().size(), 1u);
    EXPECT_THAT(lines().front(),
                StartsWith("warn 0x1002f replaceAlarmParamInfo: the values of an alarm text ask "
                           "for more than 65536 values or 16777216 characters at character "));
}

TEST_F(AlarmBound, StopsADoublingOfNothing)
{
    auto pairs = doubling(60);
    pairs.back().second.clear();

    const auto filled = fill("[##00]", pairs);

    EXPECT_EQ(filled.substr(0, 3), "[##");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(AlarmBound, StopsAboveTheLargestLength)
{
    const Pairs pairs{{0, repeated("##01", 20)}, {1, std::string(kMebi, 'y')}};

    const auto filled = fill("##00", pairs);

    EXPECT_EQ(filled.size(), 16 * kMebi + 16);
    EXPECT_EQ(filled.substr(16 * kMebi), "##01##01##01##01");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(AlarmBound, NeverStopsTextsWithoutPlaceholdersInValues)
{
    EXPECT_EQ(fill(repeated("##00", 70000), {{0, "#x"}}), repeated("#x", 70000));
    EXPECT_EQ(fill(repeated("##00", 20), {{0, std::string(kMebi, 'y')}}).size(), 20 * kMebi);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AlarmBound, DeliversTheAlarm)
{
    defineAlarm("Disk ##00 failed", "at ##01", "ask ##00");

    const auto info = infoOf(1, "D##00,E");

    EXPECT_EQ(info.result, 0);
    EXPECT_EQ(info.detail, "Disk D##00 failed");
    EXPECT_EQ(info.location, "at E");
    EXPECT_EQ(info.suggestion, "ask D##00");
    EXPECT_EQ(info.name, "Alarm ##00");
    EXPECT_EQ(lines("warn").size(), 2u);
}

}  // namespace
