#include "tools/trap_import_file.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tools/trap_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using testing::HasSubstr;

std::string refusal(const std::string& text)
{
    try {
        parseTrapList(text, "r.json");
    } catch (const talvik::StartupError& error) {
        return error.what();
    }
    return "accepted";
}

std::string addresses(std::size_t count)
{
    std::string list;
    for (std::size_t i = 0; i < count; ++i) {
        list += (i == 0 ? "\"a" : ", \"a") + std::to_string(i) + "\"";
    }
    return "[" + list + "]";
}

TEST(TrapListFile, GivesWhatTheListOfAnAgentHas)
{
    TrapDestination row;
    row.index = 7;
    row.address = "traps.example.net";
    row.port = 10162;
    row.version = 3;
    row.type = 7;
    row.user = "monitor";
    row.usable = kUnresolved;

    const auto read = parseTrapList(jsonText(trapTableJson("udp:192.0.2.1", {row})), "r.json");

    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].index, 7u);
    EXPECT_EQ(read[0].address, "traps.example.net");
    EXPECT_EQ(read[0].port, 10162u);
    EXPECT_EQ(read[0].version, 3u);
    EXPECT_EQ(read[0].type, 7u);
    EXPECT_EQ(read[0].user, "monitor");
    EXPECT_EQ(read[0].usable, std::nullopt);
}

TEST(TrapListFile, MayNameAddressesAlone)
{
    const auto read = parseTrapList(R"(["192.0.2.1", {"address": "::1"}])", "r.json");

    ASSERT_EQ(read.size(), 2u);
    for (const auto& destination : read) {
        EXPECT_EQ(destination.port, 162u);
        EXPECT_EQ(destination.index, 0u);
        EXPECT_EQ(destination.version, std::nullopt);
        EXPECT_EQ(destination.type, std::nullopt);
        EXPECT_EQ(destination.user, std::nullopt);
    }
}

TEST(TrapListFile, MayGiveCodesInPlaceOfNames)
{
    const auto read = parseTrapList(R"([{"address": "a", "versionCode": 1, "typeCode": 2}])", "x");

    EXPECT_EQ(read.at(0).version, 1u);
    EXPECT_EQ(read.at(0).type, 2u);
}

TEST(TrapListFile, MayHaveOneAddressWithSeveralPorts)
{
    EXPECT_EQ(refusal(R"(["a", {"address": "a", "port": 163}])"), "accepted");
}

TEST(TrapListFile, MayHaveOneReceiverSeveralTimesWithIndexes)
{
    const auto read =
        parseTrapList(R"([{"address": "a", "index": 4}, {"address": "A", "index": 2}])", "r.json");

    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[0].index, 4u);
    EXPECT_EQ(read[1].index, 2u);
}

TEST(TrapListFile, HasRoomForTheLargestTable)
{
    TrapDestination row;
    row.address = std::string(253, 'a');
    row.port = 65535;
    row.version = 3;
    row.type = 7;
    row.user = std::string(32, '\xB0');
    row.usable = std::string(45, ':');
    std::vector<TrapDestination> rows;
    for (std::uint32_t index = 0; index < 4096; ++index) {
        row.index = kMaxTrapIndex - index;
        rows.push_back(row);
    }

    EXPECT_LT(jsonText(trapTableJson("udp:192.0.2.1:1161", rows)).size(), kMaxTrapListBytes);
}

TEST(TrapListFile, MayHaveAsManyDestinationsAsAnAgent)
{
    EXPECT_EQ(refusal(addresses(4096)), "accepted");
    EXPECT_THAT(refusal(addresses(4097)),
                HasSubstr("has 4097 destinations; an agent has room for 4096"));
}

TEST(TrapListFile, IsNamedWhenItCannotBeRead)
{
    const talvik::test::TempDir dir;
    EXPECT_THAT([&] { loadTrapList(dir.path("missing")); },
                testing::ThrowsMessage<talvik::StartupError>(
                    "receiver list " + dir.path("missing") +
                    ": cannot be read: No such file or directory"));
    EXPECT_THAT([&] { loadTrapList(dir.path()); },
                testing::ThrowsMessage<talvik::StartupError>(HasSubstr("Is a directory")));
}

TEST(TrapListFile, IsRefusedWhenItIsTooLarge)
{
    const talvik::test::TempDir dir;
    const auto file = dir.write("r.json", std::string(kMaxTrapListBytes + 1, ' '));
    EXPECT_THAT([&] { loadTrapList(file); },
                testing::ThrowsMessage<talvik::StartupError>(HasSubstr("larger than 4 MiB")));
}

