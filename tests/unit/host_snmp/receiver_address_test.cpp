#include "host/snmp/receiver_address.h"

#include "host/platform/name_cache_settings.h"
#include "tests/unit/host_platform/scripted_lookup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using talvik::LookupOutcome;
using talvik::NameCache;
using talvik::ReceiverAddress;
using talvik::test::LookupScript;

/// A receiver by name, looked up when the test says so.
class AddressOfAName : public testing::Test {
protected:
    NameCache::Settings settings()
    {
        NameCache::Settings settings;
        settings.clock = [this] { return std::chrono::steady_clock::time_point(now_.load()); };
        settings.makeLookup = [this] { return script_.makeLookup(); };
        return settings;
    }

    /// The next look-up gives these.
    void resolveTo(const std::vector<std::string>& addresses)
    {
        now_ = now_.load() + 2min;
        script_.wake();
        ASSERT_TRUE(script_.waitForStart("nms.example"));
        script_.answer("nms.example", {LookupOutcome::Found, addresses, ""});
        ASSERT_TRUE(script_.settle());
    }

    std::atomic<std::chrono::steady_clock::duration> now_{1h};
    LookupScript script_;
    NameCache names_{settings()};
    ReceiverAddress address_{"nms.example", 162, &names_};
};

TEST_F(AddressOfAName, IsTheFirstOfSeveral)
{
    EXPECT_FALSE(address_.known());
    resolveTo({"192.0.2.1", "192.0.2.2"});

    EXPECT_TRUE(address_.update());

    EXPECT_EQ(address_.numeric(), "192.0.2.1");
}

TEST_F(AddressOfAName, StaysWhileTheNameServerTurnsItsList)
{
    resolveTo({"192.0.2.1", "192.0.2.2", "192.0.2.3"});
    ASSERT_TRUE(address_.update());

    resolveTo({"192.0.2.2", "192.0.2.3", "192.0.2.1"});

    EXPECT_FALSE(address_.update());
    EXPECT_EQ(address_.numeric(), "192.0.2.1");
    EXPECT_FALSE(address_.isStale());
}

TEST_F(AddressOfAName, ChangesWhenItIsNoneOfTheListAnyMore)
{
    resolveTo({"192.0.2.1", "192.0.2.2"});
    ASSERT_TRUE(address_.update());

    resolveTo({"192.0.2.3", "192.0.2.2"});

    EXPECT_TRUE(address_.update());
    EXPECT_EQ(address_.numeric(), "192.0.2.3");
}

}  // namespace
