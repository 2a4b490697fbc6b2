#include "tools/snmp_status.h"

#include <gtest/gtest.h>

namespace {

using namespace talvik::ctl;

TEST(SnmpStatusName, IsTheProtocols)
{
    EXPECT_EQ(statusName(kStatusNoError), "noError");
    EXPECT_EQ(statusName(kStatusNoSuchName), "noSuchName");
    EXPECT_EQ(statusName(kStatusGenErr), "genErr");
    EXPECT_EQ(statusName(kStatusNoAccess), "noAccess");
    EXPECT_EQ(statusName(kStatusWrongValue), "wrongValue");
    EXPECT_EQ(statusName(kStatusInconsistentValue), "inconsistentValue");
    EXPECT_EQ(statusName(kStatusCommitFailed), "commitFailed");
    EXPECT_EQ(statusName(kStatusNotWritable), "notWritable");
    EXPECT_EQ(statusName(kStatusInconsistentName), "inconsistentName");
}

TEST(SnmpStatusName, IsANumberWithoutOne)
{
    EXPECT_EQ(statusName(19), "error 19");
    EXPECT_EQ(statusName(-1), "error -1");
}

}  // namespace
