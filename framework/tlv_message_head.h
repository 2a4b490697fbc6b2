#pragma once

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <type_traits>

/// Header of every message package: 28 bytes, little-endian, the same in memory and on the wire
/// (docs/tlv-format.md). The words without a meaning here are carried unchanged; they belong to the
/// back end (docs/backend-protocol.md).
struct TLVMsgHeadV3 {
    static constexpr std::uint32_t MAGIC = 0x55555555;
    static constexpr std::uint32_t VERSION = 3;

    std::uint32_t uiMagic = MAGIC;
    std::uint32_t uiVersion = VERSION;
    std::uint32_t uiWord2 = 0;
    std::uint32_t uiWord3 = 0xFFFFFFFF;
    std::uint16_t usShort0 = 0xFFFD;
    std::uint16_t usShort1 = 0x0001;
    std::uint16_t usShort2 = 0xFFFF;
    std::uint16_t usShort3 = 0xFFFF;
    std::uint32_t uiDataLen = 0;  ///< Bytes of records that follow the header.

    /// Appends a readable text of the header to `os`. The host supplies it.
    void dump(std::ostringstream& os) const;
};

static_assert(sizeof(TLVMsgHeadV3) == 28 && std::is_trivially_copyable_v<TLVMsgHeadV3>,
              "the header is copied byte for byte to and from the wire");
static_assert(offsetof(TLVMsgHeadV3, uiMagic) == 0 && offsetof(TLVMsgHeadV3, uiVersion) == 4 &&
                  offsetof(TLVMsgHeadV3, uiWord2) == 8 && offsetof(TLVMsgHeadV3, uiWord3) == 12 &&
                  offsetof(TLVMsgHeadV3, usShort0) == 16 &&
                  offsetof(TLVMsgHeadV3, usShort1) == 18 &&
                  offsetof(TLVMsgHeadV3, usShort2) == 20 &&
                  offsetof(TLVMsgHeadV3, usShort3) == 22 && offsetof(TLVMsgHeadV3, uiDataLen) == 24,
              "field offsets are the wire's");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "nothing on the wire is byte-swapped");
