#include "host/snmp/row_batch.h"

#include "tests/unit/host_snmp/batch_handler_kit.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::RowBatch;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Positions of columns.
constexpr std::size_t kText = 0;
constexpr std::size_t kSerial = 1;
constexpr std::size_t kWideColumn = 2;
constexpr std::size_t kSecret = 3;
constexpr std::size_t kNote = 4;

class RowBatchOf : public testing::Test {
public:
    RowBatch batch(std::uint64_t after = 0)
    {
        return RowBatch(table, package.oRecords, after, 16384,
                        [this](const std::string& problem) { problems.push_back(problem); });
    }

    RowBatchOf& add(std::uint32_t index)
    {
        itemRow(index).into(package);
        return *this;
    }

    /// A row with `index` and this text.
    RowBatchOf& add(std::uint32_t index, const std::string& text)
    {
        row(index).text(1, text).text(7, "").into(package);
        return *this;
    }

    static RowBuilder row(std::uint32_t index)
    {
        RowBuilder made;
        made.add(cell(CTLVCell::TLV_UINT, 3, bytesOf(index)));
        made.add(cell(CTLVCell::TLV_UINT, 4, bytesOf(std::uint64_t{1})));
        return made;
    }

    talvik::MibTable table = batchedTable();
    BatchPackage package;
    std::vector<std::string> problems;
};

std::string octetsAt(const RowBatch& batch, std::size_t row, std::size_t column)
{
    const auto value = batch.value(row, column);
    return value ? std::string(value->octets) : "no value";
}

TEST_F(RowBatchOf, NothingIsEmpty)
{
    EXPECT_THAT(RowBatch().indexes(), IsEmpty());
    EXPECT_THAT(batch().indexes(), IsEmpty());
    EXPECT_THAT(problems, IsEmpty());
}

TEST_F(RowBatchOf, RowsHasTheValueOfEachColumn)
{
    add(2).add(4294967295);

    const auto rows = batch(1);

    EXPECT_THAT(rows.indexes(), ElementsAre(2U, 4294967295U));
    EXPECT_EQ(octetsAt(rows, 0, kText), "item 2");
    EXPECT_EQ(octetsAt(rows, 1, kText), "item 4294967295");
    EXPECT_EQ(rows.value(1, kSerial)->number, 4294967295);
    EXPECT_EQ(static_cast<std::uint64_t>(rows.value(0, kWideColumn)->number), kWide + 2);
    EXPECT_FALSE(rows.value(0, kSecret));
    EXPECT_EQ(octetsAt(rows, 0, kNote), "note");
}

TEST_F(RowBatchOf, ARowWithoutACellHasNoValueThereAndSaysSo)
{
    add(2).add(3).add(4);

    const auto rows = batch();

    EXPECT_EQ(octetsAt(rows, 1, kNote), "no value");
    EXPECT_EQ(octetsAt(rows, 2, kNote), "note") << "of the row itself, not of the former";
    EXPECT_THAT(problems, ElementsAre(HasSubstr("itemNote: row without its cell (tag 7)")));
}

TEST_F(RowBatchOf, ACellThatDoesNotFitIsNoValueAndSaysSo)
{
    row(2).number(1, 5).text(7, "note").into(package);

    const auto rows = batch();

    EXPECT_EQ(octetsAt(rows, 0, kText), "no value");
    EXPECT_EQ(octetsAt(rows, 0, kNote), "note");
    EXPECT_THAT(problems, ElementsAre(HasSubstr("itemText")));
}

TEST_F(RowBatchOf, RowsThatDoNotAscendAreLeftOut)
{
    add(3).add(5).add(4).add(5).add(6);

    EXPECT_THAT(batch(3).indexes(), ElementsAre(5U, 6U)) << "those behind 3";
    EXPECT_THAT(problems, testing::Contains(HasSubstr("does not ascend")));
}

TEST_F(RowBatchOf, ARowWithIndexZeroIsLeftOut)
{
    add(0).add(1);

    EXPECT_THAT(batch().indexes(), ElementsAre(1U));
}

