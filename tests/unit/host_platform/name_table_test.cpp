#include "host/platform/name_table.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::LookupAnswer;
using talvik::LookupOutcome;
using talvik::NameLimits;
using talvik::NameTable;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

const LookupAnswer kFound{LookupOutcome::Found, {"192.0.2.1", "2001:db8::1"}, ""};
const LookupAnswer kNoSuchName{LookupOutcome::NoSuchName, {}, "no such name"};
const LookupAnswer kNoAnswer{LookupOutcome::NoAnswer, {}, "no answer"};

class NameTableTest : public testing::Test {
protected:
    Names due() { return table_.takeDue(now_); }

    auto finish(const LookupAnswer& answer, const std::string& name = "a")
    {
        return table_.finish(name, answer, now_);
    }

    /// The next look-up of `a` ends like this, when its time has come.
    auto nextEndsWith(const LookupAnswer& answer)
    {
        now_ = table_.nextWork();
        EXPECT_THAT(due(), ElementsAre("a"));
        return finish(answer);
    }

    Names addresses(const std::string& name = "a") { return table_.ask(name, now_); }

    void expectPause(NameLimits::Milliseconds least) const
    {
        EXPECT_GE(table_.nextWork() - now_, least);
        EXPECT_LE(table_.nextWork() - now_, least + least / 10);
    }

    NameLimits limits_;
    NameTable table_{limits_};
    NameTable::Time now_{1h};
};

}  // namespace

TEST_F(NameTableTest, RetainingANewNameMakesItDueAtOnce)
{
    table_.retain("a", now_);

    EXPECT_EQ(table_.nextWork(), now_);
    EXPECT_THAT(due(), ElementsAre("a"));
    EXPECT_EQ(table_.nextWork(), NameTable::Time::max());
}

TEST_F(NameTableTest, RetainingAKnownNameMakesNoFurtherLookUp)
{
    table_.retain("a", now_);
    due();
    table_.retain("a", now_);
    EXPECT_THAT(due(), IsEmpty());
    finish(kFound);

    table_.retain("a", now_);

    EXPECT_THAT(due(), IsEmpty());
}

TEST_F(NameTableTest, TakesUpperAndLowerCaseForTheSame)
{
    table_.retain("NMS.Example", now_);
    EXPECT_THAT(due(), ElementsAre("nms.example"));
    finish(kFound, "nms.example");

    EXPECT_EQ(addresses("nms.EXAMPLE"), kFound.addresses);
    EXPECT_EQ(table_.size(), 1u);
}

TEST_F(NameTableTest, KnowsTheAddressesInTheirOrderOnceTheyWereFound)
{
    EXPECT_THAT(addresses(), IsEmpty());
    EXPECT_THAT(due(), ElementsAre("a"));

    finish(kFound);

    EXPECT_THAT(addresses(), ElementsAre("192.0.2.1", "2001:db8::1"));
}

TEST_F(NameTableTest, LooksUpAgainAMinuteAfterAnAnswer)
{
    table_.retain("a", now_);
    due();
    finish(kFound);

    expectPause(60s);
}

TEST_F(NameTableTest, RetriesAFailureAfterFiveSecondsAndThenTwiceAsLateUpToAMinute)
{
    for (const auto& failure : {kNoSuchName, kNoAnswer}) {
        table_ = NameTable(limits_);
        table_.retain("a", now_);
        for (const auto pause : {5s, 10s, 20s, 40s, 60s, 60s}) {
            nextEndsWith(failure);
            expectPause(pause);
        }

        nextEndsWith(kFound);
        expectPause(60s);
        nextEndsWith(failure);
        expectPause(5s);
    }
}

TEST_F(NameTableTest, SpreadsTheRefreshesOfNamesThatCameTogether)
{
    constexpr int kNames = 1000;
    limits_.underWay = kNames;
    table_ = NameTable(limits_);
    for (int i = 0; i < kNames; ++i) {
        table_.retain("name" + std::to_string(i), now_);
    }
    for (const auto& name : due()) {
        finish(kFound, name);
    }

    const auto start = now_;
    std::size_t most = 0;
    std::size_t all = 0;
    for (now_ = start + 60s; now_ <= start + 66s; now_ += 500ms) {
        const auto names = due().size();
        most = std::max(most, names);
        all += names;
    }

    EXPECT_EQ(all, 1000u);
    EXPECT_LT(most, 200u);
}

TEST_F(NameTableTest, DropsTheAddressesWhenThereIsNoSuchNameAnyMore)
{
    table_.retain("a", now_);
    nextEndsWith(kFound);

    nextEndsWith(kNoSuchName);

    EXPECT_THAT(addresses(), IsEmpty());
}

TEST_F(NameTableTest, KeepsTheLastAddressesForAnHourWhileNobodyCanSay)
{
    table_.retain("a", now_);
    nextEndsWith(kFound);
    const auto goodAt = now_;

    while (table_.nextWork() < goodAt + 1h) {
        EXPECT_FALSE(nextEndsWith(kNoAnswer));
        EXPECT_EQ(addresses(), kFound.addresses);
    }
    const auto change = nextEndsWith(kNoAnswer);

    EXPECT_THAT(addresses(), IsEmpty());
    ASSERT_TRUE(change);
    EXPECT_FALSE(change->resolves);
    EXPECT_EQ(change->reason, "no answer");
}

