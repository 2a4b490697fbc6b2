#include "host/platform/log_text.h"

#include <gtest/gtest.h>

namespace {

std::string format(const char* text, ...)
{
    va_list args;
    va_start(args, text);
    auto result = talvik::formatText(text, args);
    va_end(args);
    return result;
}

}  // namespace

TEST(LogText, FormatsLikePrintf)
{
    EXPECT_EQ(format("%s=%u", "a", 5U), "a=5");
    EXPECT_EQ(format("no arguments"), "no arguments");
    EXPECT_EQ(format(nullptr), "");
}

TEST(LogText, KeepsTextOfAnyLength)
{
    const std::string text(100000, 'x');

    EXPECT_EQ(format("%s", text.c_str()), text);
}

TEST(LogText, IndentsWhatFollowsALineFeed)
{
    EXPECT_EQ(talvik::oneLine("first\nsecond\n"), "first\n    second");
    EXPECT_EQ(talvik::oneLine("\n\n"), "");
}

TEST(LogText, EscapesOtherControlCharacters)
{
    EXPECT_EQ(talvik::oneLine("a\rb\x1b[31m\x7f"), "a\\x0Db\\x1B[31m\\x7F");
}

TEST(LogText, KeepsUtf8)
{
    EXPECT_EQ(talvik::oneLine("Lüfter"), "Lüfter");
}
