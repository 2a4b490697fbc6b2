#pragma once

#include "framework/tlv_package.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// How the handlers read the cells of records and make those of their own.
namespace talvik {

/// The value of the numeric cell with `tag`; `Number` is `unsigned int` or `unsigned long long`, a
/// wider value is cut. Throws `CKEL_Exception` for a missing cell or one of another kind.
template <typename Number>
Number numberIn(const CTLVRecordV3& record, unsigned short tag)
{
    const CTLVCell* const cell = record[tag];
    cell->checkNumerical();
    return CTLVCell::ValueCast<Number>()(cell);
}

/// Appends cells to a record, which must outlive it. When an operation throws, the record has the
/// cells appended before and nothing else is left behind.
class CellWriter {
public:
    explicit CellWriter(CTLVRecordV3& record) : record_(record) {}

    /// A text with its terminating NUL; no data for null.
    void text(unsigned short tag, const char* value);

    /// Bytes that are no text, without data for none.
    void octets(unsigned short tag, const unsigned char* value, std::size_t length);

    /// Numbers of 4 bytes, and one of 8.
    void unsignedNumber(unsigned short tag, std::uint32_t value);
    void signedNumber(unsigned short tag, std::int32_t value);
    void wideNumber(unsigned short tag, std::uint64_t value);

private:
    CTLVRecordV3& record_;
};

/// Appends `record` to `package`, which owns it from then on.
void appendRecord(CTLVPackageV3<TLVMsgHeadV3>& package, std::unique_ptr<CTLVRecordV3> record);

}  // namespace talvik
