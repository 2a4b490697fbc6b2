#include "backend/alarm_record.h"

#include "backend/record_builder.h"

namespace talvik::backend {

std::string alarmRecord(alarm::Kind kind, const ActiveAlarm& what, std::uint64_t clearTime)
{
    Package package;
    RecordBuilder(package, alarm::kRecordId)
        .u8(alarm::kKindTag, static_cast<std::uint8_t>(kind))
        .u64(alarm::kIdTag, what.alarm.id)
        .u32(alarm::kLevelTag, what.alarm.level)
        .u32(alarm::kSerialTag, what.serial)
        .u64(alarm::kTimeTag, what.alarm.time)
        .u64(alarm::kOtherClearTag, 0)
        .u64(alarm::kClearTimeTag, clearTime)
        .text(alarm::kParametersTag, what.alarm.parameters)
        .u32(alarm::kEventFlagTag, kind == alarm::Kind::Event ? 1 : 0);
    const auto wire = encoded(package);
    return {wire.begin() + kHeaderSize, wire.end()};
}

}  // namespace talvik::backend
