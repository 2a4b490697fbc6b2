#pragma once

#include "framework/tlv_message_head.h"
#include "framework/tlv_record.h"

#include <cstddef>
#include <sstream>
#include <sys/types.h>
#include <vector>

/// One message: a header and an ordered list of records, which it owns. The unit of every handler
/// call and of every exchange with the back end. Used by one thread at a time. The order of fields
/// and of virtual operations is binary contract; `docs/tlv-format.md` has the wire format.
template <typename MSG_S_HEAD>
class CTLVPackageV3 {
public:
    static constexpr u_int MIN_RECORD_SIZE = 10;  ///< record identifier and length field
    static constexpr u_int MIN_TLV_SIZE = 4;      ///< tag word and length field of a cell
    static constexpr u_int FAILED = 0xFFFFFFFF;   ///< result of a codec operation that failed

    /// The header's defaults and no records.
    CTLVPackageV3() = default;

    /// As `clear`, and frees the list.
    virtual ~CTLVPackageV3();

    CTLVPackageV3(const CTLVPackageV3&) = delete;
    CTLVPackageV3& operator=(const CTLVPackageV3&) = delete;

    /// Appends the records of an encoded package and takes over its header words (not magic and
    /// version). Returns the record bytes consumed. On failure logs through ACE and returns
    /// `FAILED`: a refused header leaves the package as it was, a refused record empties it
    /// (records held before included) and keeps its header.
    virtual u_int decode(unsigned char* pBuf, unsigned int uiBufSize);

    /// Writes the package into a buffer made with array `new`, which the caller frees with array
    /// `delete`, and sets `uiDataLen`. Returns the bytes written. Throws only on an allocation
    /// failure.
    virtual u_int encode(unsigned char*& pBuf);

    /// Writes the package into the caller's buffer and sets `uiDataLen`. Returns the bytes written,
    /// or `FAILED` with nothing written when `pBuf` is null or `uiBufSize` too small.
    virtual u_int encode(unsigned char* pBuf, unsigned int uiBufSize);

    /// Deletes all records; the header is kept. An exception on the way ends the process.
    virtual void clear() noexcept;

    /// Appends a readable text of header and records to `os`, flushing after each line end.
    virtual void dump(std::ostringstream& os) const;

    /// The record at `index`. Throws `CKEL_Exception` at or past the end.
    CTLVRecordV3* operator[](std::size_t index) const;

    /// Parses one record. Returns the bytes that it occupies, `pRecord` then a new record of the
    /// caller's; or 0 with `pRecord` null, the reason logged and nothing left allocated.
    /// `uiBufSize` is what is available from `pBuf` on.
    u_int getRecord(unsigned char* pBuf, unsigned int uiBufSize, CTLVRecordV3*& pRecord);

    /// Writes header and records into a buffer known to be large enough; `uiDataLen` is the
    /// records' size.
    void encode_i(unsigned char* pBuf, unsigned int uiDataLen);

    std::vector<CTLVRecordV3*> oRecords;
    MSG_S_HEAD oHead;
};

extern template class CTLVPackageV3<TLVMsgHeadV3>;
