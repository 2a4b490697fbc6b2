#pragma once

#include "framework/tlv_record.h"

#include <cstdint>
#include <string>

namespace talvik::ctl {

/// Reads the cells of one record of an answer. Throws `Failure` for a cell that is missing or of
/// another kind.
class AnswerCells {
public:
    /// `record` must outlive this object.
    explicit AnswerCells(const CTLVRecordV3& record) : record_(record) {}

    std::uint64_t number(unsigned short tag) const;
    std::string text(unsigned short tag) const;

private:
    const CTLVCell& get(unsigned short tag) const;

    const CTLVRecordV3& record_;
};

}  // namespace talvik::ctl
