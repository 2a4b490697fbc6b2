// Managers walk a table while its rows come and go. What they may see, by a model of the rows:
// - A row that the table had all the time since before anything kept was asked for is there.
// - A row that is gone is not, once that was reported, or once its lifetime has passed.
// - Names ascend, and every walk ends.

#include "tests/unit/host_snmp/batch_kit.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace talvik::test;
using talvik::ObjectId;
using talvik::toText;
using Time = talvik::BatchTable::Time;

constexpr unsigned long kColumns[] = {1, 3, 4, 7};
constexpr auto kLifetime = 1000ms;
constexpr int kSteps = 3000;

/// Random choices that are the same for the same seed everywhere.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : engine_(seed) {}

    /// A number from 0 up to `count` - 1.
    std::uint32_t below(std::size_t count) { return static_cast<std::uint32_t>(engine_() % count); }

    bool oneIn(std::size_t count) { return below(count) == 0; }

private:
    std::mt19937 engine_;
};

bool hasValue(std::uint32_t index, unsigned long column)
{
    return column != 7 || hasNote(index);
}

std::string valueOf(std::uint32_t index, unsigned long column)
{
    switch (column) {
    case 1:
        return "item " + std::to_string(index);
    case 3:
        return std::to_string(index);
    case 4:
        return std::to_string(kWide + index);
    default:
        return "note";
    }
}

/// What became of one row. An index is never used again.
struct Life {
    Time raised;
    bool raiseTold = false;
    std::optional<Time> cleared;
    bool clearTold = false;
};

/// The rows' lives, and the reports that are on their way to the table.
class Model {
public:
    Model(BatchedTable& served, Dice& dice) : served_(served), dice_(dice)
    {
        for (int i = 0; i < 30; ++i) {
            raise();
        }
        deliver(reports_.size());
    }

    void raise()
    {
        // Rows come anywhere, though most of them at the end.
        const auto index = dice_.oneIn(4) ? 1 + dice_.below(last_ + 1) : last_ + 1 + dice_.below(3);
        if (lives_.count(index) != 0) {
            return;
        }
        last_ = std::max(last_, index);
        lives_[index].raised = served_.now;
        served_.script.rows[index] = true;
        report({index, false});
    }

    void clear()
    {
        if (served_.script.rows.empty()) {
            return;
        }
        auto row = served_.script.rows.begin();
        std::advance(row, dice_.below(served_.script.rows.size()));
        lives_[row->first].cleared = served_.now;
        report({row->first, true});
        served_.script.rows.erase(row);
    }

    /// The oldest reports arrive.
    void deliver(std::size_t count)
    {
        for (; count != 0 && !reports_.empty(); --count) {
            const auto [index, isClear] = reports_.front();
            reports_.pop_front();
            if (isClear) {
                served_.table->rowIsGone(index);
                lives_[index].clearTold = true;
            } else {
                served_.table->rowExists(index);
                lives_[index].raiseTold = true;
            }
        }
    }

    std::size_t underWay() const { return reports_.size(); }

    /// Whether a manager must see the row now.
    bool isDue(const Life& life) const
    {
        return !life.cleared && (life.raiseTold || served_.now - life.raised >= kLifetime);
    }

    /// Whether a manager may see the row now.
    bool isAllowed(std::uint32_t index) const
    {
        const auto found = lives_.find(index);
        if (found == lives_.end()) {
            return false;
        }
        const auto& life = found->second;
        return !life.cleared || (!life.clearTold && served_.now - *life.cleared < kLifetime);
    }

    /// The first row in `column` behind `after` and before `end` that a manager must see.
    std::optional<std::uint32_t> dueBetween(unsigned long column, std::uint64_t after,
                                            std::uint64_t end) const
    {
        for (auto life = lives_.upper_bound(static_cast<std::uint32_t>(after));
             life != lives_.end() && life->first < end; ++life) {
            if (hasValue(life->first, column) && isDue(life->second)) {
                return life->first;
            }
        }
        return std::nullopt;
    }

    const std::map<std::uint32_t, Life>& lives() const { return lives_; }
    std::uint32_t last() const { return last_; }

private:
    struct Report {
        std::uint32_t index;
        bool isClear;
    };

