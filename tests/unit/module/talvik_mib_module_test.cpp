#include "module/talvik_mib_module.h"

#include "framework/snmp_handler.h"
#include "handlers/snmp_topo_handler.h"
#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"
#include "trap/talvik_trap_addr_handler.h"

#include <memory>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace {

using talvik::test::AllocationProbe;
using HandlerList = std::list<std::pair<const std::string, CSnmpHandler*>>;

class TalvikMibModule : public talvik::test::FakeHostTest {
protected:
    TalvikMibModule() : module(SNMP_SvcModuleCreator()) {}
    ~TalvikMibModule() override
    {
        for (const auto& entry : handlers) {
            delete entry.second;
        }
    }

    std::vector<std::string> keys() const
    {
        std::vector<std::string> found;
        for (const auto& entry : handlers) {
            found.push_back(entry.first);
        }
        return found;
    }

    std::unique_ptr<CSNMP_Svc_Module> module;
    HandlerList handlers;
};

const std::vector<std::string> kSubtrees = {"1.3.6.1.4.1.99999.2.91.9.1",
                                            "1.3.6.1.4.1.99999.2.91.10.4.1"};

TEST_F(TalvikMibModule, IsMadeByTheFactory)
{
    ASSERT_NE(module, nullptr);
    EXPECT_NE(dynamic_cast<CSNMP_Talvik_Mib_Module*>(module.get()), nullptr);
}

TEST_F(TalvikMibModule, InitSucceeds)
{
    EXPECT_TRUE(CSNMP_Talvik_Mib_Module().init());
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
    EXPECT_NE(dynamic_cast<CSnmpTopoHandler*>(handlers.front().second), nullptr);
    EXPECT_NE(dynamic_cast<CTalvikTrapAddrHandler*>(handlers.back().second), nullptr);
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
