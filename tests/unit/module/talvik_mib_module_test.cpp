#include "module/talvik_mib_module.h"

#include "framework/snmp_handler.h"
#include "handlers/snmp_talvik_kel_alarm_handler.h"
#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"
#include "handlers/snmp_topo_handler.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "platform/notify_handler.h"
#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/fake_notify_host.h"
#include "trap/talvik_trap_addr_handler.h"

#include <memory>
#include <new>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using talvik::test::AllocationProbe;
using HandlerList = std::list<std::pair<const std::string, CSnmpHandler*>>;

class TalvikMibModule : public talvik::test::FakeHostTest {
protected:
    TalvikMibModule()
    {
        talvik::test::fakeNotifyHost().reset();
        module.reset(SNMP_SvcModuleCreator());
    }

    ~TalvikMibModule() override
    {
        for (const auto& entry : handlers) {
            delete entry.second;
        }
        talvik::test::fakeNotifyHost().reset();
    }

    std::vector<std::string> keys() const
    {
        std::vector<std::string> found;
        for (const auto& entry : handlers) {
            found.push_back(entry.first);
        }
        return found;
    }

    /// The dispatcher's handlers from `first` on: "notify", "oid" or, for any other, "unknown".
    static std::vector<std::string> registered(std::size_t first = 0)
    {
        std::vector<std::string> found;
        for (const auto* handler : CNotifyHandler::instance()->handlers()) {
            const auto& type = typeid(*handler);
            found.emplace_back(type == typeid(CTalvikNotifyMsgHandler)     ? "notify"
                               : type == typeid(CTalvikOIDBasedMsgHandler) ? "oid"
                                                                           : "unknown");
        }
        found.erase(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(first));
        return found;
    }

    std::unique_ptr<CSNMP_Svc_Module> module;
    HandlerList handlers;
};

using Names = std::vector<std::string>;

const std::vector<std::string> kSubtrees = {
    "1.3.6.1.4.1.99999.2.91.9.1", "1.3.6.1.4.1.99999.2.91.10.1.1", "1.3.6.1.4.1.99999.2.91.10.1.2",
    "1.3.6.1.4.1.99999.2.91.10.4.1"};

TEST_F(TalvikMibModule, IsMadeByTheFactory)
{
    ASSERT_NE(module, nullptr);
    EXPECT_NE(dynamic_cast<CSNMP_Talvik_Mib_Module*>(module.get()), nullptr);
}

TEST_F(TalvikMibModule, RegistersBothNotificationHandlersInOrder)
{
    EXPECT_EQ(registered(), (Names{"notify", "oid"}));
}

TEST_F(TalvikMibModule, InitSucceedsAndRegistersBehindWhatIsThere)
{
    const auto* first = CNotifyHandler::instance()->handlers().front();

    EXPECT_TRUE(CSNMP_Talvik_Mib_Module().init());

    EXPECT_EQ(registered(2), (Names{"notify", "oid"}));
    EXPECT_EQ(CNotifyHandler::instance()->handlers().front(), first);
}

TEST_F(TalvikMibModule, LoadsNoCatalogueBeforeItIsNeeded)
{
    module->getSvcHandler(handlers);

    EXPECT_EQ(host.count("getKELRootEnv"), 0U);
}

TEST_F(TalvikMibModule, KeepsWhatIsRegisteredAndLeaksNothingWhicheverAllocationOfInitFails)
{
    CSNMP_Talvik_Mib_Module other;
    std::vector<std::size_t> lengths;
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        talvik::test::fakeNotifyHost().reset();
        bool complete = false;
        long blocks = 0;
        {
            AllocationProbe probe;
            probe.failAfter(count);
            try {
                complete = other.init();
            } catch (const std::bad_alloc&) {
            }
            failed = probe.failed();
            blocks = probe.live();
        }
        EXPECT_EQ(complete, !failed) << "allocation " << count;
        Names expected{"notify", "oid"};
        expected.resize(registered().size());
        EXPECT_EQ(registered(), expected) << "allocation " << count;
        // A handler and its place in the list.
        EXPECT_EQ(blocks, 2 * static_cast<long>(expected.size())) << "allocation " << count;
        lengths.push_back(expected.size());
    }
    EXPECT_EQ(lengths, (std::vector<std::size_t>{0, 0, 1, 1, 2}));
}

