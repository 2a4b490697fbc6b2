#include "host/snmp/batch_subtree.h"

#include "tests/unit/host_snmp/batch_kit.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::ObjectId;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr unsigned long kGreatest = std::numeric_limits<std::uint32_t>::max();

class BatchSubtreeGets : public testing::Test {
protected:
    BatchedTable served;
};

TEST_F(BatchSubtreeGets, TheValueOfEachColumn)
{
    served.with({4, 5});

    EXPECT_EQ(served.get({1, 1, 5}), "1.1.5 = item 5");
    EXPECT_EQ(served.get({1, 3, 5}), "1.3.5 = 5");
    EXPECT_EQ(served.get({1, 4, 5}), "1.4.5 = " + std::to_string(kWide + 5));
    EXPECT_EQ(served.get({1, 7, 5}), "1.7.5 = note");
}

struct Miss {
    const char* name;
    ObjectId suffix;
    const char* answer;
    std::size_t asked;

    friend std::ostream& operator<<(std::ostream& os, const Miss& miss) { return os << miss.name; }
};

class BatchSubtreeMisses : public testing::TestWithParam<Miss> {};

TEST_P(BatchSubtreeMisses, WithTheExceptionThatIsDue)
{
    BatchedTable served;
    served.with({3, 5, 4294967295});

    EXPECT_EQ(served.get(GetParam().suffix), GetParam().answer);
    EXPECT_THAT(served.script.asked, SizeIs(GetParam().asked));
}

const Miss kMisses[] = {
    {"TheTableItself", {}, "noSuchObject", 0},
    {"TheEntry", {1}, "noSuchObject", 0},
    {"AnotherEntry", {2, 1, 5}, "noSuchObject", 0},
    {"EntryZero", {0, 1, 5}, "noSuchObject", 0},
    {"AColumnBetween", {1, 2, 5}, "noSuchObject", 0},
    {"AColumnBehind", {1, 8, 5}, "noSuchObject", 0},
    {"AColumnFarBehind", {1, 65536 + 1, 5}, "noSuchObject", 0},
    {"TheSecretColumn", {1, 6, 5}, "noSuchObject", 0},
    {"NoIndex", {1, 1}, "noSuchInstance", 0},
    {"ALongerIndex", {1, 1, 5, 1}, "noSuchInstance", 0},
    {"IndexZero", {1, 1, 0}, "noSuchInstance", 0},
    {"ARowBetween", {1, 1, 4}, "noSuchInstance", 1},
    {"ARowNearTheGreatest", {1, 1, 4294967294}, "noSuchInstance", 1},
    {"AMissingCell", {1, 7, 3}, "noSuchInstance", 1},
};

INSTANTIATE_TEST_SUITE_P(Get, BatchSubtreeMisses, testing::ValuesIn(kMisses),
                         [](const auto& row) { return row.param.name; });

TEST_F(BatchSubtreeGets, TheRowWithTheGreatestIndex)
{
    served.with({1, 4294967295});

    EXPECT_EQ(served.get({1, 3, kGreatest}), "1.3.4294967295 = 4294967295");
    EXPECT_THAT(served.script.asked, ElementsAre("160 7.1.2.3.1.3.4294967295"));
}

TEST_F(BatchSubtreeGets, NothingOfACounter64ForAManagerOfVersion1)
{
    served.with({5});

    EXPECT_EQ(served.get({1, 4, 5}, SNMP_VERSION_1), "noSuchObject");
    EXPECT_EQ(served.get({1, 3, 5}, SNMP_VERSION_1), "1.3.5 = 5");
}

struct Step {
    const char* name;
    ObjectId from;
    bool inclusive;
    const char* answer;

    friend std::ostream& operator<<(std::ostream& os, const Step& step) { return os << step.name; }
};

class BatchSubtreeGoesOn : public testing::TestWithParam<Step> {};

TEST_P(BatchSubtreeGoesOn, WithTheFirstInstanceBehind)
{
    BatchedTable served;
    served.with({2, 3, 4294967295});
    for (const auto command : {SNMP_MSG_GETNEXT, SNMP_MSG_GETBULK}) {
        BatchRequest request(served.subtree, command);

        EXPECT_EQ(textOf(request.call({GetParam().from}, GetParam().inclusive).front()),
                  GetParam().answer);
        served.table->dropRows();
    }
}