    void report(Report report)
    {
        switch (dice_.below(8)) {
        case 0:  // it is lost; age alone helps
            return;
        case 1:
        case 2:
        case 3:  // at once, with all before it
            reports_.push_back(report);
            deliver(reports_.size());
            return;
        default:
            reports_.push_back(report);
        }
    }

    BatchedTable& served_;
    Dice& dice_;
    std::map<std::uint32_t, Life> lives_;
    std::deque<Report> reports_;
    std::uint32_t last_ = 0;
};

/// A manager in the middle of a walk.
struct Walker {
    ObjectId at;
    std::set<std::uint32_t> throughout;  ///< rows that it has to see once in every column
    std::map<std::pair<unsigned long, std::uint32_t>, int> seen;
    std::size_t walks = 0;
};

class BatchWalks : public testing::TestWithParam<std::uint32_t> {
protected:
    /// Small memory for rows for some seeds.
    BatchWalks()
        : served_({GetParam() % 3 == 0 ? std::size_t{6000} : std::size_t{1} << 20U, 1000ms})
    {
    }

    void begin(Walker& walker)
    {
        walker.at.clear();
        walker.seen.clear();
        walker.throughout.clear();
        for (const auto& [index, life] : model_.lives()) {
            if (model_.isDue(life)) {
                walker.throughout.insert(index);
            }
        }
    }

    void end(Walker& walker)
    {
        ++walker.walks;
        for (const auto index : walker.throughout) {
            if (model_.lives().at(index).cleared) {
                continue;
            }
            for (const auto column : kColumns) {
                const auto seen = walker.seen.find({column, index});
                EXPECT_EQ(seen == walker.seen.end() ? 0 : seen->second,
                          hasValue(index, column) ? 1 : 0)
                    << "times the row " << index << " was seen in column " << column;
            }
        }
        begin(walker);
    }

    /// One request of a walk, a GETNEXT or a GETBULK.
    void step(Walker& walker)
    {
        served_.script.asked.clear();
        served_.script.bulk = 1 + dice_.below(9);
        if (dice_.oneIn(2)) {
            BatchRequest request(served_.subtree, SNMP_MSG_GETNEXT);
            goOn(walker, request.call({walker.at}).front());
        } else {
            BatchRequest request(served_.subtree, SNMP_MSG_GETBULK);
            const auto repetitions = static_cast<int>(1 + dice_.below(12));
            const auto answers = request.bulk({walker.at}, repetitions);
            for (const auto& shown : answers.front()) {
                if (!goOn(walker, shown)) {
                    break;
                }
            }
        }
        if (served_.script.instead) {
            EXPECT_LE(served_.script.asked.size(), 1U) << "a handler that fails is asked again";
        }
    }

    /// False if that was the last of the walk, or a failure.
    bool goOn(Walker& walker, const Shown& shown)
    {
        if (shown.value == "genErr") {
            EXPECT_TRUE(served_.script.instead) << "a failure of nobody";
            return false;
        }
        expectNext(walker.at, shown);
        if (!shown.hasValue()) {
            EXPECT_EQ(shown.value, "end");
            end(walker);
            return false;
        }
        walker.at = shown.suffix;
        ++walker.seen[{shown.suffix[1], static_cast<std::uint32_t>(shown.suffix[2])}];
        return true;
    }

    /// Whether `shown` may follow `from`.
    void expectNext(const ObjectId& from, const Shown& shown)
    {
        const unsigned long column = from.size() > 1 ? from[1] : 0;
        const std::uint64_t after = from.size() > 2 ? from[2] : 0;
        const unsigned long newColumn = shown.hasValue() ? shown.suffix.at(1) : 100;
        const auto newIndex = shown.hasValue() ? shown.suffix.at(2) : 0;
        if (shown.hasValue()) {
            EXPECT_GT(shown.suffix, from);
            EXPECT_EQ(shown.suffix.size(), 3U);
            expectValue(shown);
        }
        for (const auto passed : kColumns) {
            if (passed < column || passed > newColumn) {
                continue;
            }
            const auto missed = model_.dueBetween(passed, passed == column ? after : 0,
                                                  passed == newColumn ? newIndex : 0x100000000);
            EXPECT_FALSE(missed) << "left out: row " << *missed << " in column " << passed
                                 << ", between " << toText(from) << " and " << textOf(shown);
        }
    }

