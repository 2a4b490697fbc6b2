// stream  ::= package*
// package ::= header(28) records(uiDataLen)     little-endian; magic at 0, version at 4, uiDataLen
// at 24 The long version is docs/backend-protocol.md.
#include "backend/package_assembler.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace talvik::backend {

namespace {

std::uint32_t wordAt(const unsigned char* data, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, data + offset, sizeof word);
    return word;
}

/// Refuses a stream on the first word that is wrong, without waiting for the rest of the header.
void checkWord(const unsigned char* data, std::size_t held, std::size_t offset, std::uint32_t due,
               const char* name)
{
    if (held < offset + sizeof due || wordAt(data, offset) == due) {
        return;
    }
    char text[80];
    std::snprintf(text, sizeof text, "%s 0x%08X in a header, 0x%08X is due", name,
                  wordAt(data, offset), due);
    throw ProtocolError(text);
}

}  // namespace

void PackageAssembler::append(const unsigned char* data, std::size_t size)
{
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    buffer_.insert(buffer_.end(), data, data + size);
}

std::optional<Bytes> PackageAssembler::next()
{
    if (missing() != 0) {
        return std::nullopt;
    }
    const auto size = packageSize();
    Bytes package(data(), data() + size);
    start_ += size;
    if (held() == 0) {
        buffer_ = Bytes();  // a large package's memory is not kept for an idle connection
        start_ = 0;
    }
    return package;
}

std::size_t PackageAssembler::missing() const
{
    checkWord(data(), held(), offsetof(TLVMsgHeadV3, uiMagic), TLVMsgHeadV3::MAGIC, "magic");
    checkWord(data(), held(), offsetof(TLVMsgHeadV3, uiVersion), TLVMsgHeadV3::VERSION, "version");
    const auto due = held() < kHeaderSize ? kHeaderSize : packageSize();
    return held() < due ? due - held() : 0;
}

std::size_t PackageAssembler::packageSize() const
{
    const std::size_t records = wordAt(data(), offsetof(TLVMsgHeadV3, uiDataLen));
    if (limit_ - kHeaderSize < records) {
        throw ProtocolError("a header promises " + std::to_string(records) +
                            " bytes of records, a package has at most " + std::to_string(limit_) +
                            " bytes");
    }
    return kHeaderSize + records;
}

}  // namespace talvik::backend
