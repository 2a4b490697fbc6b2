#include "module/talvik_mib_module.h"

#include "framework/snmp_handler.h"
#include "handlers/snmp_topo_handler.h"
#include "tests/support/fake_host_test.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

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

const std::vector<std::string> kSubtrees = {"1.3.6.1.4.1.99999.2.91.9.1"};

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

TEST_F(TalvikMibModule, DestroyingTheModuleLeavesTheHandlersAlive)
{
    module->getSvcHandler(handlers);
    module.reset();

    EXPECT_EQ(handlers.front().second->getSnmpOIDVersion(), 1);
}

}  // namespace
