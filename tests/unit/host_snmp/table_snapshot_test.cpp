#include "host/snmp/table_snapshot.h"

#include "tests/unit/host_snmp/table_kit.h"

#include <gmock/gmock.h>

#include <random>
#include <string>
#include <vector>

namespace {

using talvik::MibTable;
using talvik::ObjectId;
using talvik::TableSnapshot;
using talvik::test::RowBuilder;
using testing::ElementsAre;
using testing::HasSubstr;

class TableSnapshotOf : public testing::Test {
protected:
    TableSnapshot take()
    {
        return TableSnapshot(table, rows,
                             [this](const std::string& text) { problems.push_back(text); });
    }

    static std::vector<ObjectId> suffixes(const TableSnapshot& snapshot)
    {
        std::vector<ObjectId> all;
        for (const auto& instance : snapshot.instances()) {
            all.push_back(instance.suffix);
        }
        return all;
    }

    MibTable table = talvik::test::smallTable();
    CTLVPackageV3<TLVMsgHeadV3> rows;
    std::vector<std::string> problems;
};

TEST_F(TableSnapshotOf, NoRowsIsEmpty)
{
    const auto snapshot = take();

    EXPECT_TRUE(snapshot.instances().empty());
    EXPECT_EQ(snapshot.after({}, false), nullptr);
    EXPECT_EQ(snapshot.at({1, 1, 1}), nullptr);
}

TEST_F(TableSnapshotOf, RowsInAnyOrderGoesColumnByColumn)
{
    RowBuilder().number(2, 20).text(1, "b").number(5, 0).into(rows);
    RowBuilder().text(1, "a").number(2, 3).number(5, 0).into(rows);

    const auto snapshot = take();

    EXPECT_THAT(suffixes(snapshot), ElementsAre(ObjectId{1, 1, 3}, ObjectId{1, 1, 20},
                                                ObjectId{1, 2, 3}, ObjectId{1, 2, 20}));
    EXPECT_EQ(snapshot.at({1, 1, 20})->value.octets, "b");
    EXPECT_EQ(snapshot.at({1, 5, 3}), nullptr) << "a column that nobody may read";
    EXPECT_TRUE(problems.empty());
}

TEST_F(TableSnapshotOf, ARowWithoutACellLeavesOutThatCell)
{
    RowBuilder().number(2, 1).into(rows);

    const auto snapshot = take();

    EXPECT_THAT(suffixes(snapshot), ElementsAre(ObjectId{1, 2, 1}));
    EXPECT_THAT(problems, ElementsAre(HasSubstr("smallText")));
}

TEST_F(TableSnapshotOf, ACellOfTheWrongTypeLeavesOutThatCell)
{
    RowBuilder().number(1, 5).number(2, 1).into(rows);

    EXPECT_THAT(suffixes(take()), ElementsAre(ObjectId{1, 2, 1}));
    EXPECT_THAT(problems, ElementsAre(HasSubstr("smallText")));
}

TEST_F(TableSnapshotOf, ARowWithoutAUsableIndexLeavesOutTheRow)
{
    RowBuilder().text(1, "no index").into(rows);
    RowBuilder().text(1, "text for an index").text(2, "x").into(rows);
    RowBuilder().text(1, "negative").number(2, -1).into(rows);
    RowBuilder().text(1, "kept").number(2, 1).into(rows);

    EXPECT_THAT(suffixes(take()), ElementsAre(ObjectId{1, 1, 1}, ObjectId{1, 2, 1}));
    EXPECT_FALSE(problems.empty());
}

TEST_F(TableSnapshotOf, RowsWithOneIndexKeepsTheFirst)
{
    RowBuilder().text(1, "first").number(2, 1).into(rows);
    RowBuilder().text(1, "second").number(2, 1).into(rows);

    const auto snapshot = take();

    EXPECT_EQ(snapshot.at({1, 1, 1})->value.octets, "first");
    EXPECT_EQ(snapshot.instances().size(), 2u);
    EXPECT_THAT(problems, ElementsAre(HasSubstr("same index")));
}

TEST_F(TableSnapshotOf, AnIndexTooLongForAnObjectIdLeavesOutTheRow)
{
    table.index = {0};
    const auto room = talvik::kMaxObjectIdLength - table.id.size() - 3;
    RowBuilder().text(1, std::string(room, 'a')).number(2, 1).into(rows);
    RowBuilder().text(1, std::string(room + 1, 'a')).number(2, 2).into(rows);

    const auto snapshot = take();

    ASSERT_EQ(snapshot.instances().size(), 2u);
    EXPECT_EQ(table.id.size() + snapshot.instances()[0].suffix.size(), talvik::kMaxObjectIdLength);
}

TEST_F(TableSnapshotOf, AnythingFindsWhatFollows)
{
    RowBuilder().text(1, "a").number(2, 3).into(rows);
    RowBuilder().text(1, "b").number(2, 20).into(rows);
    const auto snapshot = take();
    const auto next = [&](const ObjectId& suffix, bool inclusive = false) {
        const auto* found = snapshot.after(suffix, inclusive);
        return found == nullptr ? ObjectId() : found->suffix;
    };

    EXPECT_EQ(next({}), (ObjectId{1, 1, 3}));
    EXPECT_EQ(next({1, 1, 3}), (ObjectId{1, 1, 20}));
    EXPECT_EQ(next({1, 1, 3}, true), (ObjectId{1, 1, 3}));
    EXPECT_EQ(next({1, 1, 3, 0}), (ObjectId{1, 1, 20}));
    EXPECT_EQ(next({1, 1, 21}), (ObjectId{1, 2, 3}));
    EXPECT_EQ(next({1, 2, 20}), ObjectId());
    EXPECT_EQ(next({2}), ObjectId());
}

TEST_F(TableSnapshotOf, ChangingRowsStillLetsEveryWalkIncreaseAndEnd)
{
    std::mt19937 chance(1);  // the same rows in every run
    ObjectId at;
    for (int step = 0; step < 2000; ++step) {
        rows.clear();
        for (auto count = chance() % 20; count != 0; --count) {
            RowBuilder().text(1, "x").number(2, static_cast<int>(chance() % 50)).into(rows);
        }
        const auto snapshot = take();
        const auto* found = snapshot.after(at, false);
        if (found == nullptr) {
            at.clear();
            continue;
        }
        ASSERT_LT(at, found->suffix);
        at = found->suffix;
    }
}

}  // namespace
