#include "host/snmp/udp_sender.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <string>

namespace {

using namespace std::chrono_literals;
using talvik::SocketAddress;
using talvik::UdpSender;

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

class UdpRoutes : public testing::Test {
protected:
    static constexpr int kRows = 4096;  // of the trap destination table
    static constexpr int kRoom = 8192;

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

    UdpSender sender_;
    UdpSender::Time now_ = std::chrono::steady_clock::now();
};

TEST_F(UdpRoutes, OfAWholeTableAreKnown)
{
    ASSERT_EQ(found(kRows), kRows);

    int known = 0;
    {
        const NoMoreDescriptors none;
        known = found(kRows);
    }

    EXPECT_EQ(known, kRows);
}

TEST_F(UdpRoutes, AreFoundOutAgainAfterAMinute)
{
    ASSERT_TRUE(finds(1));

    bool before = false;
    bool after = true;
    {
        const NoMoreDescriptors none;
        now_ += 59s;
        before = finds(1);
        now_ += 1s;
        after = finds(1);
    }

    EXPECT_TRUE(before);
    EXPECT_FALSE(after);
}

TEST_F(UdpRoutes, ThatAreOldMakeRoom)
{
    ASSERT_EQ(found(kRoom), kRoom);
    now_ += 30s;
    ASSERT_TRUE(finds(kRoom + 1)) << "it is found out, though there is no room";
    now_ += 30s;
    ASSERT_TRUE(finds(kRoom + 1));

    bool known = false;
    {
        const NoMoreDescriptors none;
        known = finds(kRoom + 1);
    }

    EXPECT_TRUE(known);
}

TEST_F(UdpRoutes, ThatAreNotOldStayWhenThereIsNoRoom)
{
    ASSERT_EQ(found(kRoom + 1), kRoom + 1);

    int known = 0;
    {
        const NoMoreDescriptors none;
        known = found(kRoom);
    }

    EXPECT_EQ(known, kRoom);
}

TEST_F(UdpRoutes, ThatAreMissingAreLookedForEachTime)
{
    bool without = true;
    {
        const NoMoreDescriptors none;
        without = finds(1);
    }

    EXPECT_FALSE(without);
    EXPECT_TRUE(finds(1));
}

}  // namespace
