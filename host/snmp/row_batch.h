#pragma once

#include "framework/tlv_package.h"
#include "host/snmp/mib_description.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talvik {

/// Rows of a table whose index is one number, by ascending index, in little memory: equal texts of
/// neighbouring rows are kept once.
class RowBatch {
public:
    using ProblemSink = std::function<void(const std::string& problem)>;

    /// The value of one column of a row, valid as long as the batch is not changed.
    struct Value {
        std::int64_t number = 0;  ///< of a number; a Counter64 keeps its 64 bits
        std::string_view octets;  ///< of an OCTET STRING
    };

    /// No rows.
    RowBatch() = default;

    /// The rows of a handler's answer, as far as their indexes lie behind `after` and ascend. What
    /// is left out is told to `problem`: a short text that is the same for the same kind of fault.
    /// Texts are cleaned and cut to `maxText` octets. `table` must outlive this object.
    RowBatch(const MibTable& table, const std::vector<CTLVRecordV3*>& records, std::uint64_t after,
             std::size_t maxText, const ProblemSink& problem);

    /// The indexes of the rows, ascending.
    const std::vector<std::uint32_t>& indexes() const { return indexes_; }

    /// The value of row `row`, a position, in the table's column `column`, a position too. Nothing
    /// where the handler gave none that fits.
    std::optional<Value> value(std::size_t row, std::size_t column) const;

    /// Takes one row out.
    void erase(std::size_t row);

    /// How many bytes of memory the rows take, about.
    std::size_t size() const;

private:
    /// A number, or where the octets begin.
    struct Stored {
        std::int64_t number = 0;
        std::uint32_t size = 0;
        bool present = false;
    };

    void add(const CTLVRecordV3& record, const ProblemSink& problem);
    Stored store(const CTLVRecordV3& record, const MibColumn& column, std::size_t position,
                 const ProblemSink& problem);
    std::int64_t keep(const std::string& octets, std::size_t position);

    const MibTable* table_ = nullptr;
    std::size_t maxText_ = 0;
    std::vector<std::uint32_t> indexes_;
    std::vector<Stored> values_;  ///< row by row, one a column
    std::string octets_;
};

}  // namespace talvik
