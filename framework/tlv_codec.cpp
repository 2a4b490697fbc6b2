// package ::= header:28 record*         header = TLVMsgHeadV3, its uiDataLen = bytes of records
// record  ::= ullRecordId:u64 usRecordLen:u16 cell*
// cell    ::= tagWord:u16 sDataLen:u16 value:sDataLen
// Little-endian, no padding. The long version is docs/tlv-format.md.

#include "framework/tlv_codec_log.h"
#include "framework/tlv_package.h"
#include "framework/tlv_record_scan.h"
#include "platform/memcpy_s.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

using talvik::kCodecSource;
using talvik::logCodecError;
using talvik::logCodecText;

constexpr u_int kHeaderSize = sizeof(TLVMsgHeadV3);

/// Sizes travel in 32 bits, and the largest is a failure's value.
constexpr std::uint64_t kMaxDataLen = std::numeric_limits<u_int>::max() - kHeaderSize - 1;

bool verifyMsgHead(const unsigned char* bytes, unsigned size, TLVMsgHeadV3& head)
{
    if (bytes == nullptr || size < kHeaderSize) {
        // Contract: "equal zero" for every size below a header; log filters match on it.
        constexpr int kLine = __LINE__;
        logCodecError(kLine,
                      "%D %M (%t) at File=%s,Line=%d,Function=CTLVPackageV3::verifyMsgHead: "
                      "pBuf is null or uiBufSize equal zero!\n",
                      kCodecSource, kLine);
        return false;
    }
    std::memcpy(&head, bytes, kHeaderSize);
    return head.uiMagic == TLVMsgHeadV3::MAGIC && head.uiVersion == TLVMsgHeadV3::VERSION &&
           head.uiDataLen <= size - kHeaderSize;
}

// Contract: magic and version stay the package's own; hosts reuse packages for answers.
void takeOverWords(TLVMsgHeadV3& own, const TLVMsgHeadV3& received)
{
    const auto magic = own.uiMagic;
    const auto version = own.uiVersion;
    own = received;
    own.uiMagic = magic;
    own.uiVersion = version;
}

/// Makes the record of which the first `cells` cells were found good.
std::unique_ptr<CTLVRecordV3> makeRecord(const unsigned char* bytes, std::size_t cells)
{
    auto record = std::make_unique<CTLVRecordV3>(talvik::loadField<std::uint64_t>(bytes), cells);
    std::uint16_t position = talvik::kRecordHeaderSize;
    for (; cells != 0; --cells) {
        const auto wire = talvik::readCell(bytes, position);
        auto cell = std::make_unique<CTLVCell>();
        cell->setCell(wire.tagWord, reinterpret_cast<const char*>(bytes + wire.valueAt),
                      wire.dataLen);
        record->append(cell.get());
        cell.release();  // only now: an append that throws leaves the cell with its caller
        position = wire.next;
    }
    return record;
}

/// Bytes of all records on the wire.
std::uint64_t recordBytes(const std::vector<CTLVRecordV3*>& records)
{
    std::uint64_t sum = 0;
    for (const CTLVRecordV3* record : records) {
        sum += std::uint64_t{record->length()} + talvik::kRecordHeaderSize;
    }
    return sum;
}

template <typename T>
unsigned char* put(unsigned char* out, T value)
{
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}

unsigned char* putCell(unsigned char* out, const CTLVCell& cell)
{
    out = put(out, cell.usTagWord);
    out = put(out, cell.sDataLen);
    if (cell.sDataLen != 0) {
        std::memcpy(out, cell.pData, cell.sDataLen);
    }
    return out + cell.sDataLen;
}

/// The cells' own lengths decide where the next record begins, not the length field.
unsigned char* putRecord(unsigned char* out, const CTLVRecordV3& record)
{
    out = put(out, record.ullRecordId);
    out = put(out, static_cast<std::uint16_t>(record.length()));
    for (const CTLVCell* cell : *record.pCells) {
        out = putCell(out, *cell);
    }
    return out;
}

