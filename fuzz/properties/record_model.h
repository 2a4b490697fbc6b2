#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace talvik::fuzz {

/// A cell as the rules say that it is read.
struct ModelCell {
    std::uint16_t tagWord;
    std::vector<std::uint8_t> value;

    bool operator==(const ModelCell& other) const
    {
        return tagWord == other.tagWord && value == other.value;
    }
};

struct ModelRecord {
    std::uint64_t id;
    std::uint32_t size;  ///< bytes taken
    std::vector<ModelCell> cells;
};

/// The acceptance rule of a record once more, as directly as it can be written and with the
/// plainest protection against a walk without end: a set of the positions already visited.
/// `available` bytes are there from `record` on.
std::optional<ModelRecord> readRecord(const std::uint8_t* record, std::uint32_t available);

/// All records of `size` bytes, or nothing when one is refused.
std::optional<std::vector<ModelRecord>> readRecords(const std::uint8_t* records,
                                                    std::uint32_t size);

}  // namespace talvik::fuzz
