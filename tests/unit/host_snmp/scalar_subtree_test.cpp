#include "host/snmp/scalar_subtree.h"

#include "framework/kel_exception.h"
#include "host/snmp/request_bridge.h"
#include "host/snmp/scalar_write.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/request_kit.h"
#include "tests/unit/host_snmp/scalar_kit.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using talvik::ObjectId;
using talvik::SnmpValue;
using talvik::Syntax;
using talvik::test::FakeLeafHandler;
using talvik::test::HandMadeRequest;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int kFine = SNMP_ERR_NOERROR;

SnmpValue gauge(long number)
{
    return {Syntax::Gauge32, number, ""};
}

class ScalarSubtreeOf : public testing::Test {
protected:
    /// Serves the scalar as it is described by then.
    void serve()
    {
        bridge.emplace();
        bridge->serve(std::make_unique<talvik::ScalarSubtree>(
            std::make_unique<talvik::ScalarSource>(scalar,
                                                   std::make_unique<FakeLeafHandler>(state)),
            [this] { ++changes; }));
    }

    void SetUp() override { serve(); }

    ObjectId name(const ObjectId& suffix) const
    {
        auto id = scalar.id;
        id.insert(id.end(), suffix.begin(), suffix.end());
        return id;
    }

    /// All phases up to the action; the last one's error.
    int set(HandMadeRequest& request)
    {
        for (const int phase : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION}) {
            const int error = request.run(phase).front();
            if (error != kFine) {
                return error;
            }
        }
        return kFine;
    }

    int set(const SnmpValue& value)
    {
        HandMadeRequest request(scalar.id);
        request.by("secret").add(name({0}), value);
        return set(request);
    }

    FakeLeafHandler::State state;
    int changes = 0;
    talvik::MibScalar scalar = talvik::test::clearAlarm();
    std::optional<talvik::RequestBridge> bridge;
    talvik::test::LoggerCapture log{"host"};
};

TEST_F(ScalarSubtreeOf, AGetOfTheInstanceAnswers)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0}));

    EXPECT_THAT(request.run(MODE_GET), ElementsAre(kFine));

    EXPECT_EQ(request.variable().type, ASN_GAUGE);
    EXPECT_EQ(*request.variable().val.integer, 4711);
}

TEST_F(ScalarSubtreeOf, AGetOfAnythingElseHasNoSuchInstanceAndAsksNothing)
{
    for (const ObjectId& suffix : {ObjectId{}, ObjectId{1}, ObjectId{0, 0}}) {
        HandMadeRequest request(scalar.id);
        request.add(name(suffix)).run(MODE_GET);

        EXPECT_EQ(request.variable().type, SNMP_NOSUCHINSTANCE) << talvik::toText(suffix);
    }
    EXPECT_EQ(state.queries, 0);
}

TEST_F(ScalarSubtreeOf, AGetNextUpToTheObjectGivesTheInstance)
{
    for (const ObjectId& from : {ObjectId{1, 3, 6, 1}, scalar.id}) {
        HandMadeRequest request(scalar.id);
        request.add(from);

        EXPECT_THAT(request.run(MODE_GETNEXT), ElementsAre(kFine));

        const auto& variable = request.variable();
        EXPECT_EQ(ObjectId(variable.name, variable.name + variable.name_length), name({0}));
        EXPECT_EQ(*variable.val.integer, 4711);
    }
}

TEST_F(ScalarSubtreeOf, AGetNextFromTheInstanceOnStaysUntouchedAndAsksNothing)
{
    for (const ObjectId& suffix : {ObjectId{0}, ObjectId{0, 0}, ObjectId{7}}) {
        HandMadeRequest request(scalar.id);
        request.add(name(suffix));

        EXPECT_THAT(request.run(MODE_GETNEXT), ElementsAre(kFine));

        const auto& variable = request.variable();
        EXPECT_EQ(variable.type, ASN_NULL);
        EXPECT_EQ(ObjectId(variable.name, variable.name + variable.name_length), name(suffix));
    }
    EXPECT_EQ(state.queries, 0);
}

TEST_F(ScalarSubtreeOf, ARequestAsksTheHandlerOnce)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0})).add(name({0}));

    request.run(MODE_GET);

    EXPECT_EQ(state.queries, 1);
}

TEST_F(ScalarSubtreeOf, AHandlerThatFailsIsAGeneralErrorAskedOnce)
{
    state.value = []() -> std::unique_ptr<CTLVCell> { throw CKEL_Exception("no"); };
    for (const auto mode : {static_cast<int>(MODE_GET), static_cast<int>(MODE_GETNEXT)}) {
        state.queries = 0;
        HandMadeRequest request(scalar.id);
        const auto asked = mode == MODE_GET ? name({0}) : scalar.id;
        request.add(asked).add(asked);

        EXPECT_THAT(request.run(mode), ElementsAre(SNMP_ERR_GENERR, SNMP_ERR_GENERR));
        EXPECT_EQ(state.queries, 1);
    }
}

