#include "tools/package_reader.h"

#include "framework/tlv_record_scan.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace talvik::ctl {

namespace {

constexpr std::size_t kHeaderSize = sizeof(TLVMsgHeadV3);
constexpr unsigned kTypeMask = 0xF;
constexpr unsigned kTypeBits = 4;
constexpr unsigned kMaxType = 9;
constexpr unsigned kMaxWraps = 3;  // more than that, and the walk never ends

/// Magic and version of every package.
constexpr std::array<unsigned char, 8> kBegin = {0x55, 0x55, 0x55, 0x55, 3, 0, 0, 0};

std::string hex(std::uint32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", number);
    return text;
}

std::string bytesText(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

/// Reads the cells of one record as the codec's scan walks them: positions are those of the record
/// and have 16 bits.
class CellReader {
public:
    CellReader(const unsigned char* record, std::size_t available, CapturedRecord& result)
        : record_(record),
          available_(available),
          result_(result)
    {
    }

    void run()
    {
        while (position_ - int{kRecordHeaderSize} < int(result_.length) && step()) {
        }
        if (!result_.fault && position_ != recordEnd()) {
            stop(0, "a record of more than 65525 bytes of cells is never accepted");
        }
    }

private:
    bool step()
    {
        const auto start = position_;
        const auto left = available_ - start;
        if (left < kCellHeaderSize) {
            return stop(start, "a cell takes 4 bytes and its value, only " + bytesText(left) +
                                   (left == 1 ? " is left" : " are left"));
        }
        const auto cell = readCell(record_, start);
        const auto type = cell.tagWord & kTypeMask;
        const auto tag = std::to_string(cell.tagWord >> kTypeBits);
        if (type > kMaxType) {
            position_ = cell.lengthAt;
            return stop(start, "cell with tag " + tag + ": type " + std::to_string(type) +
                                   " is unknown, the largest is 9");
        }
        position_ = cell.valueAt;
        const std::size_t end = std::size_t{cell.valueAt} + cell.dataLen;
        if (end > static_cast<std::uint16_t>(recordEnd()) || end > available_) {
            return stop(cell.lengthAt, "cell with tag " + tag + ": its length of " +
                                           bytesText(cell.dataLen) +
                                           " goes beyond the record's end");
        }
        if (cell.valueAt < start && ++wraps_ > kMaxWraps) {
            return stop(start, "the cells never end: the 16-bit position comes round again");
        }
        const auto* value = record_ + cell.valueAt;
        result_.cells.push_back({result_.offset + start,
                                 unsigned{cell.tagWord} >> kTypeBits,
                                 type,
                                 {value, value + cell.dataLen}});
        position_ = cell.next;
        return true;
    }

    bool stop(std::size_t position, const std::string& reason)
    {
        result_.fault = PackageFault{result_.offset + position, reason};
        return false;
    }

    std::uint32_t recordEnd() const { return result_.length + kRecordHeaderSize; }

    const unsigned char* record_;
    std::size_t available_;
    CapturedRecord& result_;
    std::uint16_t position_ = kRecordHeaderSize;
    unsigned wraps_ = 0;
};

class PackageReader {
public:
    PackageReader(const std::vector<unsigned char>& bytes, PackageVisitor& visitor)
        : bytes_(bytes),
          visitor_(visitor)
    {
    }

    bool run()
    {
        bool good = !bytes_.empty();
        for (std::size_t number = 1; at_ < bytes_.size(); ++number) {
            CapturedPackage package;
            package.number = number;
            package.offset = at_;
            good = read(package) && good;
        }
        return good;
    }

private:
    bool read(CapturedPackage& package)
    {
        package.headBytes = std::min(kHeaderSize, bytes_.size() - at_);
        std::array<unsigned char, kHeaderSize> head{};  // what is not there stays zero
        std::memcpy(head.data(), bytes_.data() + at_, package.headBytes);
        std::memcpy(&package.head, head.data(), kHeaderSize);
        visitor_.begin(package);
        PackageEnd end;
        end.accepted = true;
        if (const auto fault = faultOf(package)) {
            end.faults.push_back(*fault);
            end.accepted = false;
            at_ = nextBegin(at_ + 1);
        } else {
            readRecords(package.head.uiDataLen, end);
        }
        end.size = at_ - package.offset;
        visitor_.end(package, end);
        return end.accepted;
    }

    /// Why there is no telling where the records are.
    std::optional<PackageFault> faultOf(const CapturedPackage& package) const
    {
        if (package.headBytes >= sizeof(std::uint32_t) &&
            package.head.uiMagic != TLVMsgHeadV3::MAGIC) {
            return PackageFault{package.offset, "no package begins here: the magic is " +
                                                    hex(package.head.uiMagic) +
                                                    " instead of 0x55555555"};
        }
        if (package.headBytes >= kBegin.size() && package.head.uiVersion != TLVMsgHeadV3::VERSION) {
            return PackageFault{package.offset + offsetof(TLVMsgHeadV3, uiVersion),
                                "the version is " + std::to_string(package.head.uiVersion) +
                                    " instead of 3"};
        }
        if (package.headBytes < kHeaderSize) {
            return PackageFault{bytes_.size(), "the capture ends within the header, of which " +
                                                   bytesText(package.headBytes) +
                                                   " of 28 are there"};
        }
        return std::nullopt;
    }

    std::size_t nextBegin(std::size_t from) const
    {
        const auto found = std::search(bytes_.begin() + static_cast<std::ptrdiff_t>(from),
                                       bytes_.end(), kBegin.begin(), kBegin.end());
        return static_cast<std::size_t>(found - bytes_.begin());
    }

    void readRecords(std::uint32_t dataLen, PackageEnd& end)
    {
        at_ += kHeaderSize;
        const auto there = bytes_.size() - at_;
        if (dataLen > there) {
            refuse(end, at_ - sizeof dataLen,
                   "the header announces " + bytesText(dataLen) +
                       " of records, but the capture has only " + bytesText(there) + " of them");
        }
        const auto last = at_ + std::min<std::size_t>(dataLen, there);
        for (std::size_t number = 1; at_ < last; ++number) {
            const auto left = last - at_;
            if (left < kRecordHeaderSize) {
                refuse(end, at_,
                       "a record takes 10 bytes and its cells, only " + bytesText(left) +
                           (left == 1 ? " is left" : " are left"));
                at_ = last;
                break;
            }
            readRecord(number, left, end);
        }
    }

    void readRecord(std::size_t number, std::size_t left, PackageEnd& end)
    {
        const auto* start = bytes_.data() + at_;
        CapturedRecord record;
        record.number = number;
        record.offset = at_;
        record.id = loadField<std::uint64_t>(start);
        record.length = loadField<std::uint16_t>(start + sizeof record.id);
        CellReader(start, left, record).run();
        record.accepted = scanRecord(start, static_cast<std::uint32_t>(left)).has_value();
        const auto size = std::size_t{recordSize(start)};
        if (size > left) {
            record.fault = PackageFault{
                at_ + sizeof record.id,
                "the record announces " + bytesText(record.length) + " of cells, only " +
                    bytesText(left - kRecordHeaderSize) + " are left in the package"};
        }
        end.accepted = end.accepted && record.accepted;
        visitor_.record(record);
        at_ += std::min(size, left);
    }

    static void refuse(PackageEnd& end, std::size_t offset, const std::string& reason)
    {
        end.faults.push_back({offset, reason});
        end.accepted = false;
    }

    const std::vector<unsigned char>& bytes_;
    PackageVisitor& visitor_;
    std::size_t at_ = 0;
};

}  // namespace

bool readPackages(const std::vector<unsigned char>& bytes, PackageVisitor& visitor)
{
    return PackageReader(bytes, visitor).run();
}

}  // namespace talvik::ctl
