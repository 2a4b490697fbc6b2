#include "host/snmp/mib_description.h"
#include "host/startup_error.h"
#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

namespace {

using talvik::Access;
using talvik::MibDescription;
using talvik::test::sourceFile;
using testing::HasSubstr;

const std::string kWritable = R"({
  "module": "SMALL-MIB", "root": "1.3.6.1.4.1.99999", "scalars": [],
  "tables": [{"name": "small", "oid": "1.3.6.1.4.1.99999.1", "index": ["number"], "rowStatus": "status",
    "answerLifetimeMs": 250, "columns": [
    {"tag": 4, "name": "number", "syntax": "INTEGER", "access": "read-only", "cell": "text", "range": [1, 9]},
    {"tag": 3, "name": "status", "syntax": "INTEGER", "access": "read-create", "enumeration": {"active": 1}},
    {"tag": 2, "name": "port", "syntax": "Unsigned32", "access": "read-create", "required": true},
    {"tag": 6, "name": "address", "syntax": "OCTET STRING", "access": "read-create", "size": [1, 255]},
    {"tag": 1, "name": "usable", "syntax": "OCTET STRING", "access": "read-create", "format": "destination",
     "aliasOf": "address"}]}]
})";

MibDescription load(const std::string& text)
{
    const talvik::test::TempDir dir;
    return MibDescription::load(dir.write("SMALL.json", text));
}

TEST(MibWritableTable, IsReadWithAllThatASetNeeds)
{
    const auto mib = load(kWritable);

    const auto& table = mib.tables().front();
    EXPECT_EQ(table.rowStatus, 3);
    EXPECT_EQ(table.answerLifetime.count(), 250);
    EXPECT_EQ(table.columns[table.index.front()].name, "number");
    EXPECT_TRUE(table.column(4)->textCell);
    EXPECT_EQ(table.column(4)->range->low, 1);
    EXPECT_EQ(table.column(4)->range->high, 9);
    EXPECT_TRUE(table.column(2)->required);
    EXPECT_FALSE(table.column(3)->required);
    EXPECT_EQ(table.column(6)->size->high, 255);
    EXPECT_FALSE(table.column(6)->isDestination);
    EXPECT_TRUE(table.column(1)->isDestination);
    EXPECT_EQ(table.column(1)->aliasOf, 6);
    EXPECT_EQ(table.column(6)->aliasOf, 0);
}

TEST(MibWritableTable, OfTheProductIsDescribedAsItIsServed)
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));

    const auto* table = mib.table({1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 4, 1});
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->rowStatus, 3);
    EXPECT_EQ(table->columns.size(), 8u);
    EXPECT_EQ(table->answerLifetime.count(), 1000);
    EXPECT_EQ(table->column(1)->aliasOf, 6);
    EXPECT_EQ(table->column(4)->access, Access::ReadOnly);
}

struct Contradiction {
    const char* name;
    std::string part;
    std::string other;
    std::string refusal;

    friend std::ostream& operator<<(std::ostream& os, const Contradiction& row)
    {
        return os << row.name;
    }
};

class MibContradiction : public testing::TestWithParam<Contradiction> {};

TEST_P(MibContradiction, IsRefusedWithPlaceAndReason)
{
    const auto& row = GetParam();
    auto text = kWritable;
    ASSERT_NE(text.find(row.part), std::string::npos);
    text.replace(text.find(row.part), row.part.size(), row.other);

    try {
        load(text);
        FAIL() << "accepted";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr("SMALL.json, tables[0]" + row.refusal));
    }
}

