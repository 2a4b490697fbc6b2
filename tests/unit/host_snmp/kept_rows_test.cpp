#include "host/snmp/kept_rows.h"

#include "tests/unit/host_snmp/batch_handler_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace talvik::test;
using talvik::KeptRows;
using talvik::RowBatch;

constexpr auto kNoMore = KeptRows::kNoMore;
constexpr auto kLifetime = 1000ms;

class KeptRowsOf : public testing::Test {
protected:
    RowBatch batch(const std::vector<std::uint32_t>& indexes)
    {
        BatchPackage package;
        for (const auto index : indexes) {
            itemRow(index).into(package);
        }
        return RowBatch(table, package.oRecords, 0, 16384, [](const std::string&) {});
    }

    void add(std::uint64_t after, std::uint64_t end, const std::vector<std::uint32_t>& indexes)
    {
        kept.add(after, end, batch(indexes), now);
    }

    /// The index of the first row behind; "none", or "ask INDEX" for where the knowledge ends.
    std::string behind(std::uint64_t after)
    {
        const auto finding = kept.firstBehind(after, now);
        switch (finding.kind) {
        case KeptRows::Finding::Kind::Row:
            return std::to_string(finding.batch->indexes()[finding.row]);
        case KeptRows::Finding::Kind::NoMore:
            return "none";
        default:
            return "ask " + std::to_string(finding.askFrom);
        }
    }

    talvik::MibTable table = batchedTable();
    KeptRows::Time now{1h};
    KeptRows kept{{kLifetime, 100000}};
};

TEST_F(KeptRowsOf, NothingKnowsNothing)
{
    EXPECT_EQ(behind(0), "ask 0");
    EXPECT_EQ(behind(7), "ask 7");
    EXPECT_EQ(kept.nextExpiry(), KeptRows::Time::max());
    EXPECT_EQ(kept.size(), 0U);
}

TEST_F(KeptRowsOf, AStretchKnowsWhatLiesBetweenItsBeginAndItsEnd)
{
    add(3, 8, {5, 8});

    EXPECT_EQ(behind(2), "ask 2");
    EXPECT_EQ(behind(3), "5");
    EXPECT_EQ(behind(4), "5");
    EXPECT_EQ(behind(5), "8");
    EXPECT_EQ(behind(7), "8");
    EXPECT_EQ(behind(8), "ask 8");
    EXPECT_EQ(behind(9), "ask 9");
}

TEST_F(KeptRowsOf, AStretchToTheEndKnowsThatThereAreNoMore)
{
    add(3, kNoMore, {5});

    EXPECT_EQ(behind(4), "5");
    EXPECT_EQ(behind(5), "none");
    EXPECT_EQ(behind(0xFFFFFFFF), "none");
}

TEST_F(KeptRowsOf, NeighbouringStretchesAreOneKnowledge)
{
    add(0, 4, {4});
    add(4, 6, {6});
    add(6, kNoMore, {});
    kept.forget(4);

    EXPECT_EQ(behind(0), "6");
    kept.forget(6);
    EXPECT_EQ(behind(0), "none");
}

TEST_F(KeptRowsOf, AGapBetweenStretchesIsUnknownFromItsBegin)
{
    add(0, 4, {4});
    add(5, 6, {6});
    kept.forget(4);

    EXPECT_EQ(behind(0), "ask 4");
}

struct Overlap {
    const char* name;
    std::uint64_t after;
    std::uint64_t end;
    const char* of10;  ///< what lies behind 10 afterwards, where the first stretch begins
    const char* of19;
    const char* of25;

    friend std::ostream& operator<<(std::ostream& os, const Overlap& row) { return os << row.name; }
};

class KeptRowsReplace : public KeptRowsOf, public testing::WithParamInterface<Overlap> {};

TEST_P(KeptRowsReplace, WhatIsKnownAlreadyOfTheSamePlaces)
{
    add(10, 20, {15, 20});
    add(20, 30, {25, 30});
    const auto [name, after, end, of10, of19, of25] = GetParam();

    kept.add(after, end, batch({}), now);

    EXPECT_EQ(behind(10), of10);
    EXPECT_EQ(behind(19), of19);
    EXPECT_EQ(behind(25), of25);
    kept.clear();
    EXPECT_EQ(kept.size(), 0U);
}

const Overlap kOverlaps[] = {
    {"Before", 5, 10, "15", "20", "30"},
    {"IntoTheFirst", 5, 11, "ask 11", "ask 19", "30"},
    {"TheFirstExactly", 10, 20, "25", "25", "30"},
    {"WithinTheFirst", 12, 15, "ask 10", "ask 19", "30"},
    {"TheLastOfTheFirst", 19, 20, "ask 10", "25", "30"},
    {"AcrossBoth", 12, 25, "ask 10", "ask 25", "ask 25"},
    {"AllToTheEnd", 9, kNoMore, "none", "none", "none"},
    {"Behind", 30, kNoMore, "15", "20", "30"},
    {"Nothing", 15, 15, "15", "20", "30"},
};

INSTANTIATE_TEST_SUITE_P(Add, KeptRowsReplace, testing::ValuesIn(kOverlaps),
                         [](const auto& row) { return row.param.name; });

TEST_F(KeptRowsOf, AForgottenRowIsKnownToBeGone)
{
    add(0, kNoMore, {3, 5, 7});

    kept.forget(5);

    EXPECT_EQ(behind(3), "7");
    EXPECT_EQ(behind(0), "3");
    kept.forget(7);
    EXPECT_EQ(behind(3), "none");
}

