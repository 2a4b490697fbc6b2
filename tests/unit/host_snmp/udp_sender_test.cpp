#include "host/snmp/udp_sender.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <string>

namespace {

using namespace std::chrono_literals;
using talvik::SocketAddress;
using talvik::UdpSender;

constexpr int kRows = 4096;  // of the trap destination table
constexpr int kRoom = 8192;

/// While it lives no socket can be opened, so that nothing but what is known can be told.
class NoMoreDescriptors {
public:
    NoMoreDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        auto none = before_;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }

    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

private:
    rlimit before_{};
};

/// A sender that is asked for routes, at a time that the test moves. Without virtual functions: to
/// check their table, a sanitizer needs a descriptor.
class Routes {
public:
    bool finds(int receiver)
    {
        const auto to = SocketAddress::parse("127." + std::to_string(receiver / 65536) + "." +
                                                 std::to_string(receiver / 256 % 256) + "." +
                                                 std::to_string(receiver % 256),
                                             162);
        return sender_.sourceOf(*to, "", now_)[0] == 127;
    }

    /// How many of the receivers up to `end` have a source.
    int found(int end)
    {
        int count = 0;
        for (int receiver = 1; receiver <= end; ++receiver) {
            count += finds(receiver) ? 1 : 0;
        }
        return count;
    }

    void advance(std::chrono::seconds time) { now_ += time; }

private:
    UdpSender sender_;
    UdpSender::Time now_ = std::chrono::steady_clock::now();
};

TEST(UdpRoutes, OfAWholeTableAreKnown)
{
    Routes routes;
    ASSERT_EQ(routes.found(kRows), kRows);

    int known = 0;
    {
        const NoMoreDescriptors none;
        known = routes.found(kRows);
    }

    EXPECT_EQ(known, kRows);
}

TEST(UdpRoutes, AreFoundOutAgainAfterAMinute)
{
    Routes routes;
    ASSERT_TRUE(routes.finds(1));

    bool before = false;
    bool after = true;
    {
        const NoMoreDescriptors none;
        routes.advance(59s);
        before = routes.finds(1);
        routes.advance(1s);
        after = routes.finds(1);
    }

    EXPECT_TRUE(before);
    EXPECT_FALSE(after);
}

TEST(UdpRoutes, ThatAreOldMakeRoom)
{
    Routes routes;
    ASSERT_EQ(routes.found(kRoom), kRoom);
    routes.advance(30s);
    ASSERT_TRUE(routes.finds(kRoom + 1)) << "it is found out, though there is no room";
    routes.advance(30s);
    ASSERT_TRUE(routes.finds(kRoom + 1));

    bool known = false;
    {
        const NoMoreDescriptors none;
        known = routes.finds(kRoom + 1);
    }

    EXPECT_TRUE(known);
}

TEST(UdpRoutes, ThatAreNotOldStayWhenThereIsNoRoom)
{
    Routes routes;
    ASSERT_EQ(routes.found(kRoom + 1), kRoom + 1);

    int known = 0;
    {
        const NoMoreDescriptors none;
        known = routes.found(kRoom);
    }

    EXPECT_EQ(known, kRoom);
}

TEST(UdpRoutes, ThatAreMissingAreLookedForEachTime)
{
    Routes routes;
    bool without = true;
    {
        const NoMoreDescriptors none;
        without = routes.finds(1);
    }

    EXPECT_FALSE(without);
    EXPECT_TRUE(routes.finds(1));
}

}  // namespace
