#include "tools/text_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;

const std::vector<TableLine> kLines = {
    {"SERIAL", "NAME", "NUMBER", "TEXT"},
    {"4294967295", "traps.example.net", "7", "Disk 7 has failed: too many errors"},
    {"1", "a", "18446744073709551615", "x"},
};
const Columns kNameAndText = {1, 3};

TEST(AlignedTable, MayBeAsWideAsItLikesWithoutATerminal)
{
    EXPECT_EQ(alignedTable(kLines, {}, kNameAndText),
              "SERIAL      NAME               NUMBER                TEXT\n"
              "4294967295  traps.example.net  7                     Disk 7 has failed: too many "
              "errors\n"
              "1           a                  18446744073709551615  x\n");
}

TEST(AlignedTable, CutsTheWidestTextsFirst)
{
    EXPECT_EQ(alignedTable(kLines, {75, false}, kNameAndText),
              "SERIAL      NAME               NUMBER                TEXT\n"
              "4294967295  traps.example.net  7                     Disk 7 has failed: to\u2026\n"
              "1           a                  18446744073709551615  x\n");
    EXPECT_EQ(alignedTable(kLines, {54, false}, kNameAndText),
              "SERIAL      NAME       NUMBER                TEXT\n"
              "4294967295  traps.ex\u2026  7                     Disk 7 h\u2026\n"
              "1           a          18446744073709551615  x\n");
}

TEST(AlignedTable, NeverCutsNumbersOrHeadings)
{
    EXPECT_EQ(alignedTable(kLines, {1, false}, kNameAndText),
              "SERIAL      NAME  NUMBER                TEXT\n"
              "4294967295  tra\u2026  7                     Dis\u2026\n"
              "1           a     18446744073709551615  x\n");
    EXPECT_EQ(alignedTable(kLines, {20, false}), alignedTable(kLines));
}

TEST(AlignedTable, AlignsWideCharacters)
{
    EXPECT_EQ(alignedTable({{"A", "B"}, {"\u786C\u76D8", "1"}, {"e\u0301", "2"}}),
              "A     B\n\u786C\u76D8  1\ne\u0301     2\n");
}

TEST(AlignedTable, ColoursTextsAndNotTheBlanksBetween)
{
    const std::vector<TableLine> lines = {
        {"LEVEL", "X"}, {{"bad", Tone::Severe}, "1"}, {{"ok", Tone::Good}, "2"}};

    EXPECT_EQ(alignedTable(lines, {0, true}),
              "LEVEL  X\n\x1B[1;31mbad\x1B[0m    1\n\x1B[32mok\x1B[0m     2\n");
    EXPECT_EQ(alignedTable(lines), "LEVEL  X\nbad    1\nok     2\n");
}

}  // namespace
