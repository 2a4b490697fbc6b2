#include "backend/request_cells.h"

#include <cstring>

namespace talvik::backend {

namespace {

constexpr unsigned kTypeMask = 0xF;
constexpr unsigned kSignBit = 0x80;

unsigned typeOf(const CTLVCell& cell)
{
    return cell.usTagWord & kTypeMask;
}

[[noreturn]] void refuse(unsigned tag, const char* name, const std::string& reason)
{
    throw BadCell("the cell " + std::string(name) + " (tag " + std::to_string(tag) + ") " + reason);
}

bool isWidth(std::size_t bytes)
{
    return bytes == 1 || bytes == 2 || bytes == 4 || bytes == 8;
}

std::uint64_t numberIn(const CTLVCell& cell, unsigned tag, const char* name, std::uint64_t max)
{
    const auto type = typeOf(cell);
    if (type < CTLVCell::TLV_UINT || type > CTLVCell::TLV_NUMERIC_LAST) {
        refuse(tag, name, "is of type " + std::to_string(type) + ", a number (3) is due");
    }
    if (!isWidth(cell.sDataLen)) {
        refuse(tag, name,
               "has " + std::to_string(cell.sDataLen) + " bytes, a number has 1, 2, 4 or 8");
    }
    if (type == CTLVCell::TLV_INT && (cell.pData[cell.sDataLen - 1] & kSignBit) != 0) {
        refuse(tag, name, "is negative");
    }
    const auto value = CTLVCell::ValueCast<unsigned long long>()(&cell);
    if (value > max) {
        refuse(tag, name,
               "is " + std::to_string(value) + ", at most " + std::to_string(max) + " is possible");
    }
    return value;
}

}  // namespace

std::uint64_t RequestCells::number(unsigned tag, const char* name, std::uint64_t max) const
{
    return numberIn(get(tag, name), tag, name, max);
}

std::uint64_t RequestCells::positiveNumber(unsigned tag, const char* name, std::uint64_t max) const
{
    const auto value = number(tag, name, max);
    if (value == 0) {
        refuse(tag, name, "is 0, at least 1 is due");
    }
    return value;
}

std::optional<std::uint64_t> RequestCells::optionalNumber(unsigned tag, const char* name,
                                                          std::uint64_t max) const
{
    const auto* cell = find(tag);
    return cell == nullptr ? std::nullopt : std::optional(numberIn(*cell, tag, name, max));
}

std::string RequestCells::text(unsigned tag, const char* name, std::size_t max) const
{
    const auto& cell = get(tag, name);
    if (typeOf(cell) != CTLVCell::TLV_STRING) {
        refuse(tag, name, "is of type " + std::to_string(typeOf(cell)) + ", a text (2) is due");
    }
    if (cell.sDataLen == 0) {
        return {};
    }
    const auto* end = std::memchr(cell.pData, 0, cell.sDataLen);
    if (end != cell.pData + cell.sDataLen - 1) {
        refuse(tag, name, "has no NUL at its end, or one before");
    }
    if (cell.sDataLen - std::size_t{1} > max) {
        refuse(tag, name,
               "has " + std::to_string(cell.sDataLen - 1) + " bytes of text, at most " +
                   std::to_string(max) + " are possible");
    }
    return cell.toString();
}

const CTLVCell* RequestCells::find(unsigned tag) const
{
    const auto place = record_.find(static_cast<unsigned short>(tag));
    return place == record_.pCells->end() ? nullptr : *place;
}

const CTLVCell& RequestCells::get(unsigned tag, const char* name) const
{
    const auto* cell = find(tag);
    if (cell == nullptr) {
        refuse(tag, name, "is missing");
    }
    return *cell;
}

}  // namespace talvik::backend