TEST(TrapListFile, ShowsWhatIsNotPrintableAsEscapes)
{
    EXPECT_THAT(refusal(R"(["\u001b[2J"])"), HasSubstr("\\x1B[2J"));
}

TEST(ReceiverKey, IsThatOfTheAddressHoweverItIsWritten)
{
    EXPECT_EQ(receiverKey("2001:DB8:0::1", 162), receiverKey("2001:db8::1", 162));
    EXPECT_EQ(receiverKey("Traps.Example.NET.", 162), receiverKey("traps.example.net", 162));
    EXPECT_EQ(receiverKey("fe80:0::1%eth0", 1), receiverKey("fe80::1%eth0", 1));
    EXPECT_NE(receiverKey("fe80::1%eth0", 1), receiverKey("fe80::1%eth1", 1));
    EXPECT_NE(receiverKey("192.0.2.1", 1), receiverKey("192.0.2.1", 2));
}

struct Refusal {
    const char* name;
    std::string text;
    const char* message;

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class TrapListRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(TrapListRefusal, NamesThePlaceAndWhatIsAllowed)
{
    EXPECT_THAT(refusal(GetParam().text), HasSubstr(GetParam().message));
}

std::string with(const std::string& members)
{
    return "[\"b\",\n{\"address\": \"a\",\n" + members + "}]";
}

const Refusal kRefusals[] = {
    {"Empty", " \n", "receiver list r.json: is empty"},
    {"NoJson", "[192.0.2.1]", "receiver list r.json: is no JSON: Line 1, Column"},
    {"Cut", R"({"destinations": [)", "is no JSON: Line 1, Column"},
    {"TrailingComma", R"(["a",])", "is no JSON: Line 1, Column"},
    {"Comment", "[] // none", "is no JSON: Line 1, Column"},
    {"MoreBehind", "[] []", "is no JSON: Line 1, Column"},
    {"MemberTwice", R"([{"address": "a", "address": "b"}])", "Duplicate key"},
    {"NestedWithoutEnd", std::string(2000, '['), "is no JSON: "},
    {"NoDestinations", "{}", "line 1: expected an array of destinations, or an object"},
    {"DestinationsNoArray", R"({"destinations": 1})",
     "line 1, destinations: expected an array of destinations"},
    {"UnknownAtTheTop", "{\"destinations\": [],\n\"agents\": 1}",
     "line 2, agents: unknown member; known are agent, destinations"},
    {"AgentANumber", R"({"agent": 1, "destinations": []})", "agent: expected the address"},
    {"NumberInPlaceOfADestination", "[7]", "line 1, [0]: expected an object with the member"},
    {"NoAddress", R"({"destinations": [{"port": 162}]})",
     "destinations[0]: lacks the member \"address\""},
    {"AddressANumber", R"([{"address": 7}])", "[0].address: expected an IPv4 or IPv6 address"},
    {"AddressNotShown", R"([{"address": null}])", "list again with a user or community that sees"},
    {"AddressWithBlank", "[\"a\",\n\"a b\"]", "line 2, [1]: \"a b\" is no address of a receiver"},
    {"AddressUnspecified", R"(["0.0.0.0"])", "\"0.0.0.0\" is no address of a receiver"},
    {"AddressMistyped", R"(["192.0.2.256"])", "\"192.0.2.256\" is no address"},
    {"UnknownMember", with(R"("prot": 1)"),
     "line 3, [1].prot: unknown member; known are address, index, port, type, typeCode, usable, "
     "user, version, versionCode"},
    {"PortZero", with(R"("port": 0)"), "line 3, [1].port: expected a whole number from 1 to 65535"},
    {"PortTooLarge", with(R"("port": 65536)"), "[1].port: expected a whole number from 1 to 65535"},
    {"PortAText", with(R"("port": "162")"), "[1].port: expected a whole number"},
    {"PortWithPoint", with(R"("port": 162.0)"), "[1].port: expected a whole number"},
    {"PortNegative", with(R"("port": -1)"), "[1].port: expected a whole number"},
    {"PortNotShown", with(R"("port": null)"),
     "[1].port: expected a whole number from 1 to 65535; "
     "where an agent did not show it"},
    {"IndexZero", with(R"("index": 0)"), "[1].index: expected a whole number from 1 to 2147483647"},
    {"IndexTooLarge", with(R"("index": 2147483648)"), "[1].index: expected a whole number"},
    {"Version", with(R"("version": "v4")"),
     "[1].version: \"v4\" is not known; expected v1, v2c or v3"},
    {"VersionANumber", with(R"("version": 2)"), "[1].version: expected v1, v2c or v3, as a text"},
    {"VersionCode", with(R"("versionCode": 4)"), "[1].versionCode: 4 is not known; expected v1"},
    {"VersionCodeOther", with(R"("version": "v3", "versionCode": 2)"),
     "[1].versionCode: 2 does not agree with \"version\", which is 3"},
    {"Type", with(R"("type": "all")"), "[1].type: \"all\" is not known; expected alarm, no-alarm"},
    {"TypeByANumberUnknown", with(R"("type": "5")"), "[1].type: \"5\" is not known"},
    {"TypeCode", with(R"("typeCode": 4)"), "[1].typeCode: 4 is not known; expected alarm"},
    {"TypeCodeOther", with(R"("type": "alarm", "typeCode": 2)"),
     "[1].typeCode: 2 does not agree with \"type\", which is 1"},
    {"UserEmpty", with(R"("user": "")"), "[1].user: \"\" is no user name; expected 1 to 32 octets"},
    {"UserTooLong", with("\"user\": \"" + std::string(33, 'u') + "\""), "[1].user: \"uuu"},
    {"UserWithControl", with(R"("user": "a\u0000")"), "[1].user: \"a\\x00\" is no user name"},
    {"UserANumber", with(R"("user": 1)"), "[1].user: expected 1 to 32 octets"},
    {"UsableANumber", with(R"("usable": 1)"), "[1].usable: expected null or an address"},
    {"ReceiverTwice", "[\"A\",\n\"b\",\n{\"address\": \"a.\", \"port\": 162}]",
     "line 3, [2]: has the address and port of [0]; a receiver may stand there several times only "
     "with the index of each"},
    {"ReceiverTwiceWithOneIndex", R"([{"address": "a", "index": 3}, "a"])",
     "[1]: has the address and port of [0]"},
    {"ReceiverTwiceWithTheOtherIndex", R"(["a", {"address": "a", "index": 3}])",
     "[1]: has the address and port of [0]"},
    {"IndexTwice", "[{\"address\": \"a\", \"index\": 3},\n{\"address\": \"b\", \"index\": 3}]",
     "line 2, [1].index: 3 is the index of [0] already"},
};

INSTANTIATE_TEST_SUITE_P(Lists, TrapListRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

}  // namespace
