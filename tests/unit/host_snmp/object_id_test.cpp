#include "host/snmp/object_id.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using talvik::ObjectId;
using talvik::parseObjectId;

TEST(ObjectIdText, IsReadAndWrittenInDottedDecimal)
{
    const auto id = parseObjectId("1.3.6.1.4.1.99999.4294967295.0");

    ASSERT_TRUE(id.has_value());
    EXPECT_EQ(*id, (ObjectId{1, 3, 6, 1, 4, 1, 99999, 4294967295UL, 0}));
    EXPECT_EQ(talvik::toText(*id), "1.3.6.1.4.1.99999.4294967295.0");
}

TEST(ObjectIdText, IsRefusedWhenItIsNone)
{
    for (const char* text : {"", "1", ".1.3", "1.3.", "1..3", "1.3.x", "1.-3", "1.+3", " 1.3",
                             "1.3 ", "1.4294967296", "1.99999999999999999999999"}) {
        EXPECT_FALSE(parseObjectId(text).has_value()) << '"' << text << '"';
    }
}

TEST(ObjectIdText, HasAtMost128SubIdentifiers)
{
    std::string text = "1";
    for (int i = 1; i < 128; ++i) {
        text += ".1";
    }

    EXPECT_TRUE(parseObjectId(text).has_value());
    EXPECT_FALSE(parseObjectId(text + ".1").has_value());
}

TEST(ObjectIdPrefix, IncludesTheIdItself)
{
    EXPECT_TRUE(talvik::startsWith({1, 3, 6}, {1, 3, 6}));
    EXPECT_TRUE(talvik::startsWith({1, 3, 6}, {1, 3}));
    EXPECT_FALSE(talvik::startsWith({1, 3}, {1, 3, 6}));
    EXPECT_FALSE(talvik::startsWith({1, 4, 6}, {1, 3}));
}

}  // namespace
