#include "tests/support/allocation_probe.h"
#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

namespace talvik::test {

/// What is allocated is freed on every way out, and value bytes are zeros by then.
class TlvAllocation : public CodecTest {
protected:
    TlvAllocation()
    {
        // What the fake host and ACE allocate for themselves is none of the codec's.
        host.calls.reserve(4096);
        aceLog.reserve(64);
        decode(WireBytes());
    }

    static WireBytes sample()
    {
        WireBytes many;
        for (unsigned tag = 0; tag < 40; ++tag) {
            many.cell(2, tag, "value");
        }
        return WireBytes::package(
            WireBytes::record(1, WireBytes().cell(2, 1, "a").cell(3, 2, "bcde"))
                .append(WireBytes::record(2, many))
                .append(WireBytes::record(3, {})));
    }
};

TEST_F(TlvAllocation, IsBalancedWhenAPackageIsDecodedAndCleared)
{
    const auto wire = sample();
    const auto copy = wire.exactCopy();
    const AllocationProbe probe;
    {
        Package local;
        ASSERT_NE(local.decode(copy.get(), static_cast<unsigned>(wire.size())), kCodecFailed);
        EXPECT_GT(probe.live(), 0);
    }

    EXPECT_EQ(probe.live(), 0);
}

TEST_F(TlvAllocation, IsBalancedWhicheverAllocationOfADecodeFails)
{
    const auto wire = sample();
    const auto copy = wire.exactCopy();
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        Package local;
        local.oHead.uiWord2 = 5;
        AllocationProbe probe;
        probe.failAfter(count);
        try {
            local.decode(copy.get(), static_cast<unsigned>(wire.size()));
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(local.oRecords.size(), 0U);
            EXPECT_EQ(local.oHead.uiWord2, 5U);
        }
        failed = probe.failed();
        EXPECT_EQ(local.oRecords.size(), failed ? 0U : 3U) << "allocation " << count;
        local.clear();
        local.oRecords.shrink_to_fit();
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
}

TEST_F(TlvAllocation, IsBalancedWhicheverAllocationOfAnEncodeFails)
{
    ASSERT_NE(decode(sample()), kCodecFailed);
    bool failed = true;
    for (std::size_t count = 0; failed; ++count) {
        unsigned char* bytes = nullptr;
        AllocationProbe probe;
        probe.failAfter(count);
        try {
            package.encode(bytes);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(bytes, nullptr);
        }
        failed = probe.failed();
        delete[] bytes;
        EXPECT_EQ(probe.live(), 0);
    }
}

TEST_F(TlvAllocation, HappensOnceForAnEncode)
{
    ASSERT_NE(decode(sample()), kCodecFailed);
    unsigned char* bytes = nullptr;
    const AllocationProbe probe;

    const u_int size = package.encode(bytes);

    EXPECT_EQ(probe.allocations(), 1U);
    EXPECT_EQ(probe.largest(), size);
    delete[] bytes;
}

TEST_F(TlvAllocation, DoesNotHappenForAnEncodeIntoTheCallersBuffer)
{
    ASSERT_NE(decode(sample()), kCodecFailed);
    std::vector<std::uint8_t> buffer(1024);
    const AllocationProbe probe;

    EXPECT_NE(package.encode(buffer.data(), 1024), kCodecFailed);

    EXPECT_EQ(probe.allocations(), 0U);
}

TEST_F(TlvAllocation, LeavesNothingWhenARecordBehindGoodOnesIsRefused)
{
    const auto wire = WireBytes::package(
        WireBytes::record(1, WireBytes().cell(2, 1, "a"))
            .append(WireBytes::record(2, WireBytes().cell(2, 1, "a").cell(12, 2, "b"))));
    const auto copy = wire.exactCopy();
    aceLog.lines.clear();
    long live = 0;
    {
        const AllocationProbe probe;
        {
            Package local;
            EXPECT_EQ(local.decode(copy.get(), static_cast<unsigned>(wire.size())), kCodecFailed);
        }
        live = probe.live();
    }

    // The lines that the capture keeps are still there.
    EXPECT_EQ(live, static_cast<long>(aceLog.lines.size()));
}

class TlvHostFailure : public TlvAllocation, public testing::WithParamInterface<const char*> {};

TEST_P(TlvHostFailure, PassesAndLeavesNothing)
{
    const auto wire = sample();
    const auto copy = wire.exactCopy();
    int calls = 0;
    host.onCall(GetParam(), [&calls] {
        if (++calls == 4) {
            throw std::runtime_error("no");
        }
    });
    Package local;
    const AllocationProbe probe;

    EXPECT_THROW(local.decode(copy.get(), static_cast<unsigned>(wire.size())), std::runtime_error);

    EXPECT_EQ(local.oRecords.size(), 0U);
    local.oRecords.shrink_to_fit();
    EXPECT_EQ(probe.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(Host, TlvHostFailure, testing::Values("setCell", "append"),
                         [](const auto& row) { return std::string(row.param); });

class TlvZeroing : public TlvAllocation {
protected:
    static constexpr char kSecret[] = "a community name nobody may read";

    static WireBytes secret() { return WireBytes().cell(2, 1, kSecret); }
};

TEST_F(TlvZeroing, HappensBeforeAClearedPackagesValuesAreFreed)
{
    const auto wire = WireBytes::package(WireBytes::record(1, secret()));
    const auto copy = wire.exactCopy();
    Package local;
    AllocationProbe probe;
    probe.watchFor(kSecret);
    ASSERT_NE(local.decode(copy.get(), static_cast<unsigned>(wire.size())), kCodecFailed);

    local.clear();

    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(TlvZeroing, HappensBeforeAFailedDecodesValuesAreFreed)
{
    const auto wire = WireBytes::package(WireBytes::record(1, secret()).fill(9));
    const auto copy = wire.exactCopy();
    Package local;
    AllocationProbe probe;
    probe.watchFor(kSecret);

    EXPECT_EQ(local.decode(copy.get(), static_cast<unsigned>(wire.size())), kCodecFailed);

    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(TlvZeroing, HappensToACellThatTheHostDoesNotTake)
{
    const auto wire = WireBytes::package(WireBytes::record(1, secret()));
    const auto copy = wire.exactCopy();
    host.onCall("append", [] { throw std::bad_alloc(); });
    Package local;
    AllocationProbe probe;
    probe.watchFor(kSecret);

    EXPECT_THROW(local.decode(copy.get(), static_cast<unsigned>(wire.size())), std::bad_alloc);

    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(TlvZeroing, IsSeenByTheProbe)
{
    AllocationProbe probe;
    probe.watchFor(kSecret);

    {
        const std::string notZeroed(kSecret);
    }

    EXPECT_EQ(probe.freedWithBytes(), 1U);
}

}  // namespace talvik::test
