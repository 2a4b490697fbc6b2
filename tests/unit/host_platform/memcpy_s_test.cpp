#include "platform/memcpy_s.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(MemcpyS, CopiesWhatFits)
{
    char dest[5] = "....";

    EXPECT_EQ(memcpy_s(dest, sizeof dest, "abcd", 5), 0);
    EXPECT_STREQ(dest, "abcd");
}

TEST(MemcpyS, RefusesMoreThanTheDestinationHoldsAndWritesNothing)
{
    char dest[5] = "....";

    EXPECT_NE(memcpy_s(dest, 4, "abcde", 5), 0);
    EXPECT_STREQ(dest, "....");
}

TEST(MemcpyS, RefusesNullPointers)
{
    char byte = 'x';

    EXPECT_NE(memcpy_s(nullptr, 1, &byte, 1), 0);
    EXPECT_NE(memcpy_s(&byte, 1, nullptr, 1), 0);
    EXPECT_EQ(byte, 'x');
}

TEST(MemcpyS, CopiesNothingWhenAskedTo)
{
    char byte = 'x';

    EXPECT_EQ(memcpy_s(&byte, 0, nullptr, 0), 0);
    EXPECT_EQ(byte, 'x');
}