const Step kSteps[] = {
    {"TheTableItself", {}, false, "1.1.2 = item 2"},
    {"TheTableItselfInclusive", {}, true, "1.1.2 = item 2"},
    {"EntryZero", {0}, false, "1.1.2 = item 2"},
    {"EntryZeroWithMore", {0, 7, 9, 9}, false, "1.1.2 = item 2"},
    {"TheEntry", {1}, false, "1.1.2 = item 2"},
    {"ColumnZero", {1, 0}, false, "1.1.2 = item 2"},
    {"ColumnZeroWithAnIndex", {1, 0, 3}, false, "1.1.2 = item 2"},
    {"TheFirstColumn", {1, 1}, false, "1.1.2 = item 2"},
    {"TheFirstColumnInclusive", {1, 1}, true, "1.1.2 = item 2"},
    {"IndexZero", {1, 1, 0}, false, "1.1.2 = item 2"},
    {"IndexZeroInclusive", {1, 1, 0}, true, "1.1.2 = item 2"},
    {"IndexZeroWithMore", {1, 1, 0, 9}, false, "1.1.2 = item 2"},
    {"BeforeARow", {1, 1, 1}, false, "1.1.2 = item 2"},
    {"ARow", {1, 1, 2}, false, "1.1.3 = item 3"},
    {"ARowInclusive", {1, 1, 2}, true, "1.1.2 = item 2"},
    {"ARowWithMore", {1, 1, 2, 0}, false, "1.1.3 = item 3"},
    {"ARowWithMoreInclusive", {1, 1, 2, 0}, true, "1.1.3 = item 3"},
    {"AGapInclusive", {1, 1, 4}, true, "1.1.4294967295 = item 4294967295"},
    {"TheGreatestInclusive", {1, 1, kGreatest}, true, "1.1.4294967295 = item 4294967295"},
    {"TheGreatest", {1, 1, kGreatest}, false, "1.3.2 = 2"},
    {"TheGreatestWithMore", {1, 1, kGreatest, 1}, false, "1.3.2 = 2"},
    {"AColumnBetween", {1, 2, 9}, false, "1.3.2 = 2"},
    {"AColumnBetweenInclusive", {1, 2, 2}, true, "1.3.2 = 2"},
    {"BehindTheWideColumn", {1, 4, kGreatest}, false, "1.7.2 = note"},
    {"TheSecretColumn", {1, 6, 2}, false, "1.7.2 = note"},
    {"TheSecretColumnInclusive", {1, 6, 2}, true, "1.7.2 = note"},
    {"OverARowWithoutAValue", {1, 7, 2}, false, "end"},
    {"ARowWithoutAValueInclusive", {1, 7, 3}, true, "end"},
    {"BehindTheLastColumn", {1, 8}, false, "end"},
    {"AColumnFarBehind", {1, 65536 + 1, 1}, false, "end"},
    {"AnotherEntry", {2}, false, "end"},
    {"AnotherEntryInclusive", {2, 1, 2}, true, "end"},
};

INSTANTIATE_TEST_SUITE_P(GetNext, BatchSubtreeGoesOn, testing::ValuesIn(kSteps),
                         [](const auto& row) { return row.param.name; });

class BatchSubtreeWalks : public testing::Test {
protected:
    /// A whole walk with so many variables a request.
    std::vector<std::string> walk(long version = SNMP_VERSION_2c, int repetitions = 1)
    {
        std::vector<std::string> seen;
        ObjectId at;
        while (true) {
            const auto command = repetitions == 1 ? SNMP_MSG_GETNEXT : SNMP_MSG_GETBULK;
            BatchRequest request(served.subtree, command, version);
            for (int i = 0; i < repetitions; ++i) {
                const auto shown = request.call({at}).front();
                if (!shown.hasValue() || seen.size() > 1000) {
                    EXPECT_EQ(shown.value, "end");
                    return seen;
                }
                seen.push_back(textOf(shown));
                at = shown.suffix;
            }
        }
    }

    BatchedTable served;
};

TEST_F(BatchSubtreeWalks, ShowAllColumnsInOrder)
{
    served.with({1, 3});
    const auto wide = std::to_string(kWide + 1);
    const auto wide3 = std::to_string(kWide + 3);

    const auto seen = walk();

    EXPECT_THAT(seen, ElementsAre("1.1.1 = item 1", "1.1.3 = item 3", "1.3.1 = 1", "1.3.3 = 3",
                                  "1.4.1 = " + wide, "1.4.3 = " + wide3, "1.7.1 = note"));
    EXPECT_EQ(walk(SNMP_VERSION_2c, 3), seen);
    served.table->dropRows();
    EXPECT_EQ(walk(SNMP_VERSION_2c, 100), seen);
}

TEST_F(BatchSubtreeWalks, PassOverCounter64ForAManagerOfVersion1)
{
    served.with({1, 3});

    EXPECT_THAT(walk(SNMP_VERSION_1), ElementsAre("1.1.1 = item 1", "1.1.3 = item 3", "1.3.1 = 1",
                                                  "1.3.3 = 3", "1.7.1 = note"));
}

TEST_F(BatchSubtreeWalks, OfAnEmptyTableEndAtOnceWithOneQuestion)
{
    EXPECT_THAT(walk(), IsEmpty());

    EXPECT_THAT(served.script.asked, ElementsAre("161 7.1.2.3.1.1"));
}

