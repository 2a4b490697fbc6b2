#pragma once

#include "framework/tlv_record.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace talvik::test {

/// One cell: tag, type code and value, byte by byte.
struct CellBytes {
    unsigned tag = 0;
    unsigned type = 0;
    std::string bytes;

    friend bool operator==(const CellBytes& a, const CellBytes& b)
    {
        return a.tag == b.tag && a.type == b.type && a.bytes == b.bytes;
    }

    friend std::ostream& operator<<(std::ostream& os, const CellBytes& cell)
    {
        return os << cell.tag << " (" << cell.type << ") " << testing::PrintToString(cell.bytes);
    }
};

inline CellBytes bytesOf(const CTLVCell& cell)
{
    const unsigned tagWord = cell.usTagWord;
    CellBytes found{tagWord >> 4U, tagWord & 0xFU, ""};
    if (cell.sDataLen != 0) {
        found.bytes.assign(reinterpret_cast<const char*>(cell.pData), cell.sDataLen);
    }
    return found;
}

/// The cells of `record` in their order.
inline std::vector<CellBytes> cellsOf(const CTLVRecordV3& record)
{
    std::vector<CellBytes> found;
    for (const CTLVCell* cell : *record.pCells) {
        found.push_back(bytesOf(*cell));
    }
    return found;
}

}  // namespace talvik::test