/// Appends the records behind a good header. Returns the bytes consumed, or FAILED with the records
/// so far appended.
template <typename MSG_S_HEAD>
u_int appendRecords(CTLVPackageV3<MSG_S_HEAD>& package, const MSG_S_HEAD& head,
                    unsigned char* bytes, unsigned size)
{
    u_int pos = 0;
    while (pos < head.uiDataLen) {
        const u_int remaining = head.uiDataLen - pos;
        if (remaining < talvik::kRecordHeaderSize) {
            logCodecText(__LINE__,
                         ": MIN_RECORD_SIZE(10) > uiRemainLen, "
                         "buf size=%u, parsing pos=%u",
                         size, pos + kHeaderSize);
            return CTLVPackageV3<MSG_S_HEAD>::FAILED;
        }
        CTLVRecordV3* record = nullptr;
        const u_int taken = package.getRecord(bytes + kHeaderSize + pos, remaining, record);
        if (record == nullptr) {
            logCodecText(__LINE__,
                         " : it failed to parse record, "
                         "buf size=%u, parsing pos=%u",
                         size, pos + kHeaderSize);
            return CTLVPackageV3<MSG_S_HEAD>::FAILED;
        }
        std::unique_ptr<CTLVRecordV3> owner(record);
        package.oRecords.push_back(owner.get());
        owner.release();
        pos += taken;
    }
    return pos;
}

}  // namespace

template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::decode(unsigned char* pBuf, unsigned int uiBufSize)
{
    MSG_S_HEAD head;
    if (!verifyMsgHead(pBuf, uiBufSize, head)) {
        logCodecError(__LINE__, "%D %M (%t) invalid MSG header!\n");
        return FAILED;
    }
    u_int consumed = FAILED;
    try {
        consumed = appendRecords(*this, head, pBuf, uiBufSize);
    } catch (...) {
        clear();
        throw;
    }
    if (consumed == FAILED) {
        clear();
        return FAILED;
    }
    takeOverWords(oHead, head);
    return consumed;
}

template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::getRecord(unsigned char* pBuf, unsigned int uiBufSize,
                                           CTLVRecordV3*& pRecord)
{
    pRecord = nullptr;
    const auto cells = talvik::scanRecord(pBuf, uiBufSize);
    if (!cells) {
        return 0;
    }
    pRecord = makeRecord(pBuf, *cells).release();
    return talvik::recordSize(pBuf);
}

template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::encode(unsigned char*& pBuf)
{
    const std::uint64_t dataLen = recordBytes(oRecords);
    if (dataLen > kMaxDataLen) {
        throw std::bad_array_new_length();
    }
    const auto total = static_cast<u_int>(dataLen + kHeaderSize);
    pBuf = new unsigned char[total];
    encode_i(pBuf, static_cast<unsigned>(dataLen));
    return total;
}

template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::encode(unsigned char* pBuf, unsigned int uiBufSize)
{
    if (pBuf == nullptr) {
        logCodecError(__LINE__, "%D %M (%t) buf pointer is null!\n");
        return FAILED;
    }
    const std::uint64_t dataLen = std::min(recordBytes(oRecords), kMaxDataLen + 1);
    const auto total = static_cast<u_int>(dataLen + kHeaderSize);
    if (uiBufSize < total || dataLen > kMaxDataLen) {
        logCodecError(__LINE__,
                      "%D %M (%t) buf size is less than data size! buf size=%u, data size=%u!\n",
                      uiBufSize, total);
        return FAILED;
    }
    encode_i(pBuf, static_cast<unsigned>(dataLen));
    return total;
}

template <typename MSG_S_HEAD>
void CTLVPackageV3<MSG_S_HEAD>::encode_i(unsigned char* pBuf, unsigned int uiDataLen)
{
    oHead.uiDataLen = uiDataLen;
    if (memcpy_s(pBuf, kHeaderSize, &oHead, kHeaderSize) != 0) {
        // Contract: no date, priority and thread, and no failure: hosts count on the records being
        // written regardless.
        logCodecError(__LINE__, "memcpy_s is failed!\n");
    }
    unsigned char* out = pBuf + kHeaderSize;
    for (const CTLVRecordV3* record : oRecords) {
        out = putRecord(out, *record);
    }
}

template <typename MSG_S_HEAD>
void CTLVPackageV3<MSG_S_HEAD>::dump(std::ostringstream& os) const
{
    os << '{' << std::endl;
    oHead.dump(os);
    for (const CTLVRecordV3* record : oRecords) {
        record->dump(os);
    }
    os << '}' << std::endl;
}

template class CTLVPackageV3<TLVMsgHeadV3>;
