#include "platform/number_text.h"

#include <gtest/gtest.h>

TEST(NumberText, ReadsTheNumberThatATextStartsWith)
{
    EXPECT_EQ(KelUtility::StrToUint("0"), 0u);
    EXPECT_EQ(KelUtility::StrToUint("07"), 7u);
    EXPECT_EQ(KelUtility::StrToUint("12x3"), 12u);
    EXPECT_EQ(KelUtility::StrToUint("4294967295"), 4294967295u);
}

TEST(NumberText, ReadsNoNumberAsZero)
{
    for (const auto* text : {"", "x1", " 1", "-1", "+1", "#1"}) {
        EXPECT_EQ(KelUtility::StrToUint(text), 0u) << text;
    }
}

TEST(NumberText, ReadsTheLargestForOneThatIsTooLarge)
{
    EXPECT_EQ(KelUtility::StrToUint("4294967296"), 4294967295u);
    EXPECT_EQ(KelUtility::StrToUint("99999999999999999999999"), 4294967295u);
}

TEST(NumberText, WritesDecimals)
{
    EXPECT_EQ(KelUtility::UintToStr(0), "0");
    EXPECT_EQ(KelUtility::UintToStr(4294967295u), "4294967295");
}