const Contradiction kContradictions[] = {
    {"RowStatusOfNoColumn", R"("rowStatus": "status")", R"("rowStatus": "state")",
     ".rowStatus: the table has no column \"state\""},
    {"RowStatusThatIsNoText", R"("rowStatus": "status")", R"("rowStatus": 3)", ".rowStatus: exp"},
    {"RowStatusThatIsNoInteger", R"("rowStatus": "status")", R"("rowStatus": "port")",
     ".rowStatus: \"port\" is not a read-create INTEGER"},
    {"RowStatusThatCannotBeWritten", R"("rowStatus": "status")", R"("rowStatus": "number")",
     ".rowStatus: \"number\" is not a read-create INTEGER"},
    {"RowStatusWithTwoIndexes", R"("index": ["number"])", R"("index": ["number", "number"])",
     ".rowStatus: rows can be created only where one number"},
    {"NoRowStatusButWritable", R"("rowStatus": "status",)", "",
     ": column \"usable\" is read-create, but the table names no rowStatus"},
    {"WritableIndex", R"("read-only", "cell")", R"("read-create", "cell")",
     ".index[0]: an index cannot be written"},
    {"LifetimeTooLong", "250", "60001", ".answerLifetimeMs: expected a number from 0 to 60000"},
    {"RangeOfAText", R"("size")", R"("range")", ".columns[3].range: an OCTET STRING cannot"},
    {"SizeOfANumber", R"("range")", R"("size")", ".columns[0].size: only an OCTET STRING"},
    {"RangeBeyondTheSyntax", "[1, 9]", "[1, 2147483648]", ".columns[0].range[1]: expected a num"},
    {"RangeOfThreeNumbers", "[1, 9]", "[1, 2, 9]", ".columns[0].range: expected the least"},
    {"RangeUpsideDown", "[1, 9]", "[9, 1]", ".columns[0].range: the least value is above"},
    {"RangeBesideAnEnumeration", R"("enumeration")", R"("range": [1, 1], "enumeration")",
     ".columns[1].range: an enumeration is its own range"},
    {"SizeBelowZero", "[1, 255]", "[-1, 255]", ".columns[3].size[0]: expected a number"},
    {"CellTextOfAText", R"("size": [1, 255])", R"("cell": "text")",
     ".columns[3].cell: an OCTET STRING cannot"},
    {"CellOfAnotherKind", R"("cell": "text")", R"("cell": "octets")",
     ".columns[0].cell: unknown cell \"octets\"; known are text"},
    {"DestinationOfANumber", R"("required": true)", R"("format": "destination")",
     ".columns[2].format: only an OCTET STRING"},
    {"FormatOfAnotherKind", R"("destination")", R"("url")", ".columns[4].format: unknown format"},
    {"AliasOfItself", R"("aliasOf": "address")", R"("aliasOf": "usable")",
     ".columns[4].aliasOf: a column cannot stand for itself"},
    {"AliasOfNoColumn", R"("aliasOf": "address")", R"("aliasOf": "adress")",
     ".columns[4].aliasOf: the table has no column \"adress\""},
    {"AliasOfAnotherSyntax", R"("aliasOf": "address")", R"("aliasOf": "port")",
     ".columns[4].aliasOf: \"port\" is not read-create or has another syntax"},
    {"AliasOfAnAlias", R"("size": [1, 255])", R"("aliasOf": "usable")",
     ".columns[3].aliasOf: \"usable\" stands for another itself"},
    {"AliasThatCannotBeWritten", R"("read-create", "format")", R"("read-only", "format")",
     ".columns[4].aliasOf: only a read-create column"},
    {"RequiredButNotWritable", R"("read-create", "required")", R"("read-only", "required")",
     ".columns[2].required: only a read-create column can be required"},
    {"RequiredThatIsNoBoolean", R"("required": true)", R"("required": 1)",
     ".columns[2].required: expected true or false"},
    {"ReadWriteColumn", R"("read-create", "required")", R"("read-write", "required")",
     ".columns[2].access: a column that managers write is read-create"},
    {"CounterThatIsWritten", R"("Unsigned32")", R"("Counter32")",
     ".columns[2].access: a counter cannot be written"},
};

INSTANTIATE_TEST_SUITE_P(File, MibContradiction, testing::ValuesIn(kContradictions),
                         [](const auto& row) { return row.param.name; });

}  // namespace
