#include "tools/package_reader.h"

#include "framework/tlv_package.h"
#include "tests/support/built_tree.h"
#include "tests/support/wire_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using talvik::test::WireBytes;
using testing::HasSubstr;
using Bytes = std::vector<unsigned char>;

/// Keeps what it is told.
class Kept : public PackageVisitor {
public:
    struct Package {
        CapturedPackage head;
        std::vector<CapturedRecord> records;
        PackageEnd end;
    };

    void begin(const CapturedPackage& package) override { packages.push_back({package, {}, {}}); }
    void record(const CapturedRecord& record) override
    {
        packages.back().records.push_back(record);
    }
    void end(const CapturedPackage& /*package*/, const PackageEnd& end) override
    {
        packages.back().end = end;
    }

    /// All faults in the order of the packages, as "OFFSET: REASON".
    std::vector<std::string> faults() const
    {
        std::vector<std::string> all;
        for (const auto& package : packages) {
            for (const auto& record : package.records) {
                if (record.fault) {
                    all.push_back(std::to_string(record.fault->offset) + ": " +
                                  record.fault->reason);
                }
            }
            for (const auto& fault : package.end.faults) {
                all.push_back(std::to_string(fault.offset) + ": " + fault.reason);
            }
        }
        return all;
    }

    std::vector<Package> packages;
};

struct Case {
    const char* name;
    WireBytes wire;
    std::vector<std::string> faults;
    bool good = false;

    friend std::ostream& operator<<(std::ostream& os, const Case& row) { return os << row.name; }
};

WireBytes twoCells()
{
    return WireBytes().cell(3, 5, "abcd").cell(2, 6, std::string("ok\0", 3));
}

const Case kCases[] = {
    {"Nothing", WireBytes(), {}},
    {"Whole", WireBytes::package(WireBytes::record(7, twoCells())), {}, true},
    {"TwoPackages",
     WireBytes::header(0).append(WireBytes::package(WireBytes::record(1, {}))),
     {},
     true},
    {"HeaderCut",
     WireBytes::header(0).truncateTo(27),
     {"27: the capture ends within the header, of which 27 bytes of 28 are there"}},
    {"Magic",
     WireBytes::header(0x55555556, 3, 0),
     {"0: no package begins here: the magic is 0x55555556 instead of 0x55555555"}},
    {"Version", WireBytes::header(0x55555555, 4, 0), {"4: the version is 4 instead of 3"}},
    {"GoesOnBehindRubbish",
     WireBytes().text("rubbish").append(WireBytes::header(0)),
     {"0: no package begins here: the magic is 0x62627572 instead of 0x55555555"}},
    {"RecordsCut",
     WireBytes::header(15).append(WireBytes::record(1, {})),
     {"24: the header announces 15 bytes of records, but the capture has only 10 bytes of them"}},
    {"LeftOver",
     WireBytes::header(11).append(WireBytes::record(1, {})).u8(0),
     {"38: a record takes 10 bytes and its cells, only 1 byte is left"}},
    {"RecordTooLong",
     WireBytes::header(10).u64(1).u16(1),
     {"36: the record announces 1 byte of cells, only 0 bytes are left in the package"}},
    {"TypeTen",
     WireBytes::package(WireBytes::record(1, WireBytes().cell(10, 5, "x").fill(3))),
     {"38: cell with tag 5: type 10 is unknown, the largest is 9"}},
    {"ValueTooLong",
     WireBytes::package(
         WireBytes::record(1, twoCells().append(WireBytes().cellHead(1, 9, 3).fill(2)))),
     {"55: cell with tag 9: its length of 3 bytes goes beyond the record's end"}},
    {"GoesOnBehindARefusedRecord",
     WireBytes::package(WireBytes::record(1, WireBytes().cellHead(1, 9, 3).fill(2))
                            .append(WireBytes::record(2, twoCells()))),
     {"40: cell with tag 9: its length of 3 bytes goes beyond the record's end"}},
    {"StopAtTheVeryEndIsAccepted",
     WireBytes::package(WireBytes::record(1, WireBytes().cell(1, 9, "x").u16(0x00A))
                            .append(WireBytes::record(2, {}))),
     {"43: cell with tag 0: type 10 is unknown, the largest is 9"},
     true},
};

class ReadPackages : public testing::TestWithParam<Case> {};

TEST_P(ReadPackages, TellsWhatIsWrongAndWhere)
{
    Kept kept;

    EXPECT_EQ(readPackages(GetParam().wire.bytes(), kept), GetParam().good);

    EXPECT_EQ(kept.faults(), GetParam().faults);
}

