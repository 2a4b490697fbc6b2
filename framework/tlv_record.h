#pragma once

#include "framework/tlv_cell.h"

#include <ace/Functor_T.h>
#include <ace/Hash_Map_Manager_T.h>
#include <ace/Null_Mutex.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <sstream>

/// One record of a message package: an identifier and an ordered list of cells, indexed by tag. It
/// owns its cells and is owned by the package that it was added to. Used by one thread at a time,
/// so nothing in it locks.
///
/// Layout and field order are shared with the host. Operations marked "the host supplies" are
/// resolved from the process that loads the module.
class CTLVRecordV3 {
public:
    using CellList = std::list<CTLVCell*>;
    using TagIndex = ACE_Hash_Map_Manager_Ex<int, CellList::iterator, ACE_Hash<int>,
                                             ACE_Equal_To<int>, ACE_Null_Mutex>;

    static constexpr std::uint64_t NO_RECORD_ID = ~std::uint64_t{0};
    static constexpr std::size_t MIN_BUCKETS = 32;

    /// A record without cells whose index has the larger of 32 and `cellsExpected` buckets.
    explicit CTLVRecordV3(std::uint64_t ullId = NO_RECORD_ID, std::size_t cellsExpected = 0);

    /// Deletes the cells (their value bytes zeroed first), the list and the index.
    ~CTLVRecordV3();

    CTLVRecordV3(const CTLVRecordV3&) = delete;
    CTLVRecordV3& operator=(const CTLVRecordV3&) = delete;

    /// Position of the first cell with `tag`, or the list's end with `errno` set to ENOENT.
    CellList::iterator find(unsigned short tag) const;

    /// The first cell with `tag`. Throws `CKEL_Exception` when the record has none. The host
    /// supplies it.
    CTLVCell* operator[](unsigned short tag) const;

    /// Appends `pCell` at the end, indexes it by tag (a tag that is there already keeps its first
    /// place) and takes ownership. Throws on an allocation failure, with the record unchanged and
    /// the cell still the caller's. The host supplies it.
    void append(const CTLVCell* pCell);

    /// Sum over the cells of value length + 4: the record's `usRecordLen` on the wire. The host
    /// supplies it.
    unsigned int length() const;

    /// Deletes the cells and empties list and index; the identifier stays. The host supplies it.
    void clear();

    /// Appends a readable text of the record to `os`. The host supplies it.
    void dump(std::ostringstream& os) const;

    std::uint64_t ullRecordId;
    CellList* pCells;
    TagIndex oTagIndex;
};
