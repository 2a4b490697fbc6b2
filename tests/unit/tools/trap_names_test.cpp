#include "tools/trap_names.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace talvik::ctl;

TEST(TrapVersionName, StandsForItsCode)
{
    const std::vector<std::pair<std::uint32_t, std::string>> names = {
        {1, "v1"}, {2, "v2c"}, {3, "v3"}};
    for (const auto& [code, name] : names) {
        EXPECT_EQ(trapVersionName(code), name);
        EXPECT_EQ(trapVersionCode(name), code);
    }
}

TEST(TrapVersionName, IsTheNumberOfAnUnknownCode)
{
    EXPECT_EQ(trapVersionName(0), "0");
    EXPECT_EQ(trapVersionName(4), "4");
    for (const auto* name : {"", "V1", "v2", "v4", "1", "v1 "}) {
        EXPECT_EQ(trapVersionCode(name), std::nullopt) << name;
    }
}

TEST(TrapTypeName, StandsForItsCode)
{
    const std::vector<std::pair<std::uint32_t, std::string>> names = {
        {1, "alarm"}, {2, "no-alarm"}, {3, "alarm-legacy"}, {7, "alarm-own-oid"}};
    for (const auto& [code, name] : names) {
        EXPECT_EQ(trapTypeName(code), name);
        EXPECT_EQ(trapTypeCode(name), code);
        EXPECT_EQ(trapTypeCode(std::to_string(code)), code);
    }
}

TEST(TrapTypeName, IsTheNumberOfAnUnknownCode)
{
    EXPECT_EQ(trapTypeName(5), "5");
    EXPECT_EQ(trapTypeCode("5"), 5u);  // the agent judges it
    for (const auto* name : {"", "Alarm", "none", "0", "-1", "01"}) {
        EXPECT_EQ(trapTypeCode(name), std::nullopt) << name;
    }
}

TEST(PlainNumber, IsDecimalFromOneToTheLargestIndex)
{
    EXPECT_EQ(plainNumber("1"), 1u);
    EXPECT_EQ(plainNumber("162"), 162u);
    EXPECT_EQ(plainNumber("2147483647"), 2147483647u);
    for (const auto* text : {"", "0", "2147483648", "4294967297", "99999999999999999999", "-1",
                             "+1", " 1", "1 ", "010", "0x10", "1.0", "1e3", "one"}) {
        EXPECT_EQ(plainNumber(text), std::nullopt) << text;
    }
}

}  // namespace
