#include "alarmconfig/alarm_config_item.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"
#include "tests/unit/alarmconfig/observed_thread.h"

#include <gmock/gmock.h>

#include <map>

using ItemMap = std::map<unsigned long long, CAlarmConfigItem*>;

const ItemMap& itemsOf(const CAlarmConfigParser& parser);
ACE_Thread_Mutex& singletonMutex();

/// What the parser keeps to itself and no operation shows: an explicit instantiation may name
/// private members.
template <ItemMap CAlarmConfigParser::*Items, ACE_Thread_Mutex* Mutex>
struct ParserOpener {
    friend const ItemMap& itemsOf(const CAlarmConfigParser& parser) { return parser.*Items; }
    friend ACE_Thread_Mutex& singletonMutex() { return *Mutex; }
};

template struct ParserOpener<&CAlarmConfigParser::alarmItems,
                             &CAlarmConfigParser::_oSingletonMutex>;

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(AlarmConfigItem, TakesItsTextsInTheirOrder)
{
    const CAlarmConfigItem item(18446744073709551614ULL, 7, "the name", "the reason",
                                "the suggestion", "the detail", "the location", "the OID");

    EXPECT_EQ(item.eventId, 18446744073709551614ULL);
    EXPECT_EQ(item.eventIdLow32, 7u);
    EXPECT_EQ(item.name, "the name");
    EXPECT_EQ(item.reason, "the reason");
    EXPECT_EQ(item.suggestion, "the suggestion");
    EXPECT_EQ(item.detail, "the detail");
    EXPECT_EQ(item.location, "the location");
    EXPECT_EQ(item.alarmOid, "the OID");
    EXPECT_THAT(item.paramEnumPositions, IsEmpty());
}

TEST(AlarmConfigItem, KeepsCopiesOfItsTexts)
{
    char text[] = "before";
    const CAlarmConfigItem item(1, 1, text, text, text, text, text, text);

    text[0] = 'B';

    EXPECT_EQ(item.name + item.reason + item.suggestion, "beforebeforebefore");
    EXPECT_EQ(item.detail + item.location + item.alarmOid, "beforebeforebefore");
}

class StoredAlarm : public AlarmCatalogueTest {};

TEST_F(StoredAlarm, HasEveryMemberOfItsDefinition)
{
    defineAlarms(R"({"eventID":"4294967298","name":"n","reason":"r","suggestion":"s","detail":"d",
        "location":"l","alarmOid":"1.7","paramDesc":"1=T,0=U"})");

    const auto& items = itemsOf(parser());

    ASSERT_EQ(items.size(), 1u);
    const auto& item = *items.at(4294967298);
    EXPECT_EQ(item.eventId, 4294967298u);
    EXPECT_EQ(item.eventIdLow32, 2u);
    EXPECT_EQ(item.name, "n");
    EXPECT_EQ(item.reason, "r");
    EXPECT_EQ(item.suggestion, "s");
    EXPECT_EQ(item.detail, "d");
    EXPECT_EQ(item.location, "l");
    EXPECT_EQ(item.alarmOid, "1.7");
    EXPECT_THAT(item.paramEnumPositions, ElementsAre(Pair(1, "T"), Pair(0, "U")));
}

TEST_F(StoredAlarm, HasNoneForWhatItsDefinitionLeavesOut)
{
    defineAlarms("{}");

    const auto& items = itemsOf(parser());

    ASSERT_EQ(items.size(), 1u);
    const auto& item = *items.at(0);
    EXPECT_EQ(item.eventId, 0u);
    EXPECT_EQ(item.eventIdLow32, 0u);
    EXPECT_EQ(item.name, "None");
    EXPECT_EQ(item.reason, "None");
    EXPECT_EQ(item.suggestion, "None");
    EXPECT_EQ(item.detail, "None");
    EXPECT_EQ(item.location, "None");
    EXPECT_EQ(item.alarmOid, "None");
    EXPECT_THAT(item.paramEnumPositions, IsEmpty());
}

/// Ids in the order of their numbers, as whoever walks the alarms expects.
TEST_F(StoredAlarm, StandsBehindThoseWithSmallerIds)
{
    defineAlarms(R"({"eventID":"30"},{"eventID":"4"},{"eventID":"-1"},{"eventID":"200"})");
    std::vector<unsigned long long> ids;

    for (const auto& [id, item] : itemsOf(parser())) {
        EXPECT_EQ(item->eventId, id);
        ids.push_back(id);
    }

    EXPECT_THAT(ids, ElementsAre(4, 30, 200, 18446744073709551615ULL));
}

TEST_F(StoredAlarm, IsReachedWithoutTheLockOfCreation)
{
    auto& made = parser();
    host.recording = false;
    CAlarmConfigParser* found = nullptr;
    ObservedThread other;
    ASSERT_EQ(singletonMutex().acquire(), 0);

    other.start([&] { found = CAlarmConfigParser::instance(); });
    const bool waits = other.hasToWait();

    ASSERT_EQ(singletonMutex().release(), 0);
    other.join();
    EXPECT_FALSE(waits);
    EXPECT_EQ(found, &made);
}

}  // namespace
