#include "platform/snmp_table_base.h"

#include "tests/unit/host_platform/table_engine_kit.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ostream>
#include <vector>

namespace {

using namespace talvik::test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

struct Descent {
    const char* name;
    int kind;
    std::uint32_t key;
    std::vector<std::uint32_t> answer;

    friend std::ostream& operator<<(std::ostream& os, const Descent& row) { return os << row.name; }
};

class TableEngineRefuses : public TableEngine, public testing::WithParamInterface<Descent> {};

TEST_P(TableEngineRefuses, RecordsThatDoNotAscend)
{
    answerWith([](TablePackage& answer) {
        for (const auto key : GetParam().answer) {
            addRecord(answer, key);
        }
    });

    EXPECT_THAT(failureOf(GetParam().kind, GetParam().key), HasSubstr("do not ascend"));

    serve({GetParam().key + 1});
    EXPECT_EQ(query(kGetNext, GetParam().key), 0) << "the next query works again";
}

const Descent kDescents[] = {
    {"TheKeyOfAGetNextItself", kGetNext, 5, {5}}, {"BeforeTheKeyOfAGetNext", kGetNext, 5, {4}},
    {"TheKeyOfAGetBulkItself", kGetBulk, 5, {5}}, {"BeforeTheKeyOfAGet", kGet, 5, {4}},
    {"TheSameTwice", kGetBulk, 5, {6, 6}},        {"Backwards", kGetBulk, 5, {7, 6}},
    {"TheKeyZeroOfAGetNext", kGetNext, 0, {0}},
};

INSTANTIATE_TEST_SUITE_P(Query, TableEngineRefuses, testing::ValuesIn(kDescents),
                         [](const auto& row) { return row.param.name; });

TEST_F(TableEngine, RefusesRecordsThatDoNotAscendWithoutRowsToo)
{
    backEnd.answering = [](std::uint32_t, std::uint32_t, TablePackage& answer) {
        addRecord(answer, 6, kNoRowTag);
        return 0;
    };

    EXPECT_THAT(failureOf(kGetNext, 5), HasSubstr("do not ascend: 6 behind 6"));

    EXPECT_THAT(backEnd.asked, SizeIs(2));
}

TEST_F(TableEngine, RefusesAKeyThatIsNoNumber)
{
    answerWith([](TablePackage& answer) { RowBuilder().text(kKeyTag, "six").into(answer); });
    EXPECT_THAT(failureOf(kGetNext, 5), HasSubstr("\"six\""));

    answerWith([](TablePackage& answer) { RowBuilder().number(kKeyTag, -6).into(answer); });
    EXPECT_THAT(failureOf(kGetNext, 5), HasSubstr("\"-6\""));
}

TEST_F(TableEngine, RefusesARecordWithoutItsKey)
{
    answerWith([](TablePackage& answer) { RowBuilder().number(kHiddenTag, 1).into(answer); });

    EXPECT_NE(failureOf(kGetNext, 5), "nothing thrown");
}

TEST_F(TableEngine, PassesUpTheResultOfTheBackEnd)
{
    backEnd.answering = [](std::uint32_t, std::uint32_t, TablePackage&) { return 0x1000014; };
    EXPECT_EQ(query(kGetNext, 5), 0x1000014);
    EXPECT_THAT(rows(), IsEmpty());

    talvik::installBackendLink(nullptr);
    EXPECT_EQ(query(kGetNext, 5), talvik::BackendLink::kUnreachable);
}

TEST_F(TableEngine, AsksNothingWhenTheHandlerForbidsTheQuery)
{
    serve({6});
    table.allowed = false;

    EXPECT_NE(query(kGetNext, 5), 0);

    EXPECT_THAT(backEnd.asked, IsEmpty());
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(TableEngine, FailsWhenTheHandlerRefusesARecord)
{
    serve({6});
    table.before = 1;
    EXPECT_THAT(failureOf(kGetNext, 5), HasSubstr("before its cells"));

    table.before = 0;
    table.behind = 1;
    EXPECT_THAT(failureOf(kGetNext, 5), HasSubstr("after its cells"));
}

}  // namespace
