#include "host/snmp/scalar_source.h"

#include "framework/kel_exception.h"
#include "host/snmp/request_context.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/scalar_kit.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using talvik::MibScalar;
using talvik::ScalarSource;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::test::bytesOf;
using talvik::test::cell;
using talvik::test::FakeLeafHandler;
using talvik::test::RowBuilder;
using testing::ElementsAre;
using testing::HasSubstr;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

/// Answers a query with whatever the test puts into the response.
class ScriptedLeaf : public FakeLeafHandler {
public:
    explicit ScriptedLeaf(std::function<int(Package&)> answer)
        : FakeLeafHandler(unused_),
          answer_(std::move(answer))
    {
    }

    int OnQueryLeaf(const CKEL_SnmpContext&, const Package& req, Package& rsp) override
    {
        EXPECT_TRUE(req.oRecords.empty());
        return answer_(rsp);
    }

private:
    State unused_;
    std::function<int(Package&)> answer_;
};

class ScalarSourceOf : public testing::Test {
protected:
    ScalarSource sourceOf(std::function<int(Package&)> answer)
    {
        return {scalar, std::make_unique<ScriptedLeaf>(std::move(answer))};
    }

    std::optional<SnmpValue> query(std::function<int(Package&)> answer)
    {
        return sourceOf(std::move(answer)).query(context);
    }

    std::string writeOf(const MibScalar& described, const SnmpValue& value)
    {
        ScalarSource source(described, std::make_unique<FakeLeafHandler>(state));
        EXPECT_TRUE(source.write(context, value).succeeded());
        return state.writes.back();
    }

    static int one(Package& rsp)
    {
        RowBuilder()
            .add(cell(CTLVCell::TLV_UINT, 1, bytesOf(1U)))
            .add(cell(CTLVCell::TLV_UINT, 0, bytesOf(4294967295U)))
            .into(rsp);
        return 0;
    }

    FakeLeafHandler::State state;
    CKEL_SnmpContext context;
    MibScalar scalar = talvik::test::clearAlarm();
    talvik::test::LoggerCapture log{"host"};
};

TEST_F(ScalarSourceOf, TakesTheCellWithTheScalarsTag)
{
    const auto value = query(&one);

    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(value->number, 4294967295);
    EXPECT_EQ(value->syntax, Syntax::Unsigned32);

    scalar.cell.tag = 1;
    EXPECT_EQ(query(&one)->number, 1);
}

TEST_F(ScalarSourceOf, TakesTheFirstRecord)
{
    const auto value = query([](Package& rsp) {
        one(rsp);
        RowBuilder().add(cell(CTLVCell::TLV_UINT, 0, bytesOf(2U))).into(rsp);
        return 0;
    });

    EXPECT_EQ(value->number, 4294967295);
}

TEST_F(ScalarSourceOf, HasNothingWhenTheHandlerFailed)
{
    EXPECT_FALSE(query([](Package& rsp) { return one(rsp) + 7; }).has_value());
    EXPECT_FALSE(query([](Package&) -> int { throw CKEL_Exception("refused"); }).has_value());
    EXPECT_FALSE(query([](Package& rsp) -> int {
                     one(rsp);
                     throw std::runtime_error("broken");
                 }).has_value());
    EXPECT_FALSE(query([](Package&) -> int { throw 42; }).has_value());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("the handler returned 7"), HasSubstr("refused"),
                                         HasSubstr("broken"), HasSubstr("an unknown type")));
}

TEST_F(ScalarSourceOf, HasNothingWhenTheAnswerDoesNotFit)
{
    EXPECT_FALSE(query([](Package&) { return 0; }).has_value());
    EXPECT_FALSE(query([](Package& rsp) {
                     RowBuilder().number(1, 1).into(rsp);
                     return 0;
                 }).has_value());
    EXPECT_FALSE(query([](Package& rsp) {
                     RowBuilder().text(0, "five").into(rsp);
                     return 0;
                 }).has_value());
    EXPECT_FALSE(query([](Package& rsp) {
                     RowBuilder().number(0, -1).into(rsp);
                     return 0;
                 }).has_value());
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("scalar talvikClearAlarm (1.3.6.1.4.1.99999.2.91.10.1.2)"),
                            HasSubstr("no cell of tag 0"), HasSubstr("talvikClearAlarm"),
                            HasSubstr("out of range")));
    EXPECT_THAT(log.lines().front(), HasSubstr("no record"));
}

TEST_F(ScalarSourceOf, MayRecoverAndAsksEachTime)
{
    int calls = 0;
    auto source = sourceOf([&](Package& rsp) { return ++calls == 1 ? -1 : one(rsp); });

    EXPECT_FALSE(source.query(context).has_value());
    EXPECT_TRUE(source.query(context).has_value());
    EXPECT_TRUE(source.query(context).has_value());
    EXPECT_EQ(calls, 3);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("returned -1"), HasSubstr("again")));
}

TEST_F(ScalarSourceOf, WritesOneCellAndNamesNoRow)
{
    EXPECT_EQ(writeOf(scalar, {Syntax::Unsigned32, 4294967295, ""}), "- 0:3:4=4294967295");

    auto other = scalar;
    other.cell.tag = 9;
    other.cell.syntax = Syntax::Integer;
    EXPECT_EQ(writeOf(other, {Syntax::Integer, -1, ""}), "- 9:4:4=-1");
    other.cell.syntax = Syntax::OctetString;
    EXPECT_EQ(writeOf(other, {Syntax::OctetString, 0, "ab"}), "- 9:2:3=ab");
}

TEST_F(ScalarSourceOf, PassesOnWhatBecameOfAWrite)
{
    ScalarSource source(scalar, std::make_unique<FakeLeafHandler>(state));
    state.result = [] { return 0x1000014; };
    EXPECT_EQ(source.write(context, {}).result, 0x1000014);
    EXPECT_FALSE(source.write(context, {}).failure.has_value());

    state.result = []() -> int { throw CKEL_Exception("not today"); };
    const auto answer = source.write(context, {});
    EXPECT_THAT(answer.failure.value_or(""), HasSubstr("not today"));
    EXPECT_FALSE(answer.succeeded());
}

}  // namespace
