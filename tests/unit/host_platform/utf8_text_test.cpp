#include "host/platform/utf8_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using talvik::isPlainUtf8;

TEST(PlainUtf8, TakesEveryLengthOfACharacter)
{
    for (const char* text :
         {"", "plain ~", "\xC2\xA0", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
          "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(isPlainUtf8(text)) << testing::PrintToString(std::string(text));
    }
}

TEST(PlainUtf8, RefusesControlsOverlongFormsSurrogatesAndFragments)
{
    const std::string refused[] = {std::string(1, '\0'),
                                   "\x1F",
                                   "\x7F",
                                   "\xC2\x80",
                                   "\xC2\x9F",
                                   "\x80",
                                   "\xC0\xAF",
                                   "\xC1\xBF",
                                   "\xE0\x9F\xBF",
                                   "\xED\xA0\x80",
                                   "\xF0\x8F\xBF\xBF",
                                   "\xF4\x90\x80\x80",
                                   "\xF8\x88\x80\x80\x80",
                                   "\xC3",
                                   "\xE2\x82",
                                   "\xF0\x9F\x98",
                                   "\303a",
                                   "\342a\x80",
                                   "\xFF"};
    for (const auto& text : refused) {
        EXPECT_FALSE(isPlainUtf8(text)) << testing::PrintToString(text);
    }
}

}  // namespace