TEST_F(NameTableTest, ReportsWhenARetainedNameStopsResolvingAndWhenItResolvesAgain)
{
    table_.retain("a", now_);
    EXPECT_FALSE(nextEndsWith(kFound));

    const auto stopped = nextEndsWith(kNoSuchName);
    EXPECT_FALSE(nextEndsWith(kNoSuchName));
    const auto again = nextEndsWith(kFound);

    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->name, "a");
    EXPECT_FALSE(stopped->resolves);
    EXPECT_EQ(stopped->reason, "no such name");
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->resolves);
    EXPECT_FALSE(nextEndsWith(kFound));
}

TEST_F(NameTableTest, ReportsANameThatNeverResolvedOnceItIsRetained)
{
    addresses();
    EXPECT_FALSE(nextEndsWith(kNoSuchName));

    table_.retain("a", now_);

    EXPECT_TRUE(nextEndsWith(kNoSuchName));
    EXPECT_FALSE(nextEndsWith(kNoSuchName));
}

TEST_F(NameTableTest, HasNoMoreLookUpsUnderWayThanAllowed)
{
    limits_.underWay = 2;
    table_ = NameTable(limits_);
    for (const char* name : {"a", "b", "c"}) {
        table_.retain(name, now_);
    }

    EXPECT_THAT(due(), ElementsAre("a", "b"));
    EXPECT_THAT(due(), IsEmpty());
    EXPECT_EQ(table_.nextWork(), NameTable::Time::max()) << "only an end makes room";
    finish(kFound, "b");
    EXPECT_THAT(due(), ElementsAre("c"));
}

TEST_F(NameTableTest, ForgetsWhatNobodyRetainsTenMinutesAfterItWasLastAsked)
{
    addresses("a");
    addresses("b");
    table_.retain("c", now_);
    due();
    now_ += 6min;
    addresses("b");

    now_ += 4min;
    due();
    EXPECT_EQ(table_.size(), 2u);

    now_ += 6min;
    due();
    EXPECT_EQ(table_.size(), 1u) << "the retained one";
}

TEST_F(NameTableTest, WakesUpInTimeToForget)
{
    addresses("a");
    due();

    EXPECT_EQ(table_.nextWork(), now_ + 10min);
}

TEST_F(NameTableTest, ForgetsTheOneAskedLongestAgoWhenThereAreTooMany)
{
    limits_.unretained = 2;
    table_ = NameTable(limits_);
    table_.retain("kept", now_);
    addresses("a");
    addresses("b");
    addresses("a");

    addresses("c");

    EXPECT_EQ(table_.size(), 3u);
    EXPECT_THAT(due(), ElementsAre("a", "c", "kept"));
}

TEST_F(NameTableTest, RetainedNamesTakeNoRoomFromTheOthers)
{
    limits_.unretained = 1;
    table_ = NameTable(limits_);
    addresses("a");

    for (const char* name : {"x", "y", "z"}) {
        table_.retain(name, now_);
    }

    EXPECT_THAT(due(), ElementsAre("a", "x", "y", "z"));
}

TEST_F(NameTableTest, AReleasedNameIsLikeOneThatWasAsked)
{
    table_.retain("a", now_);
    table_.retain("a", now_);
    nextEndsWith(kFound);
    table_.release("a", now_);
    now_ += 11min;
    due();
    finish(kFound);
    EXPECT_EQ(table_.size(), 1u) << "retained once more";

    table_.release("a", now_);
    EXPECT_EQ(addresses(), kFound.addresses);
    EXPECT_FALSE(nextEndsWith(kNoSuchName)) << "nobody cares";
    now_ += 10min;
    due();

    EXPECT_EQ(table_.size(), 0u);
}

TEST_F(NameTableTest, ReleasingWhatIsNotRetainedDoesNothing)
{
    table_.release("a", now_);
    addresses("b");
    table_.release("b", now_);
    table_.retain("b", now_);
    now_ += 11min;

    EXPECT_THAT(due(), ElementsAre("b"));
    EXPECT_EQ(table_.size(), 1u);
}

TEST_F(NameTableTest, AnAnswerForAForgottenNameOnlyMakesRoom)
{
    limits_.unretained = 1;
    limits_.underWay = 1;
    table_ = NameTable(limits_);
    addresses("a");
    due();
    addresses("b");
    EXPECT_THAT(due(), IsEmpty());

    EXPECT_FALSE(finish(kFound, "a"));

    EXPECT_EQ(table_.size(), 1u);
    EXPECT_THAT(due(), ElementsAre("b"));
}

TEST_F(NameTableTest, AnswersOfANameThatWasForgottenAndAskedAgainBothCount)
{
    limits_.unretained = 1;
    table_ = NameTable(limits_);
    addresses("a");
    due();
    addresses("b");
    addresses("a");
    EXPECT_THAT(due(), ElementsAre("a"));

    finish(kNoSuchName);
    finish(kFound);

    EXPECT_EQ(addresses(), kFound.addresses);
    expectPause(60s);
}