TEST_F(RowBatchOf, RowsWithoutAnIndexThatFitsAreLeftOut)
{
    RowBuilder().text(1, "none").into(package);
    RowBuilder().add(cell(CTLVCell::TLV_UINT, 3, bytesOf(std::uint64_t{1} << 32U))).into(package);
    RowBuilder().text(3, "seven").into(package);
    RowBuilder().number(3, -1).into(package);
    add(2);

    EXPECT_THAT(batch().indexes(), ElementsAre(2U));
    EXPECT_THAT(problems,
                testing::Contains(HasSubstr("no value for its index itemSerial")).Times(4));
}

TEST_F(RowBatchOf, ANumberThatCannotStandInANameIsNoIndex)
{
    RowBuilder().number(3, -1).into(package);
    add(2);
    table.columns[kSerial].syntax = talvik::Syntax::Integer;
    EXPECT_THAT(batch().indexes(), ElementsAre(2U));

    package.clear();
    constexpr auto tooGreat = (std::uint64_t{1} << 32U) + 5;
    RowBuilder().add(cell(CTLVCell::TLV_UINT, 3, bytesOf(tooGreat))).into(package);
    table.columns[kSerial].syntax = talvik::Syntax::Counter64;
    EXPECT_THAT(batch().indexes(), IsEmpty());
}

TEST_F(RowBatchOf, EqualTextsOfNeighboursAreKeptOnceAndStayRight)
{
    const std::string text(3000, 'x');
    for (std::uint32_t index = 1; index <= 100; ++index) {
        add(index, text);
    }
    add(101, "other").add(102, text);

    auto rows = batch();

    EXPECT_LT(rows.size(), 10 * text.size());
    rows.erase(0);
    EXPECT_EQ(octetsAt(rows, 0, kText), text);
    EXPECT_EQ(octetsAt(rows, 98, kText), text);
    EXPECT_EQ(octetsAt(rows, 99, kText), "other");
    EXPECT_EQ(octetsAt(rows, 100, kText), text);
}

TEST_F(RowBatchOf, ErasingTakesOutOneRowWithAllItsValues)
{
    add(1).add(2).add(4).add(5);
    auto rows = batch();

    rows.erase(1);
    EXPECT_THAT(rows.indexes(), ElementsAre(1U, 4U, 5U));
    EXPECT_EQ(octetsAt(rows, 1, kText), "item 4");
    EXPECT_EQ(rows.value(2, kSerial)->number, 5);

    rows.erase(2);
    rows.erase(0);
    rows.erase(0);
    EXPECT_THAT(rows.indexes(), IsEmpty());
}

TEST_F(RowBatchOf, TextIsShownAsCleanText)
{
    add(1, "a\nb\xFF");

    EXPECT_EQ(octetsAt(batch(), 0, kText), "a b\xEF\xBF\xBD");
}

TEST_F(RowBatchOf, TextIsCutToWhatADatagramCarries)
{
    add(1, std::string(16384, 'x')).add(2, std::string(16385, 'x'));

    const auto rows = batch();

    EXPECT_EQ(octetsAt(rows, 0, kText), std::string(16384, 'x'));
    EXPECT_EQ(octetsAt(rows, 1, kText), std::string(16381, 'x') + "…");
}

TEST_F(RowBatchOf, OctetsThatAreNoTextStayAsTheyAre)
{
    const std::string octets("\x07\xE9\0\x01\xFF", 5);
    row(1).add(cell(CTLVCell::TLV_OCTETS, 1, octets)).text(7, "").into(package);

    EXPECT_EQ(octetsAt(batch(), 0, kText), octets);
}

TEST_F(RowBatchOf, AnIndexThatNobodyMayReadIsNoValue)
{
    table.columns[kSerial].access = talvik::Access::NotAccessible;
    add(2);

    const auto rows = batch();

    EXPECT_THAT(rows.indexes(), ElementsAre(2U));
    EXPECT_FALSE(rows.value(0, kSerial));
    EXPECT_THAT(problems, IsEmpty());
}

TEST_F(RowBatchOf, TheSizeCountsAllThatIsKept)
{
    const auto empty = batch().size();
    add(1, std::string(5000, 'x'));

    EXPECT_GE(batch().size(), empty + 5000);
    EXPECT_LT(batch().size(), empty + 12000);
}

}  // namespace
