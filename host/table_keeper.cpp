#include "host/table_keeper.h"

#include "backend/alarm_tags.h"
#include "framework/tlv_record.h"

#include <algorithm>
#include <optional>

namespace talvik {

namespace {

namespace alarm = backend::alarm;

/// Nothing when there is no such number.
std::optional<std::uint32_t> numberAt(const CTLVRecordV3& record, unsigned tag)
{
    const auto place = record.find(static_cast<unsigned short>(tag));
    if (place == record.pCells->end()) {
        return std::nullopt;
    }
    return CTLVCell::ValueCast<unsigned int>()(*place);
}

bool isKind(std::uint32_t number, alarm::Kind kind)
{
    return number == static_cast<std::uint32_t>(kind);
}

}  // namespace

void TableKeeper::reported(const CTLVRecordV3& record)
{
    const auto kind = numberAt(record, alarm::kKindTag);
    const auto serial = numberAt(record, alarm::kSerialTag);
    if (!kind || !serial) {
        dropRows();
        return;
    }
    for (const auto& table : tables_) {
        if (isKind(*kind, alarm::Kind::Fault)) {
            table->rowExists(*serial);
        } else if (isKind(*kind, alarm::Kind::Clear)) {
            table->rowIsGone(*serial);
        } else if (!isKind(*kind, alarm::Kind::Event)) {  // which is never active
            table->dropRows();
        }
    }
}

void TableKeeper::dropRows()
{
    for (const auto& table : tables_) {
        table->dropRows();
    }
}

LoopWatcher::Time TableKeeper::deadline() const
{
    auto deadline = Time::max();
    for (const auto& table : tables_) {
        deadline = std::min(deadline, table->nextExpiry());
    }
    return deadline;
}

void TableKeeper::proceed(bool /*ready*/, Time /*now*/)
{
    for (const auto& table : tables_) {
        table->trim();
    }
}

}  // namespace talvik
