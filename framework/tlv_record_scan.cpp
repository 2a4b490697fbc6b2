// record ::= ullRecordId:u64 usRecordLen:u16 cell*    usRecordLen = bytes of cells
// cell   ::= tagWord:u16 sDataLen:u16 value:sDataLen  tagWord = tag << 4 | type code (0 to 9)
//
// Little-endian, no padding. The long version is docs/tlv-format.md.

#include "framework/tlv_record_scan.h"

#include "framework/tlv_codec_log.h"

namespace talvik {

namespace {

constexpr unsigned kTypeMask = 0xF;
constexpr unsigned kMaxType = 9;

/// A cell's header leaves the 16-bit range only when the cell starts at 65532, 65533 or 65534 (a
/// record that gets that far ends at 65535 at most). Between two such cells positions only grow,
/// and what follows depends on the position alone: the fourth repeats one of the three, and the
/// walk would never end.
constexpr unsigned kMaxWraps = 3;

// Contract: the signature is part of the text that log filters match on, so it is not left to the
// compiler.
constexpr char kSignature[] =
    "u_int CTLVPackageV3<MSG_S_HEAD>::getRecord(unsigned char*, unsigned int, CTLVRecordV3*&) "
    "[with MSG_S_HEAD = TLVMsgHeadV3; u_int = unsigned int]";

void logTooLong(std::uint16_t recordLen, std::uint32_t available)
{
    // Contract: " < " although the text says ">"; log filters match on both.
    logCodecText(__LINE__,
                 ",Function=%s : record length is too long, "
                 "(usRecordLen + MIN_RECORD_SIZE) > uiBufSize ->%u+%u < %u",
                 kSignature, unsigned{recordLen}, kRecordHeaderSize, available);
}

void logCellTooShort(std::uint16_t position)
{
    // Contract: " < " although the text says ">", and the word "uiBufSize" instead of its value.
    logCodecText(__LINE__, ",Function=%s : (MIN_TLV_SIZE > uiBufSize - pos) ->%u < uiBufSize - %u",
                 kSignature, kCellHeaderSize, unsigned{position});
}

void logTypeUnknown(unsigned type)
{
    logCodecText(__LINE__, ",Function=%s : data type unmated, received type is %u", kSignature,
                 type);
}

void logValueTooLong(const WireCell& cell, std::uint16_t recordLen)
{
    logCodecText(__LINE__,
                 ",Function=%s : data length is too long, "
                 "((sDataLen + pos) > usRecordLen + MIN_RECORD_SIZE) ->%u+%u > %u+%u",
                 kSignature, unsigned{cell.dataLen}, unsigned{cell.valueAt}, unsigned{recordLen},
                 kRecordHeaderSize);
}

void logEndless(std::uint16_t recordLen, std::uint16_t position)
{
    logCodecText(__LINE__,
                 ",Function=%s : cells never end, pos wraps for more than %u times, "
                 "(usRecordLen, pos) ->%u, %u",
                 kSignature, kMaxWraps, unsigned{recordLen}, unsigned{position});
}

/// Walks the cells of one record in the record's own positions.
class CellWalk {
public:
    CellWalk(const unsigned char* record, std::uint32_t available, std::uint16_t recordLen)
        : record_(record),
          available_(available),
          recordLen_(recordLen)
    {
    }

    std::optional<std::size_t> run();

private:
    bool step();

    /// Contract: compared in full, while the position has wrapped: a record above 65525 bytes is
    /// never accepted. Back ends in the field keep below it.
    std::uint32_t recordEnd() const { return recordLen_ + kRecordHeaderSize; }

    const unsigned char* record_;
    std::uint32_t available_;
    std::uint16_t recordLen_;
    // Contract: 16 bits wide, additions wrap at 65536; back ends rely on which records that
    // accepts.
    std::uint16_t position_ = kRecordHeaderSize;
    unsigned wraps_ = 0;
};

std::optional<std::size_t> CellWalk::run()
{
    std::size_t cells = 0;
    while (position_ - int{kRecordHeaderSize} < int{recordLen_} && step()) {
        ++cells;
    }
    // Contract: this equality is the whole rule. A walk that stopped at a bad cell is accepted with
    // the cells before it if it stopped exactly at the end; back ends rely on it.
    if (position_ != recordEnd()) {
        return std::nullopt;
    }
    return cells;
}

/// Moves past one cell; false stops the walk, with the position where the refusal leaves it.
bool CellWalk::step()
{
    const std::uint16_t start = position_;
    if (available_ - start < kCellHeaderSize) {
        logCellTooShort(start);
        return false;
    }
    const WireCell cell = readCell(record_, start);
    if ((cell.tagWord & kTypeMask) > kMaxType) {
        logTypeUnknown(cell.tagWord & kTypeMask);
        position_ = cell.lengthAt;
        return false;
    }
    position_ = cell.valueAt;
    if (std::uint32_t{cell.valueAt} + cell.dataLen > static_cast<std::uint16_t>(recordEnd())) {
        logValueTooLong(cell, recordLen_);
        return false;
    }
    if (cell.valueAt < start && ++wraps_ > kMaxWraps) {
        logEndless(recordLen_, start);
        return false;
    }
    position_ = cell.next;
    return true;
}

}  // namespace

std::optional<std::size_t> scanRecord(const unsigned char* record, std::uint32_t available)
{
    if (available < kRecordHeaderSize) {
        logTooLong(0, available);
        return std::nullopt;
    }
    const auto recordLen = loadField<std::uint16_t>(record + sizeof(std::uint64_t));
    if (recordLen + kRecordHeaderSize > available) {
        logTooLong(recordLen, available);
        return std::nullopt;
    }
    return CellWalk(record, available, recordLen).run();
}

}  // namespace talvik
