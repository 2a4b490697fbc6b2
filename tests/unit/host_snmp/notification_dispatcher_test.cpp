#include "host/snmp/notification_dispatcher.h"

#include "framework/kel_exception.h"
#include "framework/notify_msg_handler.h"
#include "framework/tlv_cell.h"
#include "framework/tlv_record.h"
#include "host/platform/notification_handlers.h"
#include "platform/notify_handler.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <agent_pp/snmp_pp_ext.h>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Agentpp::Oidx;
using Agentpp::Vbx;
using talvik::Delivery;
using talvik::NotificationDispatcher;
using talvik::ObjectId;
using talvik::Trap;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kRecordWithEventFlag = 0xD00C900B6;

/// A handler whose every step a test can set.
class FakeNotifyHandler : public INotifyMsgHandler {
public:
    ~FakeNotifyHandler() override { ++*deleted; }

    int constructAlarmTrapVb(const CTLVRecordV3& record, Vbx*& vbs) override
    {
        return construct(record, vbs);
    }

    Oidx& getTrapOid(unsigned long long alarmId, unsigned short arg) override
    {
        askedFor.push_back(std::to_string(alarmId) + ":" + std::to_string(arg));
        return trapOid;
    }

    Oidx& getBaseOid() override { return base ? *base : throw std::runtime_error("no base"); }
    int getTrapVbLen() override { return count; }

    void filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                       std::list<tTrapDestInfo>& chosen) override
    {
        for (const auto& [key, receiver] : all) {
            seenKeys.push_back(key);
            if (receiver.type == type) {
                chosen.push_back(receiver);
            }
        }
    }

    /// Two bindings and success.
    static int twoBindings(const CTLVRecordV3& /*record*/, Vbx*& vbs)
    {
        vbs = new Vbx[2];
        vbs[0] = Vbx(Snmp_pp::Oid("1.3.1"), Snmp_pp::SnmpInt32(1));
        vbs[1] = Vbx(Snmp_pp::Oid("1.3.2"), Snmp_pp::OctetStr("two"));
        return 0;
    }

    std::function<int(const CTLVRecordV3&, Vbx*&)> construct = twoBindings;
    Oidx trapOid = Snmp_pp::Oid("1.3.6.1.9");
    std::optional<Oidx> base = Oidx("1.3.6.1.8");
    int count = 2;
    unsigned type = 1;
    std::vector<std::string> askedFor;
    std::vector<std::string> seenKeys;
    std::shared_ptr<int> deleted = std::make_shared<int>(0);
};

class DispatcherTest : public testing::Test {
protected:
    ~DispatcherTest() override { talvik::dropNotificationHandlers(); }

    static FakeNotifyHandler& addHandler()
    {
        auto handler = std::make_unique<FakeNotifyHandler>();
        CNotifyHandler::instance()->handlers().push_back(handler.get());
        return *handler.release();
    }

    static void set(CTLVRecordV3& record, unsigned short tag, std::uint64_t value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
        record.append(cell.get());
        static_cast<void>(cell.release());
    }

    /// Alarm 5, a fault.
    static std::unique_ptr<CTLVRecordV3> alarm(std::uint64_t tag6 = 0, std::uint64_t tag5 = 0,
                                               std::uint64_t id = 7)
    {
        auto record = std::make_unique<CTLVRecordV3>(id);
        set(*record, 1, 5);
        set(*record, 6, tag6);
        set(*record, 5, tag5);
        return record;
    }

    static tTrapDestInfo receiver(const std::string& index, unsigned type)
    {
        tTrapDestInfo row;
        row.index = index;
        row.address = "192.0.2." + index;
        row.port = 162;
        row.type = type;
        return row;
    }

    static std::vector<std::string> indexes(const Trap& trap)
    {
        std::vector<std::string> all;
        for (const auto& row : trap.receivers) {
            all.push_back(row.index);
        }
        return all;
    }

    talvik::test::LoggerCapture log_{"host"};
    std::vector<Trap> traps_;
    std::vector<Delivery> deliveries_;
    NotificationDispatcher dispatcher_{[this](Trap&& trap, const Delivery& delivery) {
        traps_.push_back(std::move(trap));
        deliveries_.push_back(delivery);
    }};
};

TEST_F(DispatcherTest, HandsOnWhatAHandlerBuilt)
{
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    const auto delivery = std::make_shared<int>(0);
    dispatcher_.dispatch(*alarm(), delivery);
    ASSERT_EQ(traps_.size(), 1U);
    EXPECT_EQ(traps_[0].id, (ObjectId{1, 3, 6, 1, 9}));
    ASSERT_EQ(traps_[0].bindings.size(), 2U);
    EXPECT_EQ(traps_[0].bindings[0].name, (ObjectId{1, 3, 1}));
    EXPECT_EQ(traps_[0].bindings[0].value.number, 1);
    EXPECT_EQ(traps_[0].bindings[1].value.octets, "two");
    EXPECT_THAT(indexes(traps_[0]), ElementsAre("1"));
    EXPECT_EQ(deliveries_[0], delivery);
    EXPECT_EQ(dispatcher_.handlers().at(0).counters.built, 1U);
}

