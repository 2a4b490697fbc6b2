#include "platform/trap_api.h"

#include "host/platform/trap_results.h"
#include "tests/unit/host_platform/trap_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

namespace {

using namespace talvik::test;
using talvik::TrapStore;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace trap_result = talvik::trap_result;

constexpr unsigned kNoIndexNamed = 0xFFFFFFFF;

class TrapApi : public testing::Test {
protected:
    TrapApi() { talvik::installTrapStore(std::make_unique<TrapStore>(folder.path())); }
    ~TrapApi() override { talvik::installTrapStore(nullptr); }

    static std::vector<std::string> indexes()
    {
        std::list<tTrapDestInfo> destinations;
        EXPECT_EQ(CSNMP_TrapApi::getAllTrapAddr(destinations), 0);
        std::vector<std::string> all;
        for (const auto& destination : destinations) {
            all.push_back(destination.index);
        }
        return all;
    }

    StoreFolder folder;
};

TEST_F(TrapApi, CreatesUnderTheIndexThatTheManagerNamed)
{
    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 7), 0);

    EXPECT_THAT(indexes(), ElementsAre("7"));
}

TEST_F(TrapApi, CreatesUnderTheLowestFreeIndexWhenNoneWasNamed)
{
    ASSERT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1), 0);

    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), kNoIndexNamed), 0);

    EXPECT_THAT(indexes(), ElementsAre("1", "2"));
}

TEST_F(TrapApi, ModifyAndDeleteGoByTheIndexAlone)
{
    ASSERT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1), 0);
    ASSERT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.2"), 2), 0);

    EXPECT_EQ(CSNMP_TrapApi::modifyTrapAddr(destinationTo("192.0.2.9", 9, "2"), 1), 0);
    EXPECT_EQ(CSNMP_TrapApi::deleteTrapAddr(destinationTo("192.0.2.9", 9, "1"), 2), 0);

    std::list<tTrapDestInfo> destinations;
    ASSERT_EQ(CSNMP_TrapApi::getAllTrapAddr(destinations), 0);
    ASSERT_EQ(destinations.size(), 1U);
    EXPECT_EQ(rowOf(destinations.front()), (TrapRow{"2", "192.0.2.9", 9, 2, 3, "--"}));
}

TEST_F(TrapApi, PassesTheStoresResultsOn)
{
    ASSERT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1), 0);

    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1),
              trap_result::kIndexTaken);
    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 0),
              trap_result::kIndexInvalid);
    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("::"), 2), trap_result::kRefused);
    EXPECT_EQ(CSNMP_TrapApi::modifyTrapAddr(destinationTo("192.0.2.1", 1, "2"), 0),
              trap_result::kIndexUnknown);
    EXPECT_EQ(CSNMP_TrapApi::deleteTrapAddr(destinationTo("192.0.2.1", 1, "2"), 0),
              trap_result::kIndexUnknown);
}

TEST_F(TrapApi, AppendsToWhatIsInTheList)
{
    ASSERT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1), 0);
    std::list<tTrapDestInfo> destinations{destinationTo("192.0.2.2", 1, "before")};

    ASSERT_EQ(CSNMP_TrapApi::getAllTrapAddr(destinations), 0);

    ASSERT_EQ(destinations.size(), 2U);
    EXPECT_EQ(destinations.front().index, "before");
    EXPECT_EQ(destinations.back().index, "1");
}

TEST_F(TrapApi, FailsWithoutAStore)
{
    talvik::installTrapStore(nullptr);
    const LoggerCapture log("host");
    std::list<tTrapDestInfo> destinations;

    EXPECT_EQ(CSNMP_TrapApi::getAllTrapAddr(destinations), trap_result::kStoreFailed);
    EXPECT_EQ(CSNMP_TrapApi::createTrapAddr(destinationTo("192.0.2.1"), 1),
              trap_result::kStoreFailed);
    EXPECT_EQ(CSNMP_TrapApi::modifyTrapAddr(destinationTo("192.0.2.1", 1, "1"), 1),
              trap_result::kStoreFailed);
    EXPECT_EQ(CSNMP_TrapApi::deleteTrapAddr(destinationTo("192.0.2.1", 1, "1"), 1),
              trap_result::kStoreFailed);

    EXPECT_THAT(destinations, IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("read"), HasSubstr("create"),
                                         HasSubstr("change"), HasSubstr("remove")));
    EXPECT_THAT(log.lines(), Each(HasSubstr("the list is not open")));
}

}  // namespace