TEST_F(KeptRowsOf, ForgettingWhatIsNotKeptChangesNothing)
{
    add(2, 6, {4, 6});

    for (const unsigned index : {0U, 1U, 2U, 3U, 5U, 7U}) {
        kept.forget(index);
    }

    EXPECT_EQ(behind(2), "4");
    EXPECT_EQ(behind(4), "6");
}

TEST_F(KeptRowsOf, AnExpectedRowThatIsKeptStays)
{
    add(0, kNoMore, {3, 5});

    kept.expect(3);
    kept.expect(5);

    EXPECT_EQ(behind(0), "3");
    EXPECT_EQ(behind(5), "none");
}

TEST_F(KeptRowsOf, ARowExpectedBehindTheLastLeavesTheRowsBeforeIt)
{
    add(0, kNoMore, {3, 5});

    kept.expect(9);

    EXPECT_EQ(behind(3), "5");
    EXPECT_EQ(behind(5), "ask 5");
}

TEST_F(KeptRowsOf, ARowExpectedBetweenOthersIsAskedFor)
{
    add(0, kNoMore, {3, 5});

    kept.expect(4);

    EXPECT_EQ(behind(0), "ask 0");
    EXPECT_EQ(kept.size(), 0U);
}

TEST_F(KeptRowsOf, ARowExpectedBeforeTheFirstIsAskedFor)
{
    add(0, kNoMore, {3, 5});

    kept.expect(1);

    EXPECT_EQ(behind(0), "ask 0");
}

TEST_F(KeptRowsOf, ARowExpectedWhereThereWereNoneIsAskedFor)
{
    add(7, kNoMore, {});

    kept.expect(7);
    EXPECT_EQ(behind(7), "none") << "it lies before";

    kept.expect(8);
    EXPECT_EQ(behind(7), "ask 7");
}

TEST_F(KeptRowsOf, TheLastOfAStretchExpectedAgainAfterItWasForgottenIsAskedFor)
{
    add(0, 5, {3, 5});
    kept.forget(5);

    kept.expect(5);

    EXPECT_EQ(behind(0), "3");
    EXPECT_EQ(behind(3), "ask 3");
}

TEST_F(KeptRowsOf, IndexZeroIsNobodysRow)
{
    add(0, kNoMore, {3});

    kept.expect(0);
    kept.forget(0);

    EXPECT_EQ(behind(0), "3");
}

TEST_F(KeptRowsOf, KnowledgeEndsWithItsLifetime)
{
    add(0, kNoMore, {3});
    const auto expiry = now + kLifetime;
    EXPECT_EQ(kept.nextExpiry(), expiry);

    now = expiry - 1ns;
    kept.trim(now);
    EXPECT_EQ(behind(0), "3");

    now = expiry;
    EXPECT_EQ(behind(0), "ask 0") << "also before it is dropped";
    kept.trim(now);
    EXPECT_EQ(kept.size(), 0U);
    EXPECT_EQ(kept.nextExpiry(), KeptRows::Time::max());
}

TEST_F(KeptRowsOf, TheLifetimeOfWhatReplacesCounts)
{
    add(0, kNoMore, {3});
    now += 600ms;
    add(0, kNoMore, {4});

    now += 600ms;
    kept.trim(now);

    EXPECT_EQ(behind(0), "4");
    EXPECT_EQ(kept.nextExpiry(), now + 400ms);
}

TEST_F(KeptRowsOf, OnlyWhatIsTooOldIsDropped)
{
    add(0, 3, {3});
    now += 600ms;
    add(3, 6, {6});

    now += 600ms;
    kept.trim(now);

    EXPECT_EQ(behind(0), "ask 0");
    EXPECT_EQ(behind(3), "6");
}

TEST_F(KeptRowsOf, TheOldestIsDroppedOfWhatIsTooMuch)
{
    for (std::uint32_t index = 1; index <= 5000; ++index) {
        add(index - 1, index, {index});
        now += 1us;
    }
    EXPECT_EQ(behind(0), "1") << "nothing is dropped before it is trimmed";

    kept.trim(now);

    EXPECT_LE(kept.size(), 100000U);
    EXPECT_GT(kept.size(), 90000U);
    EXPECT_EQ(behind(0), "ask 0");
    EXPECT_EQ(behind(4999), "5000");
}

TEST_F(KeptRowsOf, TheSizeIsThatOfWhatIsKept)
{
    add(0, 3, {3});
    const auto one = kept.size();
    EXPECT_GT(one, batch({3}).size()) << "a stretch takes memory itself";

    add(3, 6, {6});
    EXPECT_EQ(kept.size(), 2 * one);
    kept.expect(2);
    EXPECT_EQ(kept.size(), one);
    add(3, 6, {6});
    EXPECT_EQ(kept.size(), one) << "replaced";
    kept.forget(6);
    kept.clear();

    EXPECT_EQ(kept.size(), 0U);
    EXPECT_EQ(kept.nextExpiry(), KeptRows::Time::max());
    EXPECT_EQ(behind(3), "ask 3");
}

TEST_F(KeptRowsOf, WhatWasFoundLastIsNotUsedWhenItIsGone)
{
    add(0, 5, {3, 5});
    ASSERT_EQ(behind(0), "3");
    kept.expect(4);
    EXPECT_EQ(behind(0), "ask 0");

    add(0, 5, {3, 5});
    ASSERT_EQ(behind(0), "3");
    now += kLifetime;
    kept.trim(now);
    EXPECT_EQ(behind(0), "ask 0");

    add(0, 5, {3, 5});
    ASSERT_EQ(behind(0), "3");
    kept.clear();
    EXPECT_EQ(behind(0), "ask 0");
}

}  // namespace