TEST_F(ScalarSubtreeOf, ASetCallsTheHandlerOnceInTheAction)
{
    HandMadeRequest request(scalar.id);
    request.by("secret").add(name({0}), gauge(5));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(kFine));
    EXPECT_THAT(request.run(MODE_SET_RESERVE2), ElementsAre(kFine));
    EXPECT_THAT(state.writes, IsEmpty()) << "nothing before the action";
    EXPECT_THAT(request.run(MODE_SET_ACTION), ElementsAre(kFine));
    EXPECT_THAT(request.run(MODE_SET_COMMIT), ElementsAre(kFine));

    EXPECT_THAT(state.writes, ElementsAre("- 0:3:4=5"));
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(log.lines(),
                ElementsAre(AllOf(HasSubstr("scalar talvikClearAlarm, SET by v2c from "),
                                  HasSubstr(", done: 5"), Not(HasSubstr("secret")))));
}

TEST_F(ScalarSubtreeOf, AFreeAfterAReserveDoesNothingAndIsTold)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0}), gauge(5)).run(MODE_SET_RESERVE1);

    EXPECT_THAT(request.run(MODE_SET_FREE), ElementsAre(kFine));

    EXPECT_THAT(state.writes, IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("cannot set 5: another part of the request failed")));
}

TEST_F(ScalarSubtreeOf, AWriteThatWasRefusedIsToldOnce)
{
    HandMadeRequest request(scalar.id);
    request.add(name({1}), gauge(5)).run(MODE_SET_RESERVE1);

    request.run(MODE_SET_FREE);

    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("cannot set 5: it has no such instance")));
}

TEST_F(ScalarSubtreeOf, NothingIsDoneOnceAnotherPartHasFailed)
{
    HandMadeRequest request(scalar.id, 2);
    request.add(name({0}), gauge(5)).run(MODE_SET_RESERVE1);
    request.run(MODE_SET_RESERVE2);
    request.failElsewhere(SNMP_ERR_COMMITFAILED, 1);

    EXPECT_THAT(request.run(MODE_SET_ACTION), ElementsAre(kFine));
    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(kFine));

    EXPECT_THAT(state.writes, IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("cannot set 5: another part of the request failed")));
}

TEST_F(ScalarSubtreeOf, WhatWasDoneCannotBeTakenBack)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0}), gauge(5));
    ASSERT_EQ(set(request), kFine);

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(SNMP_ERR_UNDOFAILED));

    EXPECT_THAT(request.errorIndexes(), ElementsAre(0)) << "undoFailed names no variable";
    EXPECT_EQ(state.writes.size(), 1u);
    EXPECT_THAT(log.lines().back(), HasSubstr("5 was done and cannot be taken back"));
}

TEST_F(ScalarSubtreeOf, AWriteThatFailedHasNotToBeTakenBack)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0}), gauge(5));
    state.result = [] { return -1; };
    EXPECT_EQ(set(request), SNMP_ERR_COMMITFAILED);

    EXPECT_THAT(request.run(MODE_SET_UNDO), ElementsAre(SNMP_ERR_COMMITFAILED)) << "as it was";
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(changes, 0);
}

TEST_F(ScalarSubtreeOf, TheSecondWriteOfOneRequestIsInconsistent)
{
    HandMadeRequest request(scalar.id);
    request.add(name({0}), gauge(5)).add(name({0}), gauge(6));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(kFine, kFine));
    EXPECT_THAT(request.run(MODE_SET_RESERVE2), ElementsAre(kFine, SNMP_ERR_INCONSISTENTVALUE));

    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("cannot set 6: the request names it twice")));
}

TEST_F(ScalarSubtreeOf, AnExceptionOfTheHandlerIsAGeneralErrorAndTold)
{
    state.result = []() -> int { throw CKEL_Exception("not today\nor ever"); };

    EXPECT_EQ(set(gauge(5)), SNMP_ERR_GENERR);

    EXPECT_THAT(log.lines().front(), HasSubstr("cannot set 5: CKEL_Exception: not today"));
    EXPECT_EQ(changes, 0);
}

struct Result {
    int result;
    int error;
    const char* reason;
};

TEST_F(ScalarSubtreeOf, AResultBecomesAnErrorAndALine)
{
    const Result rows[] = {
        {0x1000014, SNMP_ERR_INCONSISTENTVALUE,
         "cannot set 5: no alarm with that serial number is active (0x1000014)"},
        {0x1000015, SNMP_ERR_WRONGVALUE, "(0x1000015)"},
        {0x1000016, SNMP_ERR_RESOURCEUNAVAILABLE, "(0x1000016)"},
        {0x1000018, SNMP_ERR_RESOURCEUNAVAILABLE, "(0x1000018)"},
        {0x1000001, SNMP_ERR_RESOURCEUNAVAILABLE, "cannot be reached (0x1000001)"},
        {0x1000002, SNMP_ERR_RESOURCEUNAVAILABLE, "(0x1000002)"},
        {0x1000003, SNMP_ERR_COMMITFAILED, "(0x1000003)"},
        {0x1000010, SNMP_ERR_COMMITFAILED, "(0x1000010)"},
        {0x1000012, SNMP_ERR_COMMITFAILED, "(0x1000012)"},
        {-1, SNMP_ERR_COMMITFAILED, "the handler failed (0xFFFFFFFF)"},
        {1, SNMP_ERR_COMMITFAILED, "(0x1)"},
    };
    for (const auto& row : rows) {
        state.result = [&] { return row.result; };

        EXPECT_EQ(set(gauge(5)), row.error) << row.reason;
        EXPECT_THAT(log.lines().back(), HasSubstr(row.reason));
    }
    EXPECT_EQ(changes, 0);
}

