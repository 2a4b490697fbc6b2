#include "host/snmp/snmp_value.h"

#include "framework/tlv_cell.h"

#include <charconv>
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

/// Without and with a time zone.
bool isDateAndTimeSize(std::size_t octets)
{
    return octets == 8 || octets == 11;
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

/// The number that strictly decimal `text` names: one way to write each.
std::optional<std::int64_t> parseNumber(const std::string& text)
{
    std::int64_t number = 0;
    const auto* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && std::to_string(number) == text
               ? std::optional(number)
               : std::nullopt;
}

/// What the cell says of a number, whatever its range; nothing with the reason in `problem`.
std::optional<std::int64_t> numberOf(const CTLVCell& cell, bool asText, std::string& problem)
{
    if (asText) {
        const auto number = isText(cell) ? parseNumber(octetsOf(cell)) : std::nullopt;
        problem = number ? "" : "cell is no decimal text";
        return number;
    }
    try {
        cell.checkNumerical();
    } catch (const std::exception& error) {
        problem = error.what();
        return std::nullopt;
    }
    return signedNumberOf(cell);
}

}  // namespace

Bounds boundsOf(Syntax syntax)
{
    if (syntax == Syntax::Integer) {
        return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    }
    if (syntax == Syntax::Counter64) {
        return {0, std::numeric_limits<long>::max()};
    }
    return {0, std::numeric_limits<std::uint32_t>::max()};
}

std::optional<SnmpValue> toSnmpValue(const CTLVCell& cell, const MibColumn& column,
                                     std::string& problem)
{
    SnmpValue value;
    value.syntax = column.syntax;
    if (column.syntax == Syntax::OctetString) {
        if (!isText(cell)) {
            problem = "cell of type " + std::to_string(typeOf(cell)) + " where text is due";
            return std::nullopt;
        }
        value.octets = octetsOf(cell);
        if (column.isDateAndTime && !isDateAndTimeSize(value.octets.size())) {
            problem = std::to_string(value.octets.size()) + " octets where a DateAndTime is due";
            return std::nullopt;
        }
        return value;
    }
    const auto number = numberOf(cell, column.textCell, problem);
    if (!number) {
        return std::nullopt;
    }
    value.number = *number;
    const auto bounds = boundsOf(column.syntax);
    if (column.syntax != Syntax::Counter64 &&
        (value.number < bounds.low || value.number > bounds.high)) {
        problem = "value " + std::to_string(value.number) + " is out of range";
        return std::nullopt;
    }
    return value;
}

std::unique_ptr<CTLVCell> toCell(const SnmpValue& value, const MibColumn& column)
{
    auto cell = std::make_unique<CTLVCell>();
    if (column.syntax == Syntax::OctetString || column.textCell) {
        const auto text = column.textCell ? std::to_string(value.number) : value.octets;
        cell->set_i(CTLVCell::TLV_STRING, column.tag, text.c_str(), text.size() + 1);
    } else {
        const auto bits = static_cast<std::uint32_t>(value.number);
        const auto type = column.syntax == Syntax::Integer ? CTLVCell::TLV_INT : CTLVCell::TLV_UINT;
        cell->set_i(type, column.tag, &bits, sizeof(bits));
    }
    return cell;
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