    void expectValue(const Shown& shown)
    {
        const auto column = shown.suffix[1];
        const auto index = static_cast<std::uint32_t>(shown.suffix[2]);
        EXPECT_TRUE(model_.isAllowed(index)) << "no row any more: " << textOf(shown);
        EXPECT_TRUE(hasValue(index, column));
        EXPECT_EQ(shown.value, valueOf(index, column));
    }

    /// A GET of two instances, which may exist or not.
    void get()
    {
        BatchRequest request(served_.subtree, SNMP_MSG_GET);
        served_.script.asked.clear();
        for (int i = 0; i < 2; ++i) {
            const auto column = kColumns[dice_.below(4)];
            const auto index = dice_.below(model_.last() + 3);
            const auto shown = request.call({{1, column, index}}).front();
            if (shown.hasValue()) {
                expectValue(shown);
            } else if (shown.value == "noSuchInstance") {
                EXPECT_FALSE(index != 0 && model_.dueBetween(column, index - 1, index + 1ULL))
                    << "there is a row " << index << " in column " << column;
            } else {
                EXPECT_EQ(shown.value, "genErr");
                EXPECT_TRUE(served_.script.instead) << "a failure of nobody";
            }
        }
    }

    /// Something happens to the rows, the reports, the time or the handler.
    void happen()
    {
        served_.script.instead = nullptr;
        switch (dice_.below(12)) {
        case 0:
        case 1:
            model_.raise();
            break;
        case 2:
        case 3:
            model_.clear();
            break;
        case 4:
            model_.deliver(1 + dice_.below(3));
            break;
        case 5:
            served_.now += std::chrono::milliseconds(dice_.below(400));
            break;
        case 6:
            served_.script.instead = failures_[dice_.below(3)];
            break;
        case 7:
            served_.table->trim();
            EXPECT_LE(served_.table->kept().size(), std::size_t{1} << 20U);
            break;
        case 8:
            if (dice_.oneIn(20)) {
                served_.table->dropRows();
            }
            break;
        default:
            served_.now += std::chrono::milliseconds(dice_.below(20));
        }
    }

    static int throwSomething(BatchPackage&) { throw CKEL_Exception("not today"); }
    static int answerNothing(BatchPackage&) { return 0; }
    static int refuse(BatchPackage&) { return 9; }

    using Failure = int (*)(BatchPackage&);
    const Failure failures_[3] = {&throwSomething, &answerNothing, &refuse};

    Dice dice_{GetParam()};
    BatchedTable served_;
    Model model_{served_, dice_};
};

TEST_P(BatchWalks, ShowEachRowOnceWhateverHappens)
{
    std::vector<Walker> walkers(4);
    for (auto& walker : walkers) {
        begin(walker);
    }

    for (int i = 0; i < kSteps && !HasFailure(); ++i) {
        happen();
        if (dice_.oneIn(4)) {
            get();
        } else {
            step(walkers[dice_.below(walkers.size())]);
        }
        ASSERT_FALSE(HasFailure()) << "in step " << i << " of seed " << GetParam();
    }

    served_.script.instead = nullptr;
    for (auto& walker : walkers) {
        const auto walks = walker.walks;
        for (int i = 0; i < 100000 && walker.walks == walks && !HasFailure(); ++i) {
            step(walker);
        }
        EXPECT_EQ(walker.walks, walks + 1) << "the walk did not end; seed " << GetParam();
        EXPECT_GT(walker.walks, 3U) << "too few to tell anything; seed " << GetParam();
    }
}

TEST_P(BatchWalks, ShowAllRowsOnceTheyAreOld)
{
    for (int i = 0; i < 200; ++i) {
        happen();
        get();
    }
    served_.script.instead = nullptr;
    served_.now += kLifetime;
    Walker walker;
    begin(walker);
    for (int i = 0; i < 100000 && walker.walks == 0; ++i) {
        step(walker);
    }

    EXPECT_EQ(walker.walks, 1U);
    EXPECT_FALSE(HasFailure()) << "seed " << GetParam();
}

// The seed is the last part of a test's name.
INSTANTIATE_TEST_SUITE_P(Seed, BatchWalks, testing::Range(1U, 25U),
                         [](const auto& seed) { return std::to_string(seed.param); });

}  // namespace
