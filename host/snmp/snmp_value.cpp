#include "host/snmp/snmp_value.h"

#include "framework/tlv_cell.h"

#include <limits>

namespace talvik {

namespace {

constexpr unsigned kTypeMask = 0xF;

unsigned typeOf(const CTLVCell& cell)
{
    return cell.usTagWord & kTypeMask;
}

bool isText(const CTLVCell& cell)
{
    return typeOf(cell) == CTLVCell::TLV_STRING || typeOf(cell) == CTLVCell::TLV_OCTETS;
}

std::string octetsOf(const CTLVCell& cell)
{
    std::string octets(cell.pData, cell.pData + cell.sDataLen);
    if (typeOf(cell) == CTLVCell::TLV_STRING && !octets.empty() && octets.back() == '\0') {
        octets.pop_back();
    }
    return octets;
}

/// Up to four bytes are read as the 32-bit rules say, so that a short signed number keeps its sign.
std::int64_t signedNumberOf(const CTLVCell& cell)
{
    if (cell.sDataLen <= sizeof(std::uint32_t)) {
        const auto bits = CTLVCell::ValueCast<unsigned int>()(&cell);
        return typeOf(cell) == CTLVCell::TLV_INT ? std::int64_t{static_cast<std::int32_t>(bits)}
                                                 : std::int64_t{bits};
    }
    return static_cast<std::int64_t>(CTLVCell::ValueCast<unsigned long long>()(&cell));
}

struct Range {
    std::int64_t low;
    std::int64_t high;
};

Range rangeOf(Syntax syntax)
{
    if (syntax == Syntax::Integer) {
        return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    }
    return {0, std::numeric_limits<std::uint32_t>::max()};
}

}  // namespace

std::optional<SnmpValue> toSnmpValue(const CTLVCell& cell, Syntax syntax, std::string& problem)
{
    SnmpValue value;
    value.syntax = syntax;
    if (syntax == Syntax::OctetString) {
        if (!isText(cell)) {
            problem = "cell of type " + std::to_string(typeOf(cell)) + " where text is due";
            return std::nullopt;
        }
        value.octets = octetsOf(cell);
        return value;
    }
    try {
        cell.checkNumerical();
    } catch (const std::exception& error) {
        problem = error.what();
        return std::nullopt;
    }
    value.number = signedNumberOf(cell);
    if (syntax == Syntax::Counter64) {
        return value;
    }
    const auto range = rangeOf(syntax);
    if (value.number < range.low || value.number > range.high) {
        problem = "value " + std::to_string(value.number) + " is out of range";
        return std::nullopt;
    }
    return value;
}

bool appendIndex(const SnmpValue& value, ObjectId& index)
{
    if (value.syntax != Syntax::OctetString) {
        if (value.number < 0) {
            return false;
        }
        index.push_back(static_cast<unsigned long>(value.number));
        return true;
    }
    index.push_back(value.octets.size());
    for (const char octet : value.octets) {
        index.push_back(static_cast<unsigned char>(octet));
    }
    return true;
}

}  // namespace talvik