struct Write {
    const char* name;
    ObjectId suffix;
    std::optional<SnmpValue> value;
    int error;

    friend std::ostream& operator<<(std::ostream& os, const Write& row) { return os << row.name; }
};

class ScalarWriteOf : public ScalarSubtreeOf, public testing::WithParamInterface<Write> {
protected:
    void SetUp() override
    {
        scalar.cell.range = talvik::Bounds{1, 7};
        serve();
    }
};

TEST_P(ScalarWriteOf, GetsTheFirstErrorInTheProtocolsOrder)
{
    HandMadeRequest request(scalar.id);
    const auto& row = GetParam();
    if (row.value) {
        request.add(name(row.suffix), *row.value);
    } else {
        request.add(name(row.suffix));
    }

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(row.error));
    EXPECT_EQ(log.lines().size(), row.error == kFine ? 0u : 1u);
}

const Write kWrites[] = {
    {"TheLeastNumber", {0}, gauge(1), kFine},
    {"TheGreatestNumber", {0}, gauge(7), kFine},
    {"AnInteger", {0}, SnmpValue{Syntax::Integer, 1, ""}, SNMP_ERR_WRONGTYPE},
    {"AText", {0}, SnmpValue{Syntax::OctetString, 0, "1"}, SNMP_ERR_WRONGTYPE},
    {"AnUnknownType", {0}, std::nullopt, SNMP_ERR_WRONGTYPE},
    {"BelowTheRange", {0}, gauge(0), SNMP_ERR_WRONGVALUE},
    {"AboveTheRange", {0}, gauge(8), SNMP_ERR_WRONGVALUE},
    {"AnotherInstance", {1}, gauge(1), SNMP_ERR_NOCREATION},
    {"NoInstance", {}, gauge(1), SNMP_ERR_NOCREATION},
    {"MoreThanTheInstance", {0, 0}, gauge(1), SNMP_ERR_NOCREATION},
    {"AnotherInstanceWithAWrongValue", {1}, gauge(8), SNMP_ERR_WRONGVALUE},
    {"AnotherInstanceWithAWrongType", {1}, std::nullopt, SNMP_ERR_WRONGTYPE},
};

INSTANTIATE_TEST_SUITE_P(Scalar, ScalarWriteOf, testing::ValuesIn(kWrites),
                         [](const auto& row) { return row.param.name; });

TEST_F(ScalarSubtreeOf, AReadOnlyScalarIsNotWritableWhateverIsWritten)
{
    scalar.cell.access = talvik::Access::ReadOnly;
    talvik::ScalarSource source(scalar, std::make_unique<FakeLeafHandler>(state));
    const std::function<void()> nobody;
    talvik::ScalarWrite write(source, {}, {{{1}, std::nullopt}}, nobody);

    const auto outcome = write.check();

    ASSERT_TRUE(outcome.has_value());
    EXPECT_EQ(outcome->error, talvik::SetError::NotWritable);
}

TEST_F(ScalarSubtreeOf, ARegistrationOfAReadOnlyScalarIsNotWritable)
{
    bridge.reset();
    scalar.cell.access = talvik::Access::ReadOnly;
    serve();
    HandMadeRequest request(scalar.id);
    request.add(name({0}), gauge(1));

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(SNMP_ERR_NOTWRITABLE));
}

TEST_F(ScalarSubtreeOf, ATextOfTheWrongLengthIsRefusedBeforeItsInstance)
{
    bridge.reset();
    scalar.cell.syntax = Syntax::OctetString;
    scalar.cell.size = talvik::Bounds{1, 2};
    serve();
    HandMadeRequest request(scalar.id);
    request.add(name({1}), SnmpValue{Syntax::OctetString, 0, "a\nb"});

    EXPECT_THAT(request.run(MODE_SET_RESERVE1), ElementsAre(SNMP_ERR_WRONGLENGTH));
    EXPECT_EQ(set({Syntax::OctetString, 0, "ab"}), kFine);
    EXPECT_THAT(log.lines().back(), HasSubstr("done: \"ab\""));
}

TEST_F(ScalarSubtreeOf, NobodyHasToHearOfChanges)
{
    bridge.emplace();
    bridge->serve(std::make_unique<talvik::ScalarSubtree>(
        std::make_unique<talvik::ScalarSource>(scalar, std::make_unique<FakeLeafHandler>(state))));

    EXPECT_EQ(set(gauge(5)), kFine);
}

}  // namespace
