#include "host/link/command_result.h"

#include <gtest/gtest.h>

namespace {

using talvik::CommandOutcome;
using talvik::outcomeOf;
using talvik::reasonOf;

TEST(CommandResult, SaysWhatItComesTo)
{
    EXPECT_EQ(outcomeOf(0), CommandOutcome::Done);
    EXPECT_EQ(outcomeOf(0x1000014), CommandOutcome::NoSuchAlarm);
    EXPECT_EQ(outcomeOf(0x1000015), CommandOutcome::BadRequest);
    for (const int result : {0x1000001, 0x1000002, 0x1000016, 0x1000018}) {
        EXPECT_EQ(outcomeOf(result), CommandOutcome::Unavailable) << std::hex << result;
    }
    for (const int result : {-1, 1, 0x1000003, 0x1000010, 0x1000012, 0x1000017}) {
        EXPECT_EQ(outcomeOf(result), CommandOutcome::Failed) << std::hex << result;
    }
}

TEST(CommandResult, IsToldInWordsAndAsANumber)
{
    EXPECT_EQ(reasonOf(0x1000014), "no alarm with that serial number is active (0x1000014)");
    EXPECT_EQ(reasonOf(0x1000001), "the back end cannot be reached (0x1000001)");
    EXPECT_EQ(reasonOf(-1), "the handler failed (0xFFFFFFFF)");
}

}  // namespace
