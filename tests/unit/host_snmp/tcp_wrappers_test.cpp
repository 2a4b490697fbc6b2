#include "host/snmp/tcp_wrappers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using std::chrono::milliseconds;
using talvik::AdmittedManagers;

class AdmittedManagersTest : public testing::Test {
protected:
    bool admit(const std::string& manager)
    {
        return managers.admit(manager, [this] {
            ++asked;
            return allowed;
        });
    }

    std::chrono::steady_clock::time_point now{};
    AdmittedManagers managers{[this] { return now; }};
    int asked = 0;
    bool allowed = true;
};

TEST_F(AdmittedManagersTest, AreLetInAgainForASecond)
{
    EXPECT_TRUE(admit("a"));
    now += milliseconds(999);
    allowed = false;
    EXPECT_TRUE(admit("a"));
    EXPECT_EQ(asked, 1);
    now += milliseconds(1);
    EXPECT_FALSE(admit("a"));
    EXPECT_EQ(asked, 2);
}

TEST_F(AdmittedManagersTest, AreNotLetInLongerBecauseTheyComeOften)
{
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(admit("a"));
        now += milliseconds(100);
    }
    allowed = false;
    EXPECT_FALSE(admit("a"));
}

TEST_F(AdmittedManagersTest, AreToldApart)
{
    EXPECT_TRUE(admit("a"));
    allowed = false;
    EXPECT_FALSE(admit("b"));
    EXPECT_TRUE(admit("a"));
}

TEST_F(AdmittedManagersTest, RefusalsAreAskedForEachTime)
{
    allowed = false;
    EXPECT_FALSE(admit("a"));
    EXPECT_FALSE(admit("a"));
    EXPECT_EQ(asked, 2);
    allowed = true;
    EXPECT_TRUE(admit("a"));
}

TEST_F(AdmittedManagersTest, DoNotGrowInNumberWithoutEnd)
{
    for (std::size_t i = 0; i <= AdmittedManagers::kMostManagers; ++i) {
        EXPECT_TRUE(admit(std::to_string(i)));
    }
    const int before = asked;
    EXPECT_TRUE(admit("0"));
    EXPECT_EQ(asked, before + 1) << "the first one is forgotten by then";
}

}  // namespace
