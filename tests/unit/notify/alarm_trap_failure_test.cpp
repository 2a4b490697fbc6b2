#include "framework/kel_exception.h"
#include "tests/support/allocation_probe.h"
#include "tests/support/throw_text.h"
#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

#include <new>

namespace {

using namespace talvik::test;
using testing::ElementsAre;

/// A record that makes no trap, with the text of the exception that says why.
struct Refusal {
    const char* name;
    AlarmCells cells;
    const char* text;

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class AlarmTrapRefusal : public NotifyTest, public testing::WithParamInterface<Refusal> {
protected:
    std::string line() const
    {
        return std::string("error 0x1002c constructAlarmTrapVb: handle notify failed, "
                           "CKEL_Exception: ") +
               GetParam().text;
    }
};

TEST_P(AlarmTrapRefusal, LeavesTheBindingsUntouchedAndSaysWhy)
{
    Bindings bindings;

    EXPECT_EQ(construct(GetParam().cells, bindings), -1);

    EXPECT_TRUE(bindings.untouched());
    EXPECT_THAT(lines(), ElementsAre(line()));
    EXPECT_EQ(host.count("convertTime2DateTimeStr"), 0u);
}

TEST_P(AlarmTrapRefusal, IsThatOfTheOidBasedHandlerToo)
{
    Bindings bindings;

    EXPECT_EQ(oidBased.constructAlarmTrapVb(*GetParam().cells.record(), bindings.vbs), -1);

    EXPECT_TRUE(bindings.untouched());
    EXPECT_THAT(lines(), ElementsAre(line()));
}

TEST_P(AlarmTrapRefusal, LeavesNothingAllocated)
{
    const auto record = GetParam().cells.record();
    Bindings bindings;
    handler.constructAlarmTrapVb(*record, bindings.vbs);  // what is made once in a process
    host.recording = false;
    const AllocationProbe probe;

    handler.constructAlarmTrapVb(*record, bindings.vbs);

    EXPECT_GT(probe.allocations(), 0u);
    EXPECT_EQ(probe.live(), 0);
}

AlarmCells fault()
{
    return {};
}

AlarmCells clear()
{
    return AlarmCells().wide(6, 3000);
}

AlarmCells ofEventKind()
{
    return AlarmCells().identifiedBy(kEventRecord);
}

const Refusal kRefusals[] = {
    {"NoAlarmId", fault().without(1), "CTLVRecordV3 has no such cell! tag equal to 1"},
    {"AlarmIdAsText", fault().text(1, "1"), "CTLVCell isn't numerical type! tag equal to 1"},
    {"AlarmIdAsBytes", fault().cell(1, CTLVCell::TLV_OCTETS, "1"),
     "CTLVCell isn't numerical type! tag equal to 1"},
    {"NoParameters", fault().without(8), "CTLVRecordV3 has no such cell! tag equal to 8"},
    {"ParametersAsNumber", fault().number(8, 1), "CTLVCell isn't string type! tag equal to 8"},
    {"ParametersAsBytes", fault().cell(8, CTLVCell::TLV_OCTETS, "D3"),
     "CTLVCell isn't string type! tag equal to 8"},
    {"NoLevel", fault().without(2), "CTLVRecordV3 has no such cell! tag equal to 2"},
    {"LevelAsText", fault().text(2, "3"), "CTLVCell isn't numerical type! tag equal to 2"},
    {"NoSerialNumber", fault().without(3), "CTLVRecordV3 has no such cell! tag equal to 3"},
    {"SerialNumberAsText", fault().text(3, "3"), "CTLVCell isn't numerical type! tag equal to 3"},
    {"NoTime", fault().without(4), "CTLVRecordV3 has no such cell! tag equal to 4"},
    {"TimeAsText", fault().text(4, "3"), "CTLVCell isn't numerical type! tag equal to 4"},
    {"ClearWithoutTagFour", clear().without(4), "CTLVRecordV3 has no such cell! tag equal to 4"},
    {"ClearWithTagFourAsText", clear().text(4, "x"),
     "CTLVCell isn't numerical type! tag equal to 4"},
    {"NoTagFive", fault().without(5), "CTLVRecordV3 has no such cell! tag equal to 5"},
    {"NoTagSix", fault().without(6), "CTLVRecordV3 has no such cell! tag equal to 6"},
    {"ClearByTagSixWithoutTagFive", clear().without(5),
     "CTLVRecordV3 has no such cell! tag equal to 5"},
    {"ClearByTagSixWithTagFiveAsText", clear().text(5, "x"),
     "CTLVCell isn't numerical type! tag equal to 5"},
    {"EventKindWithoutFlag", ofEventKind(), "CTLVRecordV3 has no such cell! tag equal to 73"},
    {"EventKindWithTextAsFlag", ofEventKind().text(73, "1"),
     "CTLVCell isn't numerical type! tag equal to 73"},
    // What is read first is named.
    {"AlarmIdBeforeParameters", fault().without(1).without(8),
     "CTLVRecordV3 has no such cell! tag equal to 1"},
    {"ParametersBeforeLevel", fault().without(8).without(2),
     "CTLVRecordV3 has no such cell! tag equal to 8"},
    {"LevelBeforeCategory", fault().without(2).without(6),
     "CTLVRecordV3 has no such cell! tag equal to 2"},
    {"CategoryBeforeSerialNumber", fault().without(5).without(3),
     "CTLVRecordV3 has no such cell! tag equal to 5"},
    {"SerialNumberBeforeTime", fault().without(3).without(4),
     "CTLVRecordV3 has no such cell! tag equal to 3"},
    {"TimeBeforeTheClearsOwn", clear().without(4).without(5),
     "CTLVRecordV3 has no such cell! tag equal to 4"},
};

INSTANTIATE_TEST_SUITE_P(Records, AlarmTrapRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

class AlarmTrapFailure : public NotifyTest {
protected:
    /// That the catalogue's result comes back, after its own line and the handler's.
    void expectResult(unsigned long long alarmId, int expected)
    {
        for (CTalvikNotifyMsgHandler* used :
             {&handler, static_cast<CTalvikNotifyMsgHandler*>(&oidBased)}) {
            host.log.clear();
            Bindings bindings;
            const auto record = AlarmCells().wide(1, alarmId).without(2).record();

            EXPECT_EQ(used->constructAlarmTrapVb(*record, bindings.vbs), expected);

            EXPECT_TRUE(bindings.untouched());
            EXPECT_EQ(onlyLineOf("constructAlarmTrapVb"),
                      "error 0x1002c constructAlarmTrapVb: parse alarm " + std::to_string(alarmId) +
                          " failed");
        }
    }
};

TEST_F(AlarmTrapFailure, AnUnknownAlarmHasTheCataloguesResult)
{
    expectResult(kUnknownAlarm, -1);
    expectResult(0, -1);
    expectResult(18446744073709551615u, -1);
}

TEST_F(AlarmTrapFailure, ATextThatCannotBeFilledHasTheCataloguesResult)
{
    expectResult(kAlarmWithoutPosition, 0x100400F);
}

TEST_F(AlarmTrapFailure, AnUnknownAlarmLeavesNothingAllocated)
{
    const auto record = AlarmCells().wide(1, kUnknownAlarm).record();
    Bindings bindings;
    handler.constructAlarmTrapVb(*record, bindings.vbs);
    host.recording = false;
    const AllocationProbe probe;

    EXPECT_EQ(handler.constructAlarmTrapVb(*record, bindings.vbs), -1);

    EXPECT_GT(probe.allocations(), 0u);
    EXPECT_EQ(probe.live(), 0);
}

TEST_F(AlarmTrapFailure, ACatalogueThatCannotBeLoadedIsAnException)
{
    CAlarmConfigParser::destroy();
    folder.write("alarms.json", "{");
    Bindings bindings;

    EXPECT_THROW(construct(AlarmCells(), bindings), CKEL_Exception);

    EXPECT_TRUE(bindings.untouched());
    EXPECT_EQ(onlyLineOf("constructAlarmTrapVb"), "none");
    EXPECT_EQ(host.texts("trace").back().rfind("leave virtual int "
                                               "CTalvikNotifyMsgHandler::constructAlarmTrapVb(",
                                               0),
              0u);
}

/// Calls of the host behind the reading of the record: what they throw passes.
TEST_F(AlarmTrapFailure, WhatTheHostsConversionsThrowPassesWithTheBindingsUntouched)
{
    for (const auto* call : {"convertTime2DateTimeStr", "convertTime2DateTime"}) {
        host.onCall(call, [] { throw CKEL_Exception("no time"); });
        Bindings bindings;

        EXPECT_EQ(textOfThrown([&] { construct(AlarmCells(), bindings); }),
                  "CKEL_Exception: no time");

        EXPECT_TRUE(bindings.untouched()) << call;
        EXPECT_EQ(onlyLineOf("constructAlarmTrapVb"), "none");
    }
}

TEST_F(AlarmTrapFailure, WhatIsThrownWhileFillingLeavesTheArrayToTheCaller)
{
    host.onCall("getNodeCode", [] { throw CKEL_Exception("no node"); });
    Bindings bindings;

    EXPECT_EQ(textOfThrown([&] { construct(AlarmCells(), bindings); }), "CKEL_Exception: no node");

    EXPECT_FALSE(bindings.untouched());
    EXPECT_EQ(onlyLineOf("constructAlarmTrapVb"), "none");
}

TEST_F(AlarmTrapFailure, OtherExceptionsThanTheCellsOwnPass)
{
    host.onCall("find", [] { throw std::bad_alloc(); });
    Bindings bindings;

    EXPECT_THROW(construct(AlarmCells(), bindings), std::bad_alloc);

    EXPECT_TRUE(bindings.untouched());
}

TEST_F(AlarmTrapFailure, IsBalancedWhicheverAllocationFails)
{
    const auto record = AlarmCells().identifiedBy(kEventRecord).number(73, 1).record();
    for (CTalvikNotifyMsgHandler* used :
         {&handler, static_cast<CTalvikNotifyMsgHandler*>(&oidBased)}) {
        {
            Bindings bindings;  // what is made once in a process
            ASSERT_EQ(used->constructAlarmTrapVb(*record, bindings.vbs), 0);
        }
        host.recording = false;
        std::size_t untouched = 0;
        std::size_t failures = 0;
        for (bool done = false; !done; ++failures) {
            ASSERT_LT(failures, 10000u);
            Agentpp::Vbx* vbs = nullptr;
            AllocationProbe probe;
            probe.failAfter(failures);
            try {
                EXPECT_EQ(used->constructAlarmTrapVb(*record, vbs), 0) << failures;
                done = !probe.failed();
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(probe.failed()) << failures;
                untouched += vbs == nullptr ? 1 : 0;
            }
            delete[] vbs;
            EXPECT_EQ(probe.live(), 0) << failures;
        }
        EXPECT_GT(untouched, 3u);
        EXPECT_GT(failures, untouched + 14);
        host.recording = true;
    }
}

TEST_F(AlarmTrapFailure, ASuccessLeavesOnlyTheArrayAllocated)
{
    const auto record = AlarmCells().record();
    {
        Bindings bindings;
        construct(AlarmCells(), bindings);
    }
    host.recording = false;
    const AllocationProbe probe;
    {
        Bindings bindings;
        ASSERT_EQ(handler.constructAlarmTrapVb(*record, bindings.vbs), 0);
        EXPECT_GT(probe.live(), 14);
    }
    EXPECT_EQ(probe.live(), 0);
}

}  // namespace
