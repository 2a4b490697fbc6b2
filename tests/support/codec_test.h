#pragma once

#include "framework/tlv_package.h"
#include "tests/support/ace_log_capture.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/wire_bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace talvik::test {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

inline constexpr u_int kCodecFailed = 0xFFFFFFFF;
inline constexpr char kSource[] = "om/snmpagent/common/include/kelpub/kel_message_package";

/// A line of the codec without its "date priority (thread) " and with N for its line number. A line
/// that does not start that way comes back with "unstamped: " before it.
std::string logText(const std::string& line);

/// Base of the codec's tests: a fresh fake host, an empty package, and the lines that the codec
/// logs.
class CodecTest : public FakeHostTest {
protected:
    u_int decode(const WireBytes& wire)
    {
        const auto copy = wire.exactCopy();
        return package.decode(copy.get(), static_cast<unsigned>(wire.size()));
    }

    /// One record of these bytes and nothing behind it; whether it is accepted.
    bool accepts(const WireBytes& record)
    {
        return decode(WireBytes::package(record)) != kCodecFailed;
    }

    /// The lines logged so far, without "date priority (thread) ", line numbers as N; a line
    /// without that start comes back with "unstamped: " before it.
    std::vector<std::string> texts() const
    {
        std::vector<std::string> found;
        for (const std::string& line : aceLog.lines) {
            found.push_back(logText(line));
        }
        return found;
    }

    /// What a line of `getRecord` says before its own text.
    static std::string recordLine(const std::string& text)
    {
        return std::string("at File=") + kSource +
               ",Line=N,Function=u_int CTLVPackageV3<MSG_S_HEAD>::getRecord(unsigned char*, "
               "unsigned int, "
               "CTLVRecordV3*&) [with MSG_S_HEAD = TLVMsgHeadV3; u_int = unsigned int]" +
               text + "\n";
    }

    static std::string recordFailedLine(std::size_t size, std::size_t position)
    {
        return std::string("at File=") + kSource +
               ",Line=N : it failed to parse record, buf size=" + std::to_string(size) +
               ", parsing pos=" + std::to_string(position) + "\n";
    }

    /// The cells of a record as "type:tag=value", in order.
    static std::vector<std::string> cells(const CTLVRecordV3& record)
    {
        std::vector<std::string> found;
        for (const CTLVCell* cell : *record.pCells) {
            found.push_back(
                std::to_string(cell->usTagWord & 0xFU) + ":" +
                std::to_string(cell->usTagWord >> 4U) + "=" +
                std::string(reinterpret_cast<const char*>(cell->pData), cell->sDataLen));
        }
        return found;
    }

    std::string headerBytes() const
    {
        return {reinterpret_cast<const char*>(&package.oHead), sizeof package.oHead};
    }

    /// What both variants of `encode` write, which must be the same.
    std::vector<std::uint8_t> encoded()
    {
        unsigned char* bytes = nullptr;
        const u_int size = package.encode(bytes);
        std::vector<std::uint8_t> first(bytes, bytes + size);
        delete[] bytes;
        std::vector<std::uint8_t> second(size, 0xEE);
        EXPECT_EQ(package.encode(second.data(), size), size);
        EXPECT_EQ(first, second);
        return first;
    }

    Package package;
    AceLogCapture aceLog;
};

}  // namespace talvik::test
