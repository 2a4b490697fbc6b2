#include "framework/tlv_record.h"

#include "framework/tag_index_pool.h"

#include <algorithm>

CTLVRecordV3::CTLVRecordV3(std::uint64_t ullId, std::size_t cellsExpected)
    : ullRecordId(ullId),
      pCells(nullptr),
      oTagIndex(std::max(MIN_BUCKETS, cellsExpected),
                talvik::obtainTagIndexMemory(std::max(MIN_BUCKETS, cellsExpected)))
{
    pCells = new CellList;
}

CTLVRecordV3::~CTLVRecordV3()
{
    clear();
    delete pCells;
}

CTLVRecordV3::CellList::iterator CTLVRecordV3::find(unsigned short tag) const
{
    CellList::iterator place;
    return oTagIndex.find(tag, place) == 0 ? place : pCells->end();
}
