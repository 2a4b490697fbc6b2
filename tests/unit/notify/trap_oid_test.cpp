#include "framework/kel_exception.h"
#include "tests/unit/notify/notify_kit.h"

#include <gmock/gmock.h>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFallback = "1.3.6.1.4.1.99999.2.251.20.1.2.1";

class TrapOid : public NotifyTest {
protected:
    std::string oidBasedOid(unsigned long long alarmId, unsigned short arg)
    {
        return oidBased.getTrapOid(alarmId, arg).get_printable();
    }
};

TEST_F(TrapOid, IsFixedWhateverTheAlarm)
{
    EXPECT_STREQ(handler.getTrapOid(kKnownAlarm, 0).get_printable(),
                 "1.3.6.1.4.1.99999.2.91.10.2.1.0.1");
    EXPECT_EQ(&handler.getTrapOid(kKnownAlarm, 0), &handler.getTrapOid(0, 65535));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(TrapOid, BasesAreFixed)
{
    EXPECT_STREQ(handler.getBaseOid().get_printable(), "1.3.6.1.4.1.99999.2.91.10.3.1.1");
    EXPECT_STREQ(oidBased.getBaseOid().get_printable(), "1.3.6.1.4.1.99999.2.251.20.1.3");
    EXPECT_EQ(&handler.getBaseOid(), &CTalvikNotifyMsgHandler().getBaseOid());
    EXPECT_EQ(&oidBased.getBaseOid(), &CTalvikOIDBasedMsgHandler().getBaseOid());
}

TEST_F(TrapOid, IsTheAlarmsOwnWithTheArgumentAtItsEnd)
{
    EXPECT_EQ(oidBasedOid(kKnownAlarm, 2), "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.2");
    EXPECT_EQ(oidBasedOid(kKnownAlarm, 65535), "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.65535");
}

TEST_F(TrapOid, OfAnAlarmOidOfOneNumber)
{
    defineKnownAlarm("7");

    EXPECT_EQ(oidBasedOid(kKnownAlarm, 0), "1.3.6.1.4.1.99999.2.251.20.1.2.2.7.0");
}

TEST_F(TrapOid, IsShownInADebugLine)
{
    oidBasedOid(kKnownAlarm, 2);

    EXPECT_THAT(lines(), ElementsAre("debug 0xffff getTrapOid: alarmid = c90001;oid = "
                                     "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.2 "));
    EXPECT_EQ(host.texts("trace").front().rfind(
                  "enter virtual Agentpp::Oidx& CTalvikOIDBasedMsgHandler::getTrapOid(", 0),
              0u);
}

TEST_F(TrapOid, OfAnAlarmWithoutOneIsTheFallbackWhateverTheArgument)
{
    defineKnownAlarm("");

    EXPECT_EQ(oidBasedOid(kKnownAlarm, 0), kFallback);
    EXPECT_EQ(oidBasedOid(kKnownAlarm, 9), kFallback);
    EXPECT_THAT(lines(), ElementsAre("warn 0x1002c getTrapOid: alarmoid null",
                                     "warn 0x1002c getTrapOid: alarmoid null"));
}

TEST_F(TrapOid, OfAnUnknownAlarmIsTheFallback)
{
    EXPECT_EQ(oidBasedOid(kUnknownAlarm, 9), kFallback);

    EXPECT_THAT(lines(),
                ElementsAre("warn 0x1001e getAlarmOidInfo: alarm 4 desn't need to be parsed.",
                            "error 0x1002c getTrapOid: parse alarm 4 failed",
                            "warn 0x1002c getTrapOid: alarmoid null"));
}

TEST_F(TrapOid, OfAnIdOfAllBitsIsNamedInDecimal)
{
    EXPECT_EQ(oidBasedOid(18446744073709551615u, 0), kFallback);

    EXPECT_THAT(lines(), testing::Contains(
                             "error 0x1002c getTrapOid: parse alarm 18446744073709551615 failed"));
}

TEST_F(TrapOid, TakesOverWhateverTheDefinitionHolds)
{
    const std::pair<const char*, const char*> texts[] = {
        {".5.", "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.1"},
        {"4294967296", "1.3.6.1.4.1.99999.2.251.20.1.2.2.0.1"},
        {"x", ""},
        {" 5", ""}};
    for (const auto& [alarmOid, expected] : texts) {
        defineKnownAlarm(alarmOid);
        EXPECT_EQ(oidBasedOid(kKnownAlarm, 1), expected) << alarmOid;
    }
}

/// A definition without the member has the catalogue's "None" there, which is no OID.
TEST_F(TrapOid, OfADefinitionWithoutTheMemberIsInvalid)
{
    EXPECT_EQ(oidBasedOid(kAlarmWithoutPosition, 1), "");

    EXPECT_FALSE(oidBased.getTrapOid(kAlarmWithoutPosition, 1).valid());
    EXPECT_EQ(lines().at(0), "debug 0xffff getTrapOid: alarmid = 3;oid = "
                             "1.3.6.1.4.1.99999.2.251.20.1.2.2.None.1 ");
}

TEST_F(TrapOid, EachCallSetsTheHandlersOneOid)
{
    CTalvikOIDBasedMsgHandler other;
    auto& kept = oidBased.getTrapOid(kKnownAlarm, 1);
    auto& others = other.getTrapOid(kKnownAlarm, 2);

    EXPECT_EQ(&oidBased.getTrapOid(kUnknownAlarm, 1), &kept);

    EXPECT_STREQ(kept.get_printable(), kFallback);
    EXPECT_NE(&others, &kept);
    EXPECT_STREQ(others.get_printable(), "1.3.6.1.4.1.99999.2.251.20.1.2.2.5.3.2");
}

TEST_F(TrapOid, OfACatalogueThatCannotBeLoadedIsAnException)
{
    CAlarmConfigParser::destroy();
    folder.write("alarms.json", "{");

    EXPECT_THROW(oidBased.getTrapOid(kKnownAlarm, 1), CKEL_Exception);
}

}  // namespace
