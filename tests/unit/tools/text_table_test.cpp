#include "tools/text_table.h"

#include "tools/folded_text.h"

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
const Columns kNameAndText = {{1}, {3}};

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

TEST(AlignedTable, FoldsLinesRatherThanCutNumbersOrHeadings)
{
    EXPECT_EQ(alignedTable(kLines, {35, false}, kNameAndText),
              "SERIAL      NAME\n"
              "    NUMBER                TEXT\n"
              "4294967295  traps.example.net\n"
              "    7                     Disk 7 h\u2026\n"
              "1           a\n"
              "    18446744073709551615  x\n");
}

TEST(AlignedTable, CutsNothingBelowItsLeastWidth)
{
    const std::vector<TableLine> lines = {{"A", "B"}, {"1234567890", "1234567890"}};

    EXPECT_EQ(alignedTable(lines, {14, false}, {{0, 6}, {1, 6}}),
              "A       B\n12345\u2026  12345\u2026\n");
    EXPECT_EQ(alignedTable(lines, {13, false}, {{0, 6}, {1, 6}}),
              "A\n B\n1234567890\n 1234567890\n");
}

TEST(AlignedTable, CutsWhatIsWiderThanTheTerminalByItself)
{
    EXPECT_EQ(alignedTable({{"SERIAL", "X"}, {"4294967295", "1"}}, {5, false}),
              "SERI\u2026\nX\n4294\u2026\n1\n");
}

TEST(AlignedTable, AlignsWideCharacters)
{
    EXPECT_EQ(alignedTable({{"A", "B"}, {"\u786C\u76D8", "1"}, {"e\u0301", "2"}}),
              "A     B\n\u786C\u76D8  1\ne\u0301     2\n");
}

TEST(FoldedText, BreaksAtBlanksAndWithinWordsThatAreTooLong)
{
    EXPECT_EQ(foldedText("cannot connect to /run/talvik/backend.sock", {15, false}, 2),
              "cannot connect\n  to\n  /run/talvik/b\n  ackend.sock\n");
    EXPECT_EQ(foldedText("  two words", {0, false}, 2), "  two words\n");
    EXPECT_EQ(foldedText("  two words", {11, false}, 2), "  two words\n");
    EXPECT_EQ(foldedText("", {11, false}, 2), "\n");
}

TEST(FoldedText, GivesColoursNoRoom)
{
    EXPECT_EQ(foldedText(colored("abc def", Tone::Bad), {7, true}, 0), "\x1B[31mabc def\x1B[0m\n");
    EXPECT_EQ(foldedText(colored("abc def", Tone::Bad), {6, true}, 0), "\x1B[31mabc\ndef\x1B[0m\n");
}

TEST(NamedValue, IsFoldedBehindTheName)
{
    EXPECT_EQ(namedValue("to do", "start it again", {20, false}),
              "to do       start it\n          again\n");
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
