#include "host/table_keeper.h"

#include "backend/alarm_tags.h"
#include "tests/unit/host_snmp/batch_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace {

using namespace std::chrono_literals;
using namespace talvik::test;
using talvik::TableKeeper;
namespace alarm = talvik::backend::alarm;

constexpr auto kFault = static_cast<std::uint8_t>(alarm::Kind::Fault);
constexpr auto kEvent = static_cast<std::uint8_t>(alarm::Kind::Event);
constexpr auto kClear = static_cast<std::uint8_t>(alarm::Kind::Clear);

/// Two tables with the rows 1 and 3, all of them kept.
class TableKeeperOf : public testing::Test {
protected:
    TableKeeperOf()
    {
        for (auto* one : {&table, &other}) {
            one->with({1, 3});
            one->script.bulk = 50;
            BatchRequest(one->subtree, SNMP_MSG_GETBULK).call({{1, 1}});
            one->script.asked.clear();
            keeper.add(one->table);
        }
    }

    void report(std::optional<std::uint8_t> kind, std::optional<std::uint32_t> serial)
    {
        CTLVRecordV3 record(alarm::kRecordId);
        const auto append = [&](unsigned tag, const std::string& bytes) {
            auto made = cell(CTLVCell::TLV_UINT, static_cast<unsigned short>(tag), bytes);
            record.append(made.get());
            made.release();
        };
        if (kind) {
            append(alarm::kKindTag, bytesOf(*kind));
        }
        if (serial) {
            append(alarm::kSerialTag, bytesOf(*serial));
        }
        keeper.reported(record);
    }

    /// How many questions the walk down the first column takes.
    static std::size_t questionsOf(BatchedTable& one)
    {
        one.script.asked.clear();
        talvik::ObjectId at{1, 1};
        while (at.size() < 3 || at[1] == 1) {
            at = BatchRequest(one.subtree, SNMP_MSG_GETNEXT).call({at}).front().suffix;
        }
        return one.script.asked.size();
    }

    BatchedTable table;
    BatchedTable other;
    TableKeeper keeper;
};

TEST_F(TableKeeperOf, TablesTellsThemOfAClear)
{
    report(kClear, 1);

    for (auto* one : {&table, &other}) {
        EXPECT_EQ(one->next({1, 1}), "1.1.3 = item 3") << "although the handler still has the row";
        EXPECT_EQ(one->get({1, 1, 1}), "noSuchInstance");
        EXPECT_EQ(questionsOf(*one), 0U);
    }
}

TEST_F(TableKeeperOf, TablesTellsThemOfAFault)
{
    for (auto* one : {&table, &other}) {
        one->with({2});
        ASSERT_EQ(one->next({1, 1, 1}), "1.1.3 = item 3");
    }

    report(kFault, 2);

    for (auto* one : {&table, &other}) {
        EXPECT_EQ(one->next({1, 1, 1}), "1.1.2 = item 2");
    }
}

TEST_F(TableKeeperOf, TablesKeepsTheRowsWhenAFaultIsToldAgain)
{
    report(kFault, 1);
    report(kFault, 3);

    EXPECT_EQ(questionsOf(table), 0U);
}

TEST_F(TableKeeperOf, TablesKeepsTheRowsAtAnEvent)
{
    report(kEvent, 2);
    report(kEvent, 1);

    EXPECT_EQ(questionsOf(table), 0U);
    EXPECT_EQ(table.next({1, 1}), "1.1.1 = item 1");
}

TEST_F(TableKeeperOf, TablesDropsTheRowsAtWhatItDoesNotKnow)
{
    for (const auto& [kind, serial] :
         {std::pair<std::optional<std::uint8_t>, std::optional<std::uint32_t>>{7, 1},
          {kFault, std::nullopt},
          {std::nullopt, 1},
          {std::nullopt, std::nullopt}}) {
        ASSERT_NE(table.table->kept().size(), 0U);

        report(kind, serial);

        EXPECT_EQ(table.table->kept().size(), 0U);
        EXPECT_EQ(other.table->kept().size(), 0U);
        table.next({1, 1});
    }
}

TEST_F(TableKeeperOf, TablesDropsTheRowsWhenAnythingMayHaveChanged)
{
    keeper.dropRows();

    EXPECT_EQ(table.table->kept().size(), 0U);
    EXPECT_EQ(other.table->kept().size(), 0U);
    EXPECT_EQ(keeper.deadline(), TableKeeper::Time::max());
}

TEST_F(TableKeeperOf, TablesIsDueWhenTheFirstOfThemHasOldRows)
{
    table.now += 400ms;
    table.table->dropRows();
    table.next({1, 1});
    ASSERT_EQ(table.table->nextExpiry(), table.now + 1000ms);

    EXPECT_EQ(keeper.deadline(), other.now + 1000ms);

    other.now += 1000ms;
    table.now += 600ms;
    keeper.proceed(false, other.now);
    EXPECT_EQ(other.table->kept().size(), 0U);
    EXPECT_NE(table.table->kept().size(), 0U);
    EXPECT_EQ(keeper.deadline(), table.table->nextExpiry());
}

TEST(TableKeeper, WithoutTablesIsNeverDue)
{
    TableKeeper keeper;

    EXPECT_EQ(keeper.deadline(), TableKeeper::Time::max());
    EXPECT_EQ(keeper.descriptor(), -1);
    keeper.proceed(false, TableKeeper::Time());
    keeper.dropRows();
}

}  // namespace
