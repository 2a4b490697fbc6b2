#include "trap/trap_cells.h"

#include <cstddef>
#include <memory>

namespace {

void appendCell(CTLVRecordV3& record, CTLVCell::ETLVType type, unsigned short tag,
                const void* value, std::size_t length)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(type, tag, value, length);
    record.append(cell.get());
    cell.release();
}

}  // namespace

const CTLVCell* talvik::cellIn(const CTLVRecordV3& record, unsigned short tag)
{
    const auto place = record.find(tag);
    return place == record.pCells->end() ? nullptr : *place;
}

std::string talvik::textOf(const CTLVCell& cell)
{
    cell.checkString();
    return cell.toString();
}

std::uint32_t talvik::numberOf(const CTLVCell& cell)
{
    cell.checkNumerical();
    return CTLVCell::ValueCast<unsigned int>()(&cell);
}

void talvik::appendText(CTLVRecordV3& record, unsigned short tag, const std::string& text)
{
    appendCell(record, CTLVCell::TLV_STRING, tag, text.c_str(), text.size() + 1);
}

void talvik::appendNumber(CTLVRecordV3& record, CTLVCell::ETLVType type, unsigned short tag,
                          std::uint32_t value)
{
    appendCell(record, type, tag, &value, sizeof value);
}
