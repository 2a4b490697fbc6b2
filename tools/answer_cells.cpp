#include "tools/answer_cells.h"

#include "framework/tlv_cell.h"
#include "tools/failure.h"

namespace talvik::ctl {

namespace {

constexpr unsigned kTypeMask = 0xF;

[[noreturn]] void refuse(unsigned short tag, const char* reason)
{
    throw Failure(Failure::Kind::NoAnswer,
                  "the request was carried out, but cell " + std::to_string(tag) +
                      " of the answer " + reason,
                  "make sure that talvikctl is of the same release as what answers");
}

unsigned typeOf(const CTLVCell& cell)
{
    return cell.usTagWord & kTypeMask;
}

}  // namespace

std::uint64_t AnswerCells::number(unsigned short tag) const
{
    const auto& cell = get(tag);
    const auto type = typeOf(cell);
    if (type < CTLVCell::TLV_UINT || type > CTLVCell::TLV_NUMERIC_LAST) {
        refuse(tag, "is no number");
    }
    return CTLVCell::ValueCast<unsigned long long>()(&cell);
}

std::string AnswerCells::text(unsigned short tag) const
{
    const auto& cell = get(tag);
    if (typeOf(cell) != CTLVCell::TLV_STRING) {
        refuse(tag, "is no text");
    }
    return cell.toString();
}

const CTLVCell& AnswerCells::get(unsigned short tag) const
{
    const auto place = record_.find(tag);
    if (place == record_.pCells->end()) {
        refuse(tag, "is missing");
    }
    return **place;
}

}  // namespace talvik::ctl
