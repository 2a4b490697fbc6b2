#include "tools/output_options.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace talvik::ctl;

Surroundings terminal()
{
    Surroundings surroundings;
    surroundings.terminal = true;
    surroundings.columns = 120;
    surroundings.term = "xterm";
    return surroundings;
}

Surroundings with(std::optional<std::string> Surroundings::*variable, const char* value)
{
    auto surroundings = terminal();
    surroundings.*variable = value;
    return surroundings;
}

Surroundings pipeWithColumns()
{
    Surroundings surroundings;
    surroundings.columnsVariable = "40";
    surroundings.term = "xterm";
    return surroundings;
}

Surroundings terminalWithoutSize()
{
    auto surroundings = terminal();
    surroundings.columns = 0;
    return surroundings;
}

OutputOptions wide()
{
    OutputOptions options;
    options.wide = true;
    return options;
}

OutputOptions inColor(const char* when)
{
    OutputOptions options;
    options.color = when;
    return options;
}

struct Case {
    const char* name;
    OutputOptions options;
    Surroundings surroundings;
    std::size_t columns;
    bool colors;

    friend std::ostream& operator<<(std::ostream& os, const Case& row) { return os << row.name; }
};

const Case kCases[] = {
    {"Pipe", {}, {}, 0, false},
    {"PipeWithColumns", {}, pipeWithColumns(), 0, false},
    {"Terminal", {}, terminal(), 120, true},
    {"TerminalWithoutSize", {}, terminalWithoutSize(), 80, true},
    {"Columns", {}, with(&Surroundings::columnsVariable, "40"), 40, true},
    {"ColumnsThatAreNone", {}, with(&Surroundings::columnsVariable, "4x"), 120, true},
    {"NoColumns", {}, with(&Surroundings::columnsVariable, "0"), 120, true},
    {"Wide", wide(), terminal(), 0, true},
    {"NoColor", {}, with(&Surroundings::noColor, "1"), 120, false},
    {"EmptyNoColor", {}, with(&Surroundings::noColor, ""), 120, true},
    {"NoColorAndAlways", inColor("always"), with(&Surroundings::noColor, "1"), 120, true},
    {"PipeAndAlways", inColor("always"), {}, 0, true},
    {"Never", inColor("never"), terminal(), 120, false},
    {"DumbTerminal", {}, with(&Surroundings::term, "dumb"), 120, false},
};

class LooksOfTables : public testing::TestWithParam<Case> {};

TEST_P(LooksOfTables, FollowOptionsTerminalAndEnvironment)
{
    const auto style = tableStyle(GetParam().options, GetParam().surroundings);

    EXPECT_EQ(style.columns, GetParam().columns);
    EXPECT_EQ(style.colors, GetParam().colors);
}

INSTANTIATE_TEST_SUITE_P(Cases, LooksOfTables, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

TEST(Redrawing, NeedsATerminalThatCan)
{
    EXPECT_TRUE(canRedraw(terminal()));
    EXPECT_FALSE(canRedraw(Surroundings()));
    EXPECT_FALSE(canRedraw(with(&Surroundings::term, "dumb")));
}

}  // namespace
