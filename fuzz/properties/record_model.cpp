#include "fuzz/properties/record_model.h"

#include <bitset>

namespace talvik::fuzz {

namespace {

constexpr std::uint32_t kRecordHeader = 10;
constexpr std::uint32_t kCellHeader = 4;
constexpr std::uint32_t kPositions = 65536;

std::uint16_t u16At(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8U);
}

std::uint64_t u64At(const std::uint8_t* bytes)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < 8; ++i) {
        value |= std::uint64_t{bytes[i]} << (8 * i);
    }
    return value;
}

/// Position after the cells; false when they never end.
bool walk(const std::uint8_t* bytes, std::uint32_t available, std::uint32_t length,
          std::uint32_t& position, std::vector<ModelCell>& cells)
{
    const std::uint32_t end = (length + kRecordHeader) % kPositions;
    std::bitset<kPositions> visited;
    while (position < length + kRecordHeader) {
        if (visited[position]) {
            return false;
        }
        visited[position] = true;
        if (available - position < kCellHeader) {
            return true;
        }
        const std::uint16_t tagWord = u16At(bytes + position);
        position = (position + 2) % kPositions;
        if ((tagWord & 0xFU) > 9) {
            return true;
        }
        const std::uint32_t size = u16At(bytes + position);
        position = (position + 2) % kPositions;
        if (position + size > end) {
            return true;
        }
        cells.push_back({tagWord, {bytes + position, bytes + position + size}});
        position = (position + size) % kPositions;
    }
    return true;
}

}  // namespace

std::optional<ModelRecord> readRecord(const std::uint8_t* record, std::uint32_t available)
{
    if (available < kRecordHeader) {
        return std::nullopt;
    }
    const std::uint32_t length = u16At(record + 8);
    if (length + kRecordHeader > available) {
        return std::nullopt;
    }
    ModelRecord model{u64At(record), length + kRecordHeader, {}};
    std::uint32_t position = kRecordHeader;
    if (!walk(record, available, length, position, model.cells) ||
        position != length + kRecordHeader) {
        return std::nullopt;
    }
    return model;
}

std::optional<std::vector<ModelRecord>> readRecords(const std::uint8_t* records, std::uint32_t size)
{
    std::vector<ModelRecord> found;
    for (std::uint32_t position = 0; position < size;) {
        auto record = readRecord(records + position, size - position);
        if (!record) {
            return std::nullopt;
        }
        position += record->size;
        found.push_back(std::move(*record));
    }
    return found;
}

}  // namespace talvik::fuzz
