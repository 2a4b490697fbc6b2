#pragma once

#include "host/link/socket_link.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"
#include "tests/unit/host_link/link_kit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace talvik::test {

constexpr std::uint64_t kCommand = 4001;
constexpr std::size_t kRequestSize = 38;

/// Never reached in a test that passes.
inline SocketLimits patient()
{
    SocketLimits limits;
    limits.connect = std::chrono::milliseconds(kWaitMs);
    limits.exchange = std::chrono::milliseconds(kWaitMs);
    return limits;
}

/// Reached soon.
inline SocketLimits hasty()
{
    SocketLimits limits;
    limits.connect = std::chrono::milliseconds(50);
    limits.exchange = std::chrono::milliseconds(50);
    limits.penalty = std::chrono::hours(1);
    return limits;
}

class SocketLinkTest : public testing::Test {
protected:
    SocketLinkTest() { addRecord(request_, kCommand); }

    std::string path() const { return dir_.path("socket"); }

    /// One exchange of `link`, while `peer` does its part on the test's thread.
    template <typename Peer>
    int exchangeWhile(SocketLink& link, Peer peer)
    {
        int code = -1;
        std::thread exchange([&] { code = link.exchange(request_, answer_); });
        try {
            peer();
        } catch (const std::exception& error) {
            ADD_FAILURE() << "the peer failed: " << error.what();
        }
        exchange.join();
        return code;
    }

    /// A successful exchange over `stream`.
    void expectAnswered(SocketLink& link, Stream& stream, std::uint32_t number)
    {
        EXPECT_EQ(exchangeWhile(link, [&] { answer(stream, number); }), 0);
    }

    static void answer(Stream& stream, std::uint32_t number)
    {
        EXPECT_EQ(stream.receive(kRequestSize), Wire::request(number, kCommand).bytes());
        stream.send(Wire::reply(number, kCommand, "answer " + std::to_string(number)).bytes());
    }

    TempDir dir_;
    Package request_;
    Package answer_;
};

/// More than a socket's buffers hold, so that it cannot be handed over without the peer.
inline void makeLarge(Package& request)
{
    const std::string value(60000, 'x');
    for (int i = 0; i < 50; ++i) {
        addRecord(request, kCommand);
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_OCTETS, 1, value.data(), value.size());
        request.oRecords.back()->append(cell.release());
    }
}

}  // namespace talvik::test
