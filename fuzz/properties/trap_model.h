#pragma once

#include "fuzz/properties/trap_host.h"
#include "fuzz/properties/trap_list.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace talvik::fuzz {

/// A cell of a request or an answer.
struct TrapCell {
    unsigned tag;
    unsigned type;
    std::string bytes;

    bool operator==(const TrapCell& other) const
    {
        return tag == other.tag && type == other.type && bytes == other.bytes;
    }
};

using TrapRow = std::vector<TrapCell>;

/// A request: its cells, or nothing when it has no record at all, and the word of its header.
struct TrapRequest {
    std::optional<TrapRow> cells;
    unsigned word3 = 0;
};

/// What an operation leaves: a result or the text of an exception, lines and rows.
struct TrapOutcome {
    int result = 0;
    std::string thrown;
    std::vector<LogLine> lines;
    std::vector<TrapRow> rows;

    bool operator==(const TrapOutcome& other) const
    {
        return result == other.result && thrown == other.thrown && lines == other.lines &&
               rows == other.rows;
    }
};

/// The rules of the trap destination table once more, as plainly as they can be written.
class TrapModel {
public:
    TrapOutcome query() const;
    TrapOutcome create(const TrapRequest& request);
    TrapOutcome modify(const TrapRequest& request);
    TrapOutcome remove(const TrapRequest& request);

    TrapList list;
    bool listReadable = true;
};

}  // namespace talvik::fuzz