TEST_F(DispatcherTest, AsksEachHandlerInTurn)
{
    auto& first = addHandler();
    auto& second = addHandler();
    second.trapOid = Snmp_pp::Oid("1.3.7");
    second.type = 7;
    dispatcher_.setReceivers({receiver("1", 1), receiver("2", 7)});
    dispatcher_.dispatch(*alarm(), nullptr);
    ASSERT_EQ(traps_.size(), 2U);
    EXPECT_EQ(traps_[0].id, (ObjectId{1, 3, 6, 1, 9}));
    EXPECT_EQ(traps_[1].id, (ObjectId{1, 3, 7}));
    EXPECT_THAT(indexes(traps_[1]), ElementsAre("2"));
    EXPECT_THAT(first.askedFor, ElementsAre("5:1"));
}

TEST_F(DispatcherTest, SendsOnlyTheBindingsThatCount)
{
    addHandler().count = 1;
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    ASSERT_EQ(traps_.size(), 1U);
    EXPECT_EQ(traps_[0].bindings.size(), 1U);
}

TEST_F(DispatcherTest, OrdersReceiversByTheirNumber)
{
    auto& handler = addHandler();
    dispatcher_.setReceivers({receiver("10", 1), receiver("9", 1), receiver("100", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_THAT(handler.seenKeys, ElementsAre("0000000009", "0000000010", "0000000100"));
    EXPECT_THAT(indexes(traps_[0]), ElementsAre("9", "10", "100"));
}

TEST_F(DispatcherTest, ForgetsReceiversThatAreGone)
{
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.setReceivers({});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_THAT(traps_, IsEmpty()) << "nobody receives it";
}

TEST_F(DispatcherTest, CountsWhatEachHandlerMadeOfARecord)
{
    addHandler();
    addHandler().construct = [](const CTLVRecordV3&, Vbx*&) { return -1; };
    auto& third = addHandler();
    third.trapOid = Snmp_pp::Oid("1");  // which no notification can have
    third.base.reset();
    dispatcher_.setReceivers({receiver("1", 1)});

    dispatcher_.dispatch(*alarm(), nullptr);
    dispatcher_.dispatch(*alarm(), nullptr);

    const auto handlers = dispatcher_.handlers();
    ASSERT_EQ(handlers.size(), 3U);
    EXPECT_EQ(handlers[0].base, (ObjectId{1, 3, 6, 1, 8}));
    EXPECT_EQ(handlers[2].base, ObjectId()) << "it threw";
    EXPECT_EQ(handlers[0].counters.built, 2U);
    EXPECT_EQ(handlers[0].counters.refused, 0U);
    for (const auto at : {1U, 2U}) {
        EXPECT_EQ(handlers[at].counters.built, 0U);
        EXPECT_EQ(handlers[at].counters.refused, 2U);
    }
}

TEST_F(DispatcherTest, KnowsHandlersBeforeTheyAreOffered)
{
    EXPECT_THAT(dispatcher_.handlers(), IsEmpty());
    addHandler();

    ASSERT_EQ(dispatcher_.handlers().size(), 1U);
    EXPECT_EQ(dispatcher_.handlers()[0].counters.built, 0U);
}

TEST_F(DispatcherTest, TellsTheCategory)
{
    auto& handler = addHandler();
    const auto ask = [&](std::unique_ptr<CTLVRecordV3> record) {
        dispatcher_.dispatch(*record, nullptr);
        const auto last = handler.askedFor.back();
        return last.substr(last.find(':') + 1);
    };
    EXPECT_EQ(ask(alarm()), "1");
    EXPECT_EQ(ask(alarm(1, 0)), "2");
    EXPECT_EQ(ask(alarm(0, 1)), "2");
    auto event = alarm(0, 0, kRecordWithEventFlag);
    set(*event, 73, 1);
    EXPECT_EQ(ask(std::move(event)), "3");
    auto fault = alarm(0, 0, kRecordWithEventFlag);
    set(*fault, 73, 2);
    EXPECT_EQ(ask(std::move(fault)), "1");
    auto other = alarm(0, 0, 8);
    set(*other, 73, 1);
    EXPECT_EQ(ask(std::move(other)), "1") << "another kind of record has no event flag";
    constexpr std::uint64_t kBeyond32Bits = 0x100000000;
    EXPECT_EQ(ask(alarm(kBeyond32Bits, kBeyond32Bits)), "1") << "as in the bindings";
    auto wide = alarm(0, 0, kRecordWithEventFlag);
    set(*wide, 73, kBeyond32Bits + 1);
    EXPECT_EQ(ask(std::move(wide)), "3");
    auto cleared = alarm(9, 0, kRecordWithEventFlag);
    set(*cleared, 73, 1);
    EXPECT_EQ(ask(std::move(cleared)), "2");
}

TEST_F(DispatcherTest, AHandlerThatRefusesLeavesTheOthersTheirTurn)
{
    addHandler().construct = [](const CTLVRecordV3&, Vbx*&) { return 5; };
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_EQ(traps_.size(), 1U);
    EXPECT_EQ(dispatcher_.handlers().at(0).counters.refused, 1U);
    EXPECT_THAT(log_.lines(), IsEmpty()) << "the handler says why by itself";
}

TEST_F(DispatcherTest, AHandlerThatThrowsLeavesTheOthersTheirTurn)
{
    addHandler().construct = [](const CTLVRecordV3&, Vbx*& vbs) -> int {
        vbs = new Vbx[2];  // the array is the dispatcher's from here on
        throw CKEL_Exception("no\nway");
    };
    addHandler().construct = [](const CTLVRecordV3&, Vbx*&) -> int { throw 7; };
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_EQ(traps_.size(), 1U);
    ASSERT_EQ(log_.lines().size(), 3U);
    EXPECT_THAT(log_.lines()[0], HasSubstr("no trap for alarm 5: CKEL_Exception: no"));
    EXPECT_EQ(log_.lines()[1], "    way") << "it cannot pass for a line of its own";
    EXPECT_THAT(log_.lines()[2], HasSubstr("unexpected exception of an unknown type"));
}

TEST_F(DispatcherTest, LeavesOutATrapWhoseOidIsNone)
{
    addHandler().trapOid = Snmp_pp::Oid("1.3.None");
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_EQ(traps_.size(), 1U);
    ASSERT_EQ(log_.lines().size(), 1U);
    EXPECT_THAT(log_.lines()[0], HasSubstr("alarm 5: its OID has 0 sub-identifiers"));
}

TEST_F(DispatcherTest, SaysNothingOfAnOidForNobody)
{
    addHandler().trapOid = Snmp_pp::Oid("1.3.None");
    dispatcher_.setReceivers({receiver("1", 2)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_THAT(traps_, IsEmpty());
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(DispatcherTest, LeavesOutATrapWithABindingThatCannotBeSent)
{
    addHandler().construct = [](const CTLVRecordV3& record, Vbx*& vbs) {
        const int result = FakeNotifyHandler::twoBindings(record, vbs);
        vbs[1] = Vbx(Snmp_pp::Oid("1.3.2"));
        return result;
    };
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_THAT(traps_, IsEmpty());
    ASSERT_EQ(log_.lines().size(), 1U);
    EXPECT_THAT(log_.lines()[0], HasSubstr("binding 2: a value of syntax 5"));
}

TEST_F(DispatcherTest, LeavesOutARecordWithoutAnAlarmId)
{
    addHandler();
    dispatcher_.setReceivers({receiver("1", 1)});
    CTLVRecordV3 empty(7);
    dispatcher_.dispatch(empty, nullptr);
    EXPECT_THAT(traps_, IsEmpty());
    ASSERT_EQ(log_.lines().size(), 1U);
    EXPECT_THAT(log_.lines()[0], HasSubstr("no trap for an alarm record without a readable id"));
}

TEST_F(DispatcherTest, DoesNotFloodTheLog)
{
    addHandler().trapOid = Snmp_pp::Oid("1.3.None");
    dispatcher_.setReceivers({receiver("1", 1)});
    constexpr int kAlarms = 1000;
    for (int sent = 0; sent < kAlarms; ++sent) {
        dispatcher_.dispatch(*alarm(), nullptr);
    }
    EXPECT_EQ(dispatcher_.handlers().at(0).counters.refused, static_cast<std::uint64_t>(kAlarms));
    EXPECT_LT(log_.lines().size(), static_cast<std::size_t>(kAlarms) / 10);
}

TEST_F(DispatcherTest, AHandlerThatMakesNothingMakesNoTrap)
{
    addHandler().construct = [](const CTLVRecordV3&, Vbx*&) { return 0; };
    dispatcher_.setReceivers({receiver("1", 1)});
    dispatcher_.dispatch(*alarm(), nullptr);
    EXPECT_THAT(traps_, IsEmpty());
    EXPECT_EQ(dispatcher_.handlers().at(0).counters.refused, 1U);
}

TEST_F(DispatcherTest, TheDispatcherDeletesItsHandlers)
{
    const auto deleted = addHandler().deleted;
    talvik::dropNotificationHandlers();
    EXPECT_EQ(*deleted, 1);
    EXPECT_THAT(CNotifyHandler::instance()->handlers(), IsEmpty());
}

}  // namespace
