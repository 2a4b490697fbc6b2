#include "bench/sample_package.h"

#include "reference_package.pb.h"

#include <cstring>
#include <memory>

namespace talvik::bench {

namespace {

constexpr std::size_t kSizes[kCells] = {4, 12, 4, 8, 24, 4, 40, 4, 80, 8, 160, 4};

SampleCell sampleCell(std::size_t index)
{
    const std::size_t size = kSizes[index];
    const auto tag = static_cast<unsigned short>(index + 1);
    if (size <= sizeof(std::uint64_t)) {
        return {tag, CTLVCell::TLV_UINT, std::string(size, static_cast<char>(index + 1))};
    }
    std::string text(size, static_cast<char>('a' + index));
    text.back() = '\0';
    return {tag, CTLVCell::TLV_STRING, std::move(text)};
}

template <typename T>
T number(const SampleCell& cell)
{
    T value;
    std::memcpy(&value, cell.value.data(), sizeof value);
    return value;
}

void fill(protobuf::Cell& out, const SampleCell& cell)
{
    out.set_tag(cell.tag);
    out.set_type(cell.type);
    out.set_value(cell.value);
}

template <typename Cell>
void fillValue(Cell& out, const SampleCell& cell)
{
    out.set_tag(cell.tag);
    if (cell.type == CTLVCell::TLV_STRING) {
        out.set_text(cell.value.data(), cell.value.size() - 1);  // protobuf needs no NUL
    } else if (cell.value.size() == sizeof(std::uint32_t)) {
        out.set_number32(number<std::uint32_t>(cell));
    } else {
        out.set_number64(number<std::uint64_t>(cell));
    }
}

void fill(protobuf::TypedCell& out, const SampleCell& cell)
{
    out.set_type(cell.type);
    fillValue(out, cell);
}

void fill(protobuf::LeanCell& out, const SampleCell& cell)
{
    fillValue(out, cell);
}

}  // namespace

const std::vector<SampleCell>& sampleCells()
{
    static const std::vector<SampleCell> cells = [] {
        std::vector<SampleCell> made;
        for (std::size_t i = 0; i < kCells; ++i) {
            made.push_back(sampleCell(i));
        }
        return made;
    }();
    return cells;
}

void fillSample(Package& package)
{
    for (std::size_t i = 0; i < kRecords; ++i) {
        auto record = std::make_unique<CTLVRecordV3>(i, kCells);
        for (const SampleCell& sample : sampleCells()) {
            auto cell = std::make_unique<CTLVCell>();
            cell->set_i(sample.type, sample.tag, sample.value.data(), sample.value.size());
            record->append(cell.get());
            cell.release();
        }
        package.oRecords.push_back(record.get());
        record.release();
    }
}

std::vector<unsigned char> encodedSample()
{
    Package package;
    fillSample(package);
    unsigned char* bytes = nullptr;
    const u_int size = package.encode(bytes);
    const std::unique_ptr<unsigned char[]> owner(bytes);
    return {bytes, bytes + size};
}

template <typename ProtobufPackage>
std::string encodedProtobufSample()
{
    ProtobufPackage package;
    package.set_word3(0xFFFFFFFF);
    package.set_shorts01(0x0001FFFD);
    package.set_shorts23(0xFFFFFFFF);
    for (std::size_t i = 0; i < kRecords; ++i) {
        auto* record = package.add_records();
        record->set_id(i);
        for (const SampleCell& sample : sampleCells()) {
            fill(*record->add_cells(), sample);
        }
    }
    return package.SerializeAsString();
}

template std::string encodedProtobufSample<protobuf::Package>();
template std::string encodedProtobufSample<protobuf::TypedPackage>();
template std::string encodedProtobufSample<protobuf::LeanPackage>();

}  // namespace talvik::bench