INSTANTIATE_TEST_SUITE_P(Wire, ReadPackages, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

TEST(ReadPackages, GivesHeaderRecordsAndCells)
{
    Kept kept;
    const auto wire =
        WireBytes::header(0).append(WireBytes::package(WireBytes::record(7, twoCells())));

    ASSERT_TRUE(readPackages(wire.bytes(), kept));

    ASSERT_EQ(kept.packages.size(), 2u);
    const auto& package = kept.packages[1];
    EXPECT_EQ(package.head.number, 2u);
    EXPECT_EQ(package.head.offset, 28u);
    EXPECT_EQ(package.head.head.uiDataLen, 25u);
    EXPECT_EQ(package.end.size, 53u);
    ASSERT_EQ(package.records.size(), 1u);
    const auto& record = package.records[0];
    EXPECT_EQ(record.offset, 56u);
    EXPECT_EQ(record.id, 7u);
    EXPECT_EQ(record.length, 15u);
    ASSERT_EQ(record.cells.size(), 2u);
    EXPECT_EQ(record.cells[1].offset, 74u);
    EXPECT_EQ(record.cells[1].tag, 6u);
    EXPECT_EQ(record.cells[1].type, 2u);
    EXPECT_EQ(record.cells[1].value, (Bytes{'o', 'k', 0}));
}

TEST(ReadPackages, ReadsWhatIsThereOfACutRecord)
{
    Kept kept;
    const auto wire = WireBytes::package(WireBytes::record(7, twoCells())).truncateTo(50);

    EXPECT_FALSE(readPackages(wire.bytes(), kept));

    ASSERT_EQ(kept.packages[0].records.size(), 1u);
    EXPECT_EQ(kept.packages[0].records[0].cells.size(), 1u);
    EXPECT_THAT(kept.faults()[0], HasSubstr("announces 15 bytes of cells, only 12 bytes are left"));
    EXPECT_THAT(kept.faults()[1], HasSubstr("24: the header announces 25 bytes of records"));
}

// What the codec makes of the same bytes.

Bytes contentOf(const CTLVPackageV3<TLVMsgHeadV3>& package)
{
    WireBytes content;
    for (const auto* record : package.oRecords) {
        content.u64(record->ullRecordId).u32(static_cast<std::uint32_t>(record->pCells->size()));
        for (const auto* cell : *record->pCells) {
            content.u16(cell->usTagWord).u16(cell->sDataLen);
            content.text({reinterpret_cast<const char*>(cell->pData), cell->sDataLen});
        }
    }
    return content.bytes();
}

Bytes contentOf(const Kept::Package& package)
{
    WireBytes content;
    for (const auto& record : package.records) {
        content.u64(record.id).u32(static_cast<std::uint32_t>(record.cells.size()));
        for (const auto& cell : record.cells) {
            content.u16(static_cast<std::uint16_t>(cell.tag << 4U | cell.type))
                .u16(static_cast<std::uint16_t>(cell.value.size()))
                .text({reinterpret_cast<const char*>(cell.value.data()), cell.value.size()});
        }
    }
    return content.bytes();
}

void expectSameAsCodec(const Bytes& bytes)
{
    CTLVPackageV3<TLVMsgHeadV3> decoded;
    auto copy = bytes;
    const bool accepted = decoded.decode(copy.data(), static_cast<unsigned>(copy.size())) !=
                          CTLVPackageV3<TLVMsgHeadV3>::FAILED;
    Kept kept;
    readPackages(bytes, kept);
    ASSERT_EQ(!kept.packages.empty() && kept.packages[0].end.accepted, accepted)
        << testing::PrintToString(kept.faults());
    if (accepted) {
        EXPECT_EQ(contentOf(kept.packages[0]), contentOf(decoded));
    } else {
        EXPECT_FALSE(kept.packages.empty() ? !bytes.empty() : kept.faults().empty());
    }
}

TEST(ReadPackagesProperty, AgreesWithTheCodecOnRandomAndOnDamagedPackages)
{
    std::mt19937 random(20261121);
    const auto upTo = [&random](unsigned most) {
        return std::uniform_int_distribution<unsigned>(0, most)(random);
    };
    for (int round = 0; round < 2000; ++round) {
        WireBytes records;
        for (unsigned left = upTo(4); left > 0; --left) {
            WireBytes cells;
            for (unsigned more = upTo(5); more > 0; --more) {
                cells.cell(upTo(10), upTo(4095), std::string(upTo(12), static_cast<char>(round)));
            }
            records.append(WireBytes::record(random(), cells));
        }
        auto bytes = WireBytes::package(records).bytes();
        expectSameAsCodec(bytes);
        for (unsigned damages = upTo(3); damages > 0; --damages) {
            bytes[upTo(static_cast<unsigned>(bytes.size() - 1))] =
                static_cast<unsigned char>(upTo(255));
        }
        bytes.resize(bytes.size() - std::size_t{upTo(1)} * upTo(20) % bytes.size());
        expectSameAsCodec(bytes);
        if (HasFailure()) {
            FAIL() << "round " << round;
        }
    }
}

TEST(ReadPackagesProperty, AgreesWithTheCodecOnTheFuzzCorpus)
{
    std::size_t files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(talvik::test::sourceFile("fuzz/corpus/decode"))) {
        std::ifstream in(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(in), {}};
        SCOPED_TRACE(entry.path());
        expectSameAsCodec(bytes);
        ++files;
    }
    EXPECT_GT(files, 20u);
}

}  // namespace
