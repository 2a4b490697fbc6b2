#pragma once

#include "backend/protocol.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace talvik::backend {

/// A cell of a request that is missing, of the wrong type or out of bounds; `what()` names it and
/// says how.
class BadCell : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the cells of a request's first record. `name` is the cell's, for messages. Cells that
/// nobody asks for are not looked at.
class RequestCells {
public:
    /// `request` has a record and must outlive this object.
    explicit RequestCells(const Package& request) : record_(*request[0]) {}

    /// A number of 1, 2, 4 or 8 bytes that is at most `max`. Throws `BadCell`.
    std::uint64_t number(unsigned tag, const char* name, std::uint64_t max) const;

    /// As `number`, at least 1.
    std::uint64_t positiveNumber(unsigned tag, const char* name, std::uint64_t max) const;

    /// As `number`, nothing when there is no such cell.
    std::optional<std::uint64_t> optionalNumber(unsigned tag, const char* name,
                                                std::uint64_t max) const;

    /// A text of at most `max` bytes. Throws `BadCell`.
    std::string text(unsigned tag, const char* name, std::size_t max) const;

private:
    const CTLVCell* find(unsigned tag) const;
    const CTLVCell& get(unsigned tag, const char* name) const;

    const CTLVRecordV3& record_;
};

}  // namespace talvik::backend
