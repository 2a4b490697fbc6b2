#include "tools/trap_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;

TrapDestination destination(std::uint32_t index, const std::string& address)
{
    TrapDestination row;
    row.index = index;
    row.address = address;
    row.port = 162;
    row.version = 2;
    row.type = 1;
    row.user = "--";
    row.usable = address;
    return row;
}

std::string allBytes()
{
    std::string bytes;
    for (int byte = 0; byte <= 0xFF; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

Json::Value parsed(const std::string& text)
{
    Json::CharReaderBuilder strict;
    Json::CharReaderBuilder::strictMode(&strict.settings_);
    const std::unique_ptr<Json::CharReader> reader(strict.newCharReader());
    Json::Value value;
    std::string errors;
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors))
        << errors << text;
    return value;
}

TEST(TrapTableText, SaysThatThereIsNothing)
{
    EXPECT_EQ(trapTableText({}), "no trap destinations\n");
}

TEST(TrapTableText, AlignsItsColumns)
{
    auto named = destination(2147483647, "traps.example.net");
    named.port = 10162;
    named.version = 3;
    named.type = 7;
    named.user = "monitor";
    named.usable = "2001:db8::1";

    EXPECT_EQ(
        trapTableText({destination(1, "192.0.2.1"), named}),
        "INDEX       ADDRESS            PORT   VERSION  TYPE           USER     USABLE\n"
        "1           192.0.2.1          162    v2c      alarm          --       192.0.2.1\n"
        "2147483647  traps.example.net  10162  v3       alarm-own-oid  monitor  2001:db8::1\n");
}

TEST(TrapTableText, TellsThatANameDoesNotResolve)
{
    auto row = destination(1, "nowhere.invalid");
    row.usable = kUnresolved;

    EXPECT_EQ(trapTableText({row}),
              "INDEX  ADDRESS          PORT  VERSION  TYPE   USER  USABLE\n"
              "1      nowhere.invalid  162   v2c      alarm  --    does not resolve\n");
}

TEST(TrapTableText, MarksWhatIsNotShownAndWhatHasNoName)
{
    TrapDestination hidden;
    hidden.index = 4;
    auto later = destination(5, "a");
    later.version = 9;
    later.type = 8;

    EXPECT_EQ(trapTableText({hidden, later}), "INDEX  ADDRESS  PORT  VERSION  TYPE  USER  USABLE\n"
                                              "4      ?        ?     ?        ?     ?     ?\n"
                                              "5      a        162   9        8     --    a\n");
}

TEST(TrapTableText, LetsNothingReachTheTerminal)
{
    auto row = destination(1, allBytes());
    row.user = "\x1B]0;x\x07\n\xE2\x80\xAE";  // NOLINT(misc-misleading-bidirectional)

    const auto text = trapTableText({row});

    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    for (const char c : text) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << static_cast<int>(c);
    }
    EXPECT_NE(text.find("\\x1B]0;x\\x07\\x0A\\xE2\\x80\\xAE"), std::string::npos);
}

TEST(TrapTableText, AlignsBehindCharactersOfSeveralBytes)
{
    auto row = destination(1, "\xC3\xA9\xC3\xA9");

    EXPECT_EQ(trapTableText({row}), "INDEX  ADDRESS  PORT  VERSION  TYPE   USER  USABLE\n"
                                    "1      \xC3\xA9\xC3\xA9       162   v2c      alarm  --    "
                                    "\xC3\xA9\xC3\xA9\n");
}

TEST(TrapTableJson, HasNamesAndCodes)
{
    const auto root =
        parsed(jsonText(trapTableJson("udp:192.0.2.1:1161", {destination(3, "192.0.2.7")})));

    EXPECT_EQ(root["agent"], "udp:192.0.2.1:1161");
    ASSERT_EQ(root["destinations"].size(), 1u);
    const auto& row = root["destinations"][0];
    EXPECT_EQ(row["index"], 3);
    EXPECT_EQ(row["address"], "192.0.2.7");
    EXPECT_EQ(row["port"], 162);
    EXPECT_EQ(row["version"], "v2c");
    EXPECT_EQ(row["versionCode"], 2);
    EXPECT_EQ(row["type"], "alarm");
    EXPECT_EQ(row["typeCode"], 1);
    EXPECT_EQ(row["user"], "--");
    EXPECT_EQ(row["usable"], "192.0.2.7");
}

TEST(TrapTableJson, IsAnEmptyListForNothing)
{
    const auto root = parsed(jsonText(trapTableJson("a", {})));

    EXPECT_TRUE(root["destinations"].isArray());
    EXPECT_EQ(root["destinations"].size(), 0u);
}

TEST(TrapTableJson, IsNullForWhatIsNotShownAndForANameThatDoesNotResolve)
{
    TrapDestination hidden;
    hidden.index = 4;
    auto unresolved = destination(5, "nowhere.invalid");
    unresolved.usable = kUnresolved;

    const auto rows = parsed(jsonText(trapTableJson("a", {hidden, unresolved})))["destinations"];

    for (const auto* name :
         {"address", "port", "version", "versionCode", "type", "typeCode", "user", "usable"}) {
        EXPECT_TRUE(rows[0].isMember(name) && rows[0][name].isNull()) << name;
    }
    EXPECT_TRUE(rows[1].isMember("usable") && rows[1]["usable"].isNull());
    EXPECT_EQ(rows[1]["address"], "nowhere.invalid");
}

TEST(TrapTableJson, IsValidAndAsciiForAnyBytes)
{
    auto row = destination(1, allBytes());
    row.user = "\xF0\x9F\x90\x9F\xED\xA0\x80";

    const auto text = jsonText(trapTableJson(allBytes(), {row}));

    for (const char c : text) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '\x7F')) << static_cast<int>(c);
    }
    const auto root = parsed(text);
    const auto address = root["destinations"][0]["address"].asString();
    EXPECT_EQ(address.substr(0, 0x80), allBytes().substr(0, 0x80));
    EXPECT_EQ(address.substr(0x80, 8), "\\x80\\x81");
    EXPECT_EQ(address.substr(address.size() - 4), "\\xFF");
    EXPECT_EQ(root["destinations"][0]["user"], "\xF0\x9F\x90\x9F\\xED\\xA0\\x80");
    EXPECT_EQ(root["agent"].asString(), address);
}

TEST(TrapFailure, IsOneLineForPeopleAndAnObjectForPrograms)
{
    const Failure failure(Failure::Kind::Refused, "udp:a\x1B said\nno \xFF", "ask\r again");

    EXPECT_EQ(failureText(failure), "talvikctl: udp:a\\x1B said\\x0Ano \\xFF; ask\\x0D again\n");
    const auto json = parsed(jsonText(failureJson(failure)));
    EXPECT_EQ(json["reason"], "udp:a\x1B said\nno \\xFF");
    EXPECT_EQ(json["advice"], "ask\r again");
}

}  // namespace
