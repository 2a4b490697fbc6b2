#include "framework/tlv_cell.h"

#include "framework/kel_exception.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace {

constexpr unsigned kTypeBits = 4;
constexpr unsigned kTypeMask = 0xF;
constexpr unsigned kMaxTag = 4095;

std::string hexText(const CTLVCell& cell)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(std::size_t{cell.sDataLen} * 2);
    for (std::size_t i = 0; i < cell.sDataLen; ++i) {
        text += kDigits[cell.pData[i] >> 4U];
        text += kDigits[cell.pData[i] & 0xFU];
    }
    return text;
}

std::string stringText(const CTLVCell& cell)
{
    if (cell.sDataLen == 0) {
        return {};
    }
    const auto* begin = reinterpret_cast<const char*>(cell.pData);
    return {begin, strnlen(begin, cell.sDataLen)};
}

/// The value with the sign that its width says, unlike `ValueCast`, whose rules are fixed by its
/// callers.
long long signedValue(const CTLVCell& cell)
{
    const auto width = std::min<std::size_t>(cell.sDataLen, sizeof(long long));
    long long value = 0;
    if (width != 0) {
        std::memcpy(&value, cell.pData, width);
        const unsigned unused = static_cast<unsigned>(sizeof(long long) - width) * 8U;
        value = static_cast<long long>(static_cast<unsigned long long>(value) << unused) >> unused;
    }
    return value;
}

}  // namespace

int CTLVCell::setCell(unsigned short tagWord, const char* data, unsigned long len)
{
    if (data == nullptr) {
        len = 0;
    }
    if (len > std::numeric_limits<std::uint16_t>::max()) {
        throw CKEL_Exception("CTLVCell can't hold " + std::to_string(len) +
                             " bytes! tag equal to " + std::to_string(tagWord >> kTypeBits));
    }
    unsigned char* fresh = nullptr;
    if (len != 0) {
        fresh = new unsigned char[len];
        std::memcpy(fresh, data, len);
    }
    if (pData != nullptr) {
        explicit_bzero(pData, sDataLen);
        delete[] pData;
    }
    pData = fresh;
    sDataLen = static_cast<std::uint16_t>(len);
    usTagWord = tagWord;
    return 0;
}

int CTLVCell::set_i(ETLVType type, unsigned short tag, const void* data, unsigned long len)
{
    if (tag > kMaxTag) {
        throw CKEL_Exception("CTLVCell can't have a tag above 4095! tag equal to " +
                             std::to_string(tag));
    }
    const auto tagWord =
        static_cast<unsigned short>((unsigned{tag} << kTypeBits) | (type & kTypeMask));
    return setCell(tagWord, static_cast<const char*>(data), len);
}

std::string CTLVCell::toString() const
{
    const unsigned type = usTagWord & kTypeMask;
    if (type == TLV_STRING) {
        return stringText(*this);
    }
    if (type == TLV_INT) {
        return std::to_string(signedValue(*this));
    }
    if (type > TLV_STRING) {
        return std::to_string(ValueCast<unsigned long long>()(this));
    }
    return hexText(*this);
}
