#include "backend/record_builder.h"

#include <memory>

namespace talvik::backend {

namespace {

CTLVRecordV3& appended(Package& package, std::uint64_t recordId)
{
    auto record = std::make_unique<CTLVRecordV3>(recordId);
    package.oRecords.push_back(record.get());
    return *record.release();
}

void append(CTLVRecordV3& record, std::unique_ptr<CTLVCell> cell)
{
    record.append(cell.get());
    cell.release();
}

}  // namespace

RecordBuilder::RecordBuilder(Package& package, std::uint64_t recordId)
    : record_(appended(package, recordId))
{
}

RecordBuilder& RecordBuilder::u8(unsigned tag, std::uint8_t value)
{
    return number(tag, &value, sizeof value);
}

RecordBuilder& RecordBuilder::u32(unsigned tag, std::uint32_t value)
{
    return number(tag, &value, sizeof value);
}

RecordBuilder& RecordBuilder::u64(unsigned tag, std::uint64_t value)
{
    return number(tag, &value, sizeof value);
}

RecordBuilder& RecordBuilder::text(unsigned tag, const std::string& value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set(static_cast<unsigned short>(tag), value.c_str());
    append(record_, std::move(cell));
    return *this;
}

RecordBuilder& RecordBuilder::number(unsigned tag, const void* value, std::size_t size)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_UINT, static_cast<unsigned short>(tag), value, size);
    append(record_, std::move(cell));
    return *this;
}

}  // namespace talvik::backend
