#include "fuzz/properties/decode_property.h"

#include "framework/tlv_package.h"
#include "fuzz/properties/record_model.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace talvik::fuzz {

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr std::uint32_t kHeaderSize = sizeof(TLVMsgHeadV3);
constexpr std::uint32_t kMaxAcceptedCells = 65525;

void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "decode property broken: %s\n", what);
        std::abort();
    }
}

bool sameHeader(const TLVMsgHeadV3& one, const TLVMsgHeadV3& other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

ModelRecord contentOf(const CTLVRecordV3& record)
{
    ModelRecord content{record.ullRecordId, 0, {}};
    for (const CTLVCell* cell : *record.pCells) {
        content.cells.push_back({cell->usTagWord, {cell->pData, cell->pData + cell->sDataLen}});
    }
    return content;
}

void requireContent(const Package& package, const std::vector<ModelRecord>& expected,
                    const char* what)
{
    require(package.oRecords.size() == expected.size(), what);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const ModelRecord content = contentOf(*package[i]);
        require(content.id == expected[i].id && content.cells == expected[i].cells, what);
    }
}

void requireIndexed(const Package& package)
{
    for (const CTLVRecordV3* record : package.oRecords) {
        for (const CTLVCell* cell : *record->pCells) {
            const auto tag = static_cast<unsigned short>(cell->usTagWord >> 4U);
            const auto place = record->find(tag);
            require(place != record->pCells->end() && (*place)->usTagWord >> 4U == tag,
                    "every tag is found");
        }
    }
}

/// What a buffer without the header's refusals must give, or nothing for a failure.
std::optional<std::vector<ModelRecord>> expectedRecords(const std::uint8_t* data, std::size_t size,
                                                        TLVMsgHeadV3& head)
{
    if (size < kHeaderSize) {
        return std::nullopt;
    }
    std::memcpy(&head, data, kHeaderSize);
    if (head.uiMagic != 0x55555555 || head.uiVersion != 3 ||
        std::uint64_t{head.uiDataLen} + kHeaderSize > size) {
        return std::nullopt;
    }
    return readRecords(data + kHeaderSize, head.uiDataLen);
}

std::vector<std::uint8_t> encodeBothWays(Package& package)
{
    unsigned char* bytes = nullptr;
    const u_int size = package.encode(bytes);
    const std::unique_ptr<unsigned char[]> owner(bytes);
    std::vector<std::uint8_t> other(size);
    require(package.encode(other.data(), size) == size, "a buffer of the exact size is enough");
    require(std::memcmp(bytes, other.data(), size) == 0, "both variants write the same");
    require(package.encode(other.data(), size - 1) == Package::FAILED, "one byte less is refused");
    return other;
}

/// Cells that a wrapped walk read twice may need more bytes than a record can announce.
bool fitsTheFormat(const Package& package)
{
    for (const CTLVRecordV3* record : package.oRecords) {
        if (record->length() > kMaxAcceptedCells) {
            return false;
        }
    }
    return true;
}

void checkEncode(Package& package, const TLVMsgHeadV3& head)
{
    std::vector<std::uint8_t> bytes = encodeBothWays(package);
    if (!fitsTheFormat(package)) {
        return;
    }
    Package again;
    require(again.decode(bytes.data(), static_cast<unsigned>(bytes.size())) ==
                bytes.size() - kHeaderSize,
            "what encode writes is decoded");
    TLVMsgHeadV3 written = head;
    written.uiDataLen = static_cast<std::uint32_t>(bytes.size() - kHeaderSize);
    require(sameHeader(again.oHead, written), "header words survive encode and decode");
    std::vector<ModelRecord> content;
    for (const CTLVRecordV3* record : package.oRecords) {
        content.push_back(contentOf(*record));
    }
    requireContent(again, content, "records survive encode and decode");
}

}  // namespace

void checkDecode(const std::uint8_t* data, std::size_t size)
{
    TLVMsgHeadV3 head;
    const auto expected = expectedRecords(data, size, head);
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[size]);
    if (size != 0) {
        std::memcpy(copy.get(), data, size);
    }
    Package package;
    package.oHead.uiWord2 = 0xA5A5A5A5;
    const TLVMsgHeadV3 before = package.oHead;

    const u_int result = package.decode(copy.get(), static_cast<unsigned>(size));

    if (!expected) {
        require(result == Package::FAILED, "what the rules refuse is refused");
        require(package.oRecords.empty(), "a failure leaves no record");
        require(sameHeader(package.oHead, before), "a failure keeps the header");
        return;
    }
    require(result == head.uiDataLen, "what the rules accept is accepted");
    require(sameHeader(package.oHead, head), "a success takes over the header");
    requireContent(package, *expected, "records are read by the rules");
    requireIndexed(package);
    checkEncode(package, head);
}

}  // namespace talvik::fuzz