TEST_F(BatchSubtreeWalks, AskForEachRowOnceWhileItIsKept)
{
    served.with({1, 2, 3});

    EXPECT_THAT(walk(), SizeIs(3 + 3 + 3 + 2));

    EXPECT_THAT(served.script.asked,
                ElementsAre("161 7.1.2.3.1.1", "161 7.1.2.3.1.1.1", "161 7.1.2.3.1.1.2"));
}

TEST_F(BatchSubtreeWalks, AskInBatchesForAGetBulk)
{
    served.with({1, 2, 3, 4, 5});
    served.script.bulk = 2;

    EXPECT_THAT(walk(SNMP_VERSION_2c, 10), SizeIs(5 * 3 + 4));

    EXPECT_THAT(served.script.asked,
                ElementsAre("165 7.1.2.3.1.1", "165 7.1.2.3.1.1.2", "165 7.1.2.3.1.1.4"));
}

class BatchSubtreeFails : public BatchSubtreeGets {};

TEST_F(BatchSubtreeFails, AllVariablesThatItHasToAskForAfterOneQuestion)
{
    served.with({1, 2});
    served.script.instead = [](BatchPackage&) { return 7; };
    for (const auto command : {SNMP_MSG_GET, SNMP_MSG_GETNEXT, SNMP_MSG_GETBULK}) {
        served.script.asked.clear();
        BatchRequest request(served.subtree, command);

        EXPECT_THAT(textsOf(request.call({{1, 1, 1}, {1, 3, 2}, {1, 7, 5}})),
                    ElementsAre("genErr", "genErr", "genErr"));
        EXPECT_THAT(textsOf(request.call({{1, 1, 1}})), ElementsAre("genErr"));
        EXPECT_THAT(served.script.asked, SizeIs(1));
    }
}

TEST_F(BatchSubtreeFails, NoVariableWhoseRowIsKept)
{
    served.with({1, 2, 9});
    ASSERT_EQ(served.get({1, 1, 1}), "1.1.1 = item 1");
    served.script.instead = [](BatchPackage&) -> int { throw CKEL_Exception("out of order"); };
    BatchRequest request(served.subtree, SNMP_MSG_GET);

    EXPECT_THAT(textsOf(request.call({{1, 1, 9}, {1, 3, 1}, {1, 3, 9}})),
                ElementsAre("genErr", "1.3.1 = 1", "genErr"));
}

TEST_F(BatchSubtreeFails, AndWorksAgainWithTheNextRequest)
{
    served.with({1});
    served.script.instead = [](BatchPackage&) { return 7; };
    ASSERT_EQ(served.next({}), "genErr");

    served.script.instead = nullptr;

    EXPECT_EQ(served.next({}), "1.1.1 = item 1");
}

TEST_F(BatchSubtreeFails, InsteadOfAnEndWhenALaterColumnCannotBeRead)
{
    served.with({1});
    ASSERT_EQ(served.next({1, 1, 1}), "1.3.1 = 1");
    served.now += std::chrono::seconds(1);
    served.script.instead = [](BatchPackage&) { return 7; };

    EXPECT_EQ(served.next({1, 1, 1}), "genErr");
}

TEST(BatchSubtreeShows, TheRowsOfOneMomentInARequest)
{
    BatchedTable served;
    served.with({1, 2});
    BatchRequest request(served.subtree, SNMP_MSG_GETBULK);
    ASSERT_THAT(textsOf(request.call({{1, 1}})), ElementsAre("1.1.1 = item 1"));

    served.script.rows.erase(1);
    served.now += std::chrono::hours(1);

    EXPECT_THAT(textsOf(request.call({{1, 3}})), ElementsAre("1.3.1 = 1"));
    EXPECT_EQ(served.next({1, 3}), "1.3.2 = 2") << "of the next request";
}

TEST(BatchSubtreeShows, WhatItIs)
{
    BatchedTable served;

    EXPECT_EQ(served.subtree.name(), "itemTable");
    EXPECT_EQ(served.subtree.id(), served.mib.id);
    EXPECT_FALSE(served.subtree.isWritable());
}

TEST(BatchSubtreeShows, NothingAnewForAVariableThatIsProcessed)
{
    BatchedTable served;
    served.with({1});
    netsnmp_agent_request_info info{};
    info.mode = MODE_GETNEXT;
    netsnmp_variable_list* variables = nullptr;
    netsnmp_request_info request{};
    request.requestvb = snmp_varlist_add_variable(&variables, served.mib.id.data(),
                                                  served.mib.id.size(), ASN_NULL, nullptr, 0);
    request.processed = 1;

    served.subtree.answer(&info, &request);

    EXPECT_EQ(variables->type, ASN_NULL);
    EXPECT_THAT(served.script.asked, IsEmpty());
    netsnmp_free_all_list_data(info.agent_data);
    snmp_free_varbind(variables);
}

}  // namespace
