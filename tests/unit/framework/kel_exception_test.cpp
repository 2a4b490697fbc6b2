#include "framework/kel_exception.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

TEST(KelException, PutsItsNameBeforeTheText)
{
    const CKEL_Exception error("something broke");

    EXPECT_STREQ(error.what(), "CKEL_Exception: something broke");
}

TEST(KelException, KeepsAnEmptyText)
{
    EXPECT_STREQ(CKEL_Exception("").what(), "CKEL_Exception: ");
}

TEST(KelException, IsCaughtAsAStandardException)
{
    std::string text;
    try {
        throw CKEL_Exception("once");
    } catch (const std::exception& error) {
        text = error.what();
    }
    EXPECT_EQ(text, "CKEL_Exception: once");
}

TEST(KelException, CopiesKeepTheMessage)
{
    const CKEL_Exception first("copied");
    const CKEL_Exception second(first);

    EXPECT_STREQ(second.what(), "CKEL_Exception: copied");
}
