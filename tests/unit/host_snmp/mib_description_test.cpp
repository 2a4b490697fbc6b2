#include "host/snmp/mib_description.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using talvik::MibDescription;
using testing::HasSubstr;

const std::string kSmall = R"({
  "module": "SMALL-MIB", "root": "1.3.6.1.4.1.99999",
  "tables": [{"name": "small", "oid": "1.3.6.1.4.1.99999.1", "index": ["b", "a"], "columns": [
    {"tag": 9, "name": "b", "syntax": "INTEGER", "access": "read-only", "enumeration": {"on": 1, "off": -2}},
    {"tag": 2, "name": "a", "syntax": "OCTET STRING", "access": "not-accessible"}]}],
  "scalars": [{"name": "leaf", "oid": "1.3.6.1.4.1.99999.2", "tag": 0, "syntax": "Counter64",
               "access": "read-write"}]
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
    EXPECT_EQ(leaf->syntax, talvik::Syntax::Counter64);
    EXPECT_EQ(mib.scalar({1, 3}), nullptr);
    EXPECT_EQ(mib.table({1, 3, 6, 1, 4, 1, 99999, 2}), nullptr);
}

TEST_F(MibDescriptionFile, NamesThePlaceAndTheReasonOfARefusal)
{
    EXPECT_THAT(refusal(with("\"scalars\"", "\"leaves\"")),
                HasSubstr("lacks the member \"scalars\""));
    EXPECT_THAT(refusal(with("\"Counter64\"", "\"Counter65\"")),
                HasSubstr("scalars[0].syntax: unknown syntax \"Counter65\""));
    EXPECT_THAT(refusal(with("99999.2\"", "99999.1.4\"")), HasSubstr("\"leaf\" at"));
    EXPECT_THAT(refusal(with("\"on\": 1", "\"on\": -2")), HasSubstr("number -2 stands here twice"));
    EXPECT_THAT(refusal(with("\"on\": 1", "\"on\": 2147483648")), HasSubstr("enumeration.on"));
    EXPECT_THAT(refusal(with("\"tag\": 9", "\"tag\": 2")), HasSubstr("tag 2 stands here twice"));
    EXPECT_THAT(refusal(with("\"tag\": 9", "\"tag\": 9.5")), HasSubstr("tables[0].columns[0].tag"));
    EXPECT_THAT(refusal("{} {}"), HasSubstr("SMALL.json"));
    EXPECT_EQ(refusal(kSmall), "accepted");
}

}  // namespace
