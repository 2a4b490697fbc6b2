#include "handlers/record_cells.h"

#include <utility>

namespace talvik {

namespace {

void append(CTLVRecordV3& record, std::unique_ptr<CTLVCell> cell)
{
    record.append(cell.get());
    cell.release();
}

void append(CTLVRecordV3& record, CTLVCell::ETLVType type, unsigned short tag, const void* value,
            std::size_t length)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(type, tag, value, length);
    append(record, std::move(cell));
}

}  // namespace

void CellWriter::text(unsigned short tag, const char* value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set(tag, value);
    append(record_, std::move(cell));
}

void CellWriter::octets(unsigned short tag, const unsigned char* value, std::size_t length)
{
    append(record_, CTLVCell::TLV_OCTETS, tag, value, length);
}

void CellWriter::unsignedNumber(unsigned short tag, std::uint32_t value)
{
    append(record_, CTLVCell::TLV_UINT, tag, &value, sizeof value);
}

void CellWriter::signedNumber(unsigned short tag, std::int32_t value)
{
    append(record_, CTLVCell::TLV_INT, tag, &value, sizeof value);
}

void CellWriter::wideNumber(unsigned short tag, std::uint64_t value)
{
    append(record_, CTLVCell::TLV_UINT, tag, &value, sizeof value);
}

void appendRecord(CTLVPackageV3<TLVMsgHeadV3>& package, std::unique_ptr<CTLVRecordV3> record)
{
    package.oRecords.push_back(record.get());
    record.release();
}

}  // namespace talvik
