#include "framework/tlv_record.h"

#include "framework/kel_exception.h"

#include <new>
#include <string>

namespace {

constexpr unsigned kTypeBits = 4;
constexpr unsigned kTypeMask = 0xF;
constexpr unsigned kCellHeaderSize = 4;

}  // namespace

CTLVCell* CTLVRecordV3::operator[](unsigned short tag) const
{
    const auto place = find(tag);
    if (place == pCells->end()) {
        throw CKEL_Exception("CTLVRecordV3 has no such cell! tag equal to " + std::to_string(tag));
    }
    return *place;
}

void CTLVRecordV3::append(const CTLVCell* pCell)
{
    // The record owns the cell from here on, so it may drop the const that the interface carries.
    const auto place = pCells->insert(pCells->end(), const_cast<CTLVCell*>(pCell));
    if (oTagIndex.bind(pCell->usTagWord >> kTypeBits, place) == -1) {
        pCells->erase(place);
        throw std::bad_alloc();
    }
}

unsigned int CTLVRecordV3::length() const
{
    unsigned int sum = 0;
    for (const CTLVCell* cell : *pCells) {
        sum += cell->sDataLen + kCellHeaderSize;
    }
    return sum;
}

void CTLVRecordV3::clear()
{
    for (const CTLVCell* cell : *pCells) {
        delete cell;
    }
    pCells->clear();
    oTagIndex.unbind_all();
}

void CTLVRecordV3::dump(std::ostringstream& os) const
{
    os << "  record id=" << ullRecordId << " length=" << length() << '\n';
    for (const CTLVCell* cell : *pCells) {
        os << "    tag=" << (cell->usTagWord >> kTypeBits)
           << " type=" << (cell->usTagWord & kTypeMask) << " length=" << cell->sDataLen
           << " value=" << cell->toString() << '\n';
    }
}