TEST_F(TalvikMibModule, AFactoryThatFailsHalfWayLeavesTheFirstHandlerRegistered)
{
    talvik::test::fakeNotifyHost().reset();
    {
        AllocationProbe probe;
        probe.failAfter(3);  // the module, a handler and its place come first
        EXPECT_THROW(SNMP_SvcModuleCreator(), std::bad_alloc);
        EXPECT_EQ(probe.live(), 2);
    }
    EXPECT_EQ(registered(), Names{"notify"});
}

TEST_F(TalvikMibModule, NamesTheMibDescriptionWithoutAPath)
{
    EXPECT_EQ(module->getMibFileName(), "KEL-TALVIK-MIB.json");
    EXPECT_EQ(module->getMibFileName().size(), 19U);
}

TEST_F(TalvikMibModule, HandsOutItsSubtreesInOrder)
{
    module->getSvcHandler(handlers);

    EXPECT_EQ(keys(), kSubtrees);
    ASSERT_EQ(handlers.size(), 4U);
    auto entry = handlers.begin();
    EXPECT_NE(dynamic_cast<CSnmpTopoHandler*>((entry++)->second), nullptr);
    EXPECT_NE(dynamic_cast<CSnmpTalvikKelAlarmHandler*>((entry++)->second), nullptr);
    EXPECT_NE(dynamic_cast<CSnmpTalvikKelClearAlarmHandler*>((entry++)->second), nullptr);
    EXPECT_NE(dynamic_cast<CTalvikTrapAddrHandler*>(entry->second), nullptr);
}

TEST_F(TalvikMibModule, AppendsAfterTheEntriesThatTheListHolds)
{
    handlers.emplace_back("1.2.3", nullptr);

    module->getSvcHandler(handlers);

    ASSERT_EQ(handlers.size(), 1 + kSubtrees.size());
    EXPECT_EQ(handlers.front().first, "1.2.3");
    EXPECT_EQ(handlers.front().second, nullptr);
}

TEST_F(TalvikMibModule, MakesNewHandlersOnEveryCall)
{
    module->getSvcHandler(handlers);
    module->getSvcHandler(handlers);

    std::set<CSnmpHandler*> distinct;
    for (const auto& entry : handlers) {
        distinct.insert(entry.second);
    }
    EXPECT_EQ(distinct.size(), 2 * kSubtrees.size());
}

long blocksFreedWith(std::unique_ptr<CSNMP_Svc_Module>& module)
{
    const AllocationProbe probe;
    module.reset();
    return -probe.live();
}

TEST_F(TalvikMibModule, DestroyingTheModuleLeavesTheHandlersAlive)
{
    std::unique_ptr<CSNMP_Svc_Module> unused(SNMP_SvcModuleCreator());
    const long own = blocksFreedWith(unused);
    module->getSvcHandler(handlers);

    EXPECT_EQ(blocksFreedWith(module), own);

    EXPECT_EQ(own, 1);
    EXPECT_EQ(handlers.front().second->getSnmpOIDVersion(), 1);
}

TEST_F(TalvikMibModule, KeepsEarlierEntriesAndLeaksNothingWhicheverAllocationFails)
{
    host.recording = false;  // of the items that handlers read
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        HandlerList list;
        list.emplace_back("1.2.3", nullptr);
        AllocationProbe probe;
        probe.failAfter(count);
        bool complete = false;
        try {
            module->getSvcHandler(list);
            complete = true;
        } catch (const std::bad_alloc&) {
        }
        failed = probe.failed();

        EXPECT_EQ(complete, !failed) << "allocation " << count;
        ASSERT_FALSE(list.empty()) << "allocation " << count;
        EXPECT_EQ(list.front().first, "1.2.3") << "allocation " << count;
        EXPECT_LE(list.size(), failed ? kSubtrees.size() : 1 + kSubtrees.size());
        while (list.size() > 1) {  // entries made before the failure are whole, and the list's
            ASSERT_NE(list.back().second, nullptr) << "allocation " << count;
            delete list.back().second;
            list.pop_back();
        }
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
}

TEST_F(TalvikMibModule, IsNotLeftBehindByAFactoryThatFails)
{
    AllocationProbe probe;
    probe.failAfter(0);

    EXPECT_THROW(SNMP_SvcModuleCreator(), std::bad_alloc);

    EXPECT_EQ(probe.live(), 0);
}

}  // namespace
