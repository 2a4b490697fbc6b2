#include "framework/tlv_cell.h"

#include "framework/kel_exception.h"

#include <cstring>

namespace {

constexpr unsigned kTypeBits = 4;
constexpr unsigned kTypeMask = 0xF;

unsigned typeOf(const CTLVCell& cell)
{
    return cell.usTagWord & kTypeMask;
}

[[noreturn]] void refuse(const CTLVCell& cell, const char* expected)
{
    throw CKEL_Exception(std::string("CTLVCell isn't ") + expected + " type! tag equal to " +
                         std::to_string(cell.usTagWord >> kTypeBits));
}

/// The first `count` value bytes, little-endian, zero-extended.
template <typename T>
T readBytes(const CTLVCell& cell, std::size_t count)
{
    T value = 0;
    if (count != 0) {  // a cell without bytes has no pointer either
        std::memcpy(&value, cell.pData, count);
    }
    return value;
}

/// A two-byte value: the one length whose sign is extended.
template <typename T>
T readShort(const CTLVCell& cell)
{
    const auto raw = readBytes<std::uint16_t>(cell, sizeof(std::uint16_t));
    if (typeOf(cell) == CTLVCell::TLV_INT) {
        return static_cast<T>(static_cast<std::int16_t>(raw));
    }
    return raw;
}

/// Contract: only a two-byte signed value is sign-extended; existing handlers read shorter and
/// longer ones unsigned.
template <typename T>
T readNumber(const CTLVCell& cell)
{
    if (cell.sDataLen == sizeof(std::uint16_t)) {
        return readShort<T>(cell);
    }
    return readBytes<T>(cell, cell.sDataLen < sizeof(T) ? cell.sDataLen : sizeof(T));
}

}  // namespace

CTLVCell::~CTLVCell()
{
    if (pData != nullptr) {
        explicit_bzero(pData, sDataLen);
        delete[] pData;
    }
}

void CTLVCell::checkNumerical() const
{
    if (typeOf(*this) <= TLV_STRING) {
        refuse(*this, "numerical");
    }
}

void CTLVCell::checkString() const
{
    if (typeOf(*this) != TLV_STRING) {
        refuse(*this, "string");
    }
}

int CTLVCell::set(unsigned short tag, const char* text)
{
    return set_i(TLV_STRING, tag, text, text == nullptr ? 0 : std::strlen(text) + 1);
}

unsigned int CTLVCell::ValueCast<unsigned int>::operator()(const CTLVCell* pCell) const
{
    return readNumber<unsigned int>(*pCell);
}

unsigned long long CTLVCell::ValueCast<unsigned long long>::operator()(const CTLVCell* pCell) const
{
    return readNumber<unsigned long long>(*pCell);
}
