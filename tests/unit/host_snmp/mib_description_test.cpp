#include "host/snmp/mib_description.h"

#include "host/startup_error.h"
#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using talvik::MibDescription;
using talvik::ObjectId;
using talvik::test::sourceFile;
using testing::HasSubstr;

const std::string kSmall = R"({
  "module": "SMALL-MIB", "root": "1.3.6.1.4.1.99999",
  "tables": [{"name": "small", "oid": "1.3.6.1.4.1.99999.1", "index": ["b", "a"], "columns": [
    {"tag": 9, "name": "b", "syntax": "INTEGER", "access": "read-only", "enumeration": {"on": 1, "off": -2}},
    {"tag": 2, "name": "a", "syntax": "OCTET STRING", "access": "not-accessible"}]}],
  "scalars": [{"name": "leaf", "oid": "1.3.6.1.4.1.99999.2", "tag": 0, "syntax": "INTEGER",
               "access": "read-write", "range": [-1, 7]}]
})";

class MibDescriptionFile : public testing::Test {
protected:
    MibDescription load(const std::string& text)
    {
        return MibDescription::load(dir.write("SMALL.json", text));
    }

    std::string refusal(const std::string& text)
    {
        try {
            load(text);
        } catch (const talvik::StartupError& error) {
            return error.what();
        }
        return "accepted";
    }

    static std::string with(const std::string& part, const std::string& other)
    {
        auto text = kSmall;
        return text.replace(text.find(part), part.size(), other);
    }

    talvik::test::TempDir dir;
};

TEST_F(MibDescriptionFile, GivesTablesWithColumnsByTagAndIndexInItsOwnOrder)
{
    const auto mib = load(kSmall);

    EXPECT_EQ(mib.moduleName(), "SMALL-MIB");
    const auto* table = mib.table({1, 3, 6, 1, 4, 1, 99999, 1});
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->columns.size(), 2u);
    EXPECT_EQ(table->columns[0].name, "a");
    EXPECT_EQ(table->columns[0].access, talvik::Access::NotAccessible);
    EXPECT_EQ(table->columns[1].enumeration.at(-2), "off");
    EXPECT_EQ(table->index, (std::vector<std::size_t>{1, 0}));
    EXPECT_EQ(table->column(9), &table->columns[1]);
    EXPECT_EQ(table->column(3), nullptr);
}

TEST_F(MibDescriptionFile, GivesScalars)
{
    const auto mib = load(kSmall);

    const auto* leaf = mib.scalar({1, 3, 6, 1, 4, 1, 99999, 2});
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->name, "leaf");
    EXPECT_EQ(leaf->cell.tag, 0);
    EXPECT_EQ(leaf->cell.syntax, talvik::Syntax::Integer);
    EXPECT_EQ(leaf->cell.access, talvik::Access::ReadWrite);
    EXPECT_EQ(leaf->cell.range->low, -1);
    EXPECT_EQ(leaf->cell.range->high, 7);
    EXPECT_EQ(mib.scalar({1, 3}), nullptr);
    EXPECT_EQ(mib.table({1, 3, 6, 1, 4, 1, 99999, 2}), nullptr);
}

TEST_F(MibDescriptionFile, NamesThePlaceAndTheReasonOfARefusal)
{
    EXPECT_THAT(refusal(with("\"scalars\"", "\"leaves\"")),
                HasSubstr("lacks the member \"scalars\""));
    EXPECT_THAT(refusal(with("\"INTEGER\",\n", "\"Counter65\",\n")),
                HasSubstr("scalars[0].syntax: unknown syntax \"Counter65\""));
    EXPECT_THAT(refusal(with("99999.2\"", "99999.1.4\"")), HasSubstr("\"leaf\" at"));
    EXPECT_THAT(refusal(with("\"on\": 1", "\"on\": -2")), HasSubstr("number -2 stands here twice"));
    EXPECT_THAT(refusal(with("\"on\": 1", "\"on\": 2147483648")), HasSubstr("enumeration.on"));
    EXPECT_THAT(refusal(with("\"tag\": 9", "\"tag\": 2")), HasSubstr("tag 2 stands here twice"));
    EXPECT_THAT(refusal(with("\"tag\": 9", "\"tag\": 9.5")), HasSubstr("tables[0].columns[0].tag"));
    EXPECT_THAT(refusal("{} {}"), HasSubstr("SMALL.json"));
    EXPECT_EQ(refusal(kSmall), "accepted");
}

