#include "alarmconfig/str_spliter.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> tokensOf(std::string text, const char* separators)
{
    std::vector<std::string> tokens;
    CStrSpliter spliter(text.data(), separators);
    while (const char* token = spliter.next()) {
        tokens.emplace_back(token);
    }
    return tokens;
}

TEST(StrSpliter, GivesTokensInOrder)
{
    EXPECT_THAT(tokensOf("a,bc,d", ","), ElementsAre("a", "bc", "d"));
    EXPECT_THAT(tokensOf("whole", ","), ElementsAre("whole"));
    EXPECT_THAT(tokensOf("a,b;c", ",;"), ElementsAre("a", "b", "c"));
}

TEST(StrSpliter, SkipsEmptyTokens)
{
    EXPECT_THAT(tokensOf(",,a,,,b,,", ","), ElementsAre("a", "b"));
    EXPECT_THAT(tokensOf(",,,", ","), IsEmpty());
    EXPECT_THAT(tokensOf("", ","), IsEmpty());
}

TEST(StrSpliter, StaysAtTheEnd)
{
    char text[] = "a";
    CStrSpliter spliter(text, ",");

    EXPECT_STREQ(spliter.next(), "a");
    EXPECT_EQ(spliter.next(), nullptr);
    EXPECT_EQ(spliter.next(), nullptr);
}

TEST(StrSpliter, WorksOnTwoTextsAtOnce)
{
    char outer[] = "a-b,c-d";
    std::vector<std::string> parts;

    CStrSpliter items(outer, ",");
    while (char* item = items.next()) {
        CStrSpliter halves(item, "-");
        while (const char* half = halves.next()) {
            parts.emplace_back(half);
        }
    }

    EXPECT_THAT(parts, ElementsAre("a", "b", "c", "d"));
}

}  // namespace