TEST_F(MibDescriptionFile, GivesAScalarsEnumerationAndSize)
{
    const ObjectId id = {1, 3, 6, 1, 4, 1, 99999, 2};
    const std::string range = "\"range\": [-1, 7]";

    const auto numbered = load(with(range, "\"enumeration\": {\"go\": 1}"));
    EXPECT_EQ(numbered.scalar(id)->cell.enumeration.at(1), "go");

    auto text = with("\"INTEGER\",\n", "\"OCTET STRING\",\n");
    text.replace(text.find(range), range.size(), "\"size\": [1, 9]");
    EXPECT_EQ(load(text).scalar(id)->cell.size->high, 9);
}

TEST_F(MibDescriptionFile, RefusesWhatAScalarCannotBe)
{
    EXPECT_THAT(refusal(with("read-write", "read-create")),
                HasSubstr("scalars[0].access: a scalar is read-only or read-write"));
    EXPECT_THAT(refusal(with("read-write", "not-accessible")),
                HasSubstr("scalars[0].access: a scalar is read-only or read-write"));
    EXPECT_THAT(refusal(with("\"INTEGER\",\n", "\"Counter32\",\n")), HasSubstr("scalars[0]"));
    EXPECT_THAT(refusal(with("\"range\": [-1, 7]", "\"size\": [1, 7]")),
                HasSubstr("scalars[0].size: only an OCTET STRING can have this"));
    EXPECT_THAT(refusal(with("[-1, 7]", "[7, -1]")),
                HasSubstr("scalars[0].range: the least value is above the greatest"));
    EXPECT_THAT(refusal(with("\"tag\": 0", "\"tag\": 4096")), HasSubstr("scalars[0].tag"));
    EXPECT_THAT(refusal(with("\"tag\": 0", "\"cell\": \"text\", \"tag\": 0")),
                HasSubstr("scalars[0]: unknown member \"cell\""));
}

TEST_F(MibDescriptionFile, RefusesAWritableCounter)
{
    const std::string range = ", \"range\": [-1, 7]";
    auto text = with("\"INTEGER\",\n", "\"Counter64\",\n");
    text.replace(text.find(range), range.size(), "");

    EXPECT_THAT(refusal(text), HasSubstr("scalars[0].access: a counter cannot be written"));
}

TEST_F(MibDescriptionFile, TellsAColumnOfDateAndTimeFromOneOfText)
{
    const std::string text = "\"OCTET STRING\", ";
    const auto mib = load(with(text, text + "\"format\": \"dateAndTime\", "));

    EXPECT_TRUE(mib.tables().front().column(2)->isDateAndTime);
    EXPECT_FALSE(mib.tables().front().column(2)->isDestination);
    EXPECT_FALSE(load(kSmall).tables().front().column(2)->isDateAndTime);
    EXPECT_THAT(refusal(with(text, text + "\"format\": \"time\", ")),
                HasSubstr("unknown format \"time\"; known are destination, dateAndTime"));
}

TEST(DeliveredMibAlarms, AreDescribedAsTheyAreServed)
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));

    const auto* table = mib.table({1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 1, 1});
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->columns.size(), 12u);
    EXPECT_EQ(table->columns[table->index.front()].tag, 9);
    EXPECT_EQ(table->answerLifetime.count(), 5000);
    EXPECT_TRUE(table->column(8)->isDateAndTime);
    const auto* clear = mib.scalar({1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 1, 2});
    ASSERT_NE(clear, nullptr);
    EXPECT_EQ(clear->cell.tag, 0);
    EXPECT_EQ(clear->cell.syntax, talvik::Syntax::Unsigned32);
    EXPECT_EQ(clear->cell.access, talvik::Access::ReadWrite);
}

}  // namespace
