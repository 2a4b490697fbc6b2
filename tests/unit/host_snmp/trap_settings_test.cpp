#include "host/snmp/trap_settings.h"

#include "host/startup_error.h"
#include "tests/support/built_tree.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

namespace {

using talvik::parseTrapSettings;
using talvik::StartupError;
using talvik::TrapSettings;
using talvik::test::sourceFile;

TrapSettings parse(const std::string& text)
{
    return parseTrapSettings(text, "traps.json");
}

std::string refusalOf(const std::string& text)
{
    try {
        parse(text);
    } catch (const StartupError& error) {
        return error.what();
    }
    return "<accepted>";
}

const std::string kUser = R"({"name": "trapuser", "auth": "SHA-256", "authPassphrase": "12345678",)"
                          R"( "privacy": "AES", "privacyPassphrase": "abcdefgh"})";

TEST(TrapSettings, OfAnEmptyObjectAreTheDefaults)
{
    const auto settings = parse("{}");

    EXPECT_EQ(settings.community, "public");
    EXPECT_TRUE(settings.users.empty());
    EXPECT_TRUE(settings.receivers.empty());
    EXPECT_FALSE(settings.v1AgentAddress.has_value());
}

TEST(TrapSettings, HoldWhatTheFileSays)
{
    const auto settings = parse(
        R"({"community": "traps", "v1AgentAddress": "192.0.2.50", "users": [)" + kUser +
        R"(], "receivers": [{"address": "192.0.2.1"}, {"address": "192.0.2.1", "port": 1162,)"
        R"( "inform": true, "timeoutMs": 250, "retries": 0, "community": "c", "source": "::1"}]})");

    EXPECT_EQ(settings.community, "traps");
    EXPECT_THAT(*settings.v1AgentAddress, testing::ElementsAre(192, 0, 2, 50));
    ASSERT_EQ(settings.users.size(), 1u);
    EXPECT_EQ(settings.users[0].name, "trapuser");
    EXPECT_EQ(settings.users[0].auth, "SHA-256");
    EXPECT_EQ(settings.users[0].authPassphrase, "12345678");
    EXPECT_EQ(settings.users[0].privacy, "AES");
    EXPECT_EQ(settings.users[0].privacyPassphrase, "abcdefgh");
    ASSERT_EQ(settings.receivers.size(), 2u);
    EXPECT_FALSE(settings.receivers[0].inform);
    EXPECT_EQ(settings.receivers[0].timeout, std::chrono::milliseconds(1000));
    EXPECT_EQ(settings.receivers[0].retries, 3);
    EXPECT_TRUE(settings.receivers[1].inform);
    EXPECT_EQ(settings.receivers[1].timeout, std::chrono::milliseconds(250));
    EXPECT_EQ(settings.receivers[1].retries, 0);
    EXPECT_EQ(settings.receivers[1].community, "c");
    EXPECT_EQ(settings.receivers[1].source, "::1");
}

TEST(TrapSettings, OfTheSampleAreFine)
{
    std::ifstream in(sourceFile("etc/talvik-traps.json"));
    const std::string text{std::istreambuf_iterator<char>(in), {}};

    const auto settings = parse(text);

    EXPECT_EQ(settings.receivers.size(), 2u);
    EXPECT_TRUE(settings.users.empty()) << "a sample has no passphrases";
}

TEST(TrapSettings, OfAnAddressWithThePortComeFirst)
{
    const auto settings = parse(R"({"receivers": [{"address": "NMS.example", "port": 9},)"
                                R"({"address": "nms.example"}, {"address": "b", "port": 1}]})");

    EXPECT_EQ(settings.find("nms.EXAMPLE", 9), &settings.receivers[0]);
    EXPECT_EQ(settings.find("nms.example", 162), &settings.receivers[1]);
    EXPECT_EQ(settings.find("b", 1), &settings.receivers[2]);
    EXPECT_EQ(settings.find("b", 2), nullptr);
}

std::string usersOf(int count)
{
    std::string users;
    for (int i = 0; i < count; ++i) {
        auto user = kUser;
        users += (i == 0 ? "" : ",") + user.insert(user.find("trapuser"), std::to_string(i));
    }
    return R"({"users": [)" + users + "]}";
}

TEST(TrapSettings, HaveUpTo64Users)
{
    EXPECT_EQ(parse(usersOf(64)).users.size(), 64u);
}

TEST(TrapSettings, SecretsAreEmptyWhenTheyAreWiped)
{
    std::string secret = "12345678";

    talvik::wipe(secret);

    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(std::string(secret.data(), 8), std::string(8, '\0'));
}

struct Refusal {
    const char* name;
    std::string text;
    const char* expected;  ///< part of the message

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class TrapSettingsRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(TrapSettingsRefusal, NamesFileAndPlace)
{
    EXPECT_THAT(refusalOf(GetParam().text),
                testing::AllOf(testing::StartsWith("trap settings traps.json"),
                               testing::HasSubstr(GetParam().expected)));
}

std::string user(const std::string& member, const std::string& value)
{
    auto text = kUser;
    const auto start = text.find(": ", text.find("\"" + member + "\"")) + 2;
    const auto end = text.find_first_of(",}", start);
    return R"({"users": [)" + text.replace(start, end - start, value) + "]}";
}

std::string receiver(const std::string& members)
{
    return R"({"receivers": [{"address": "192.0.2.1")" + members + "}]}";
}

const Refusal kRefusals[] = {
    {"NoJson", "{", "Line 1"},
    {"Comment", "{} // no", "Line 1"},
    {"MemberTwice", R"({"community": "a", "community": "b"})", "community"},
    {"Array", "[]", "expected an object"},
    {"Unknown", R"({"comunity": "x"})", "unknown member \"comunity\""},
    {"CommunityNoText", R"({"community": 1})", ", community: expected a text of 1 to 128 octets"},
    {"CommunityEmpty", R"({"community": ""})", ", community: expected a text"},
    {"CommunityTooLong", R"({"community": ")" + std::string(129, 'c') + "\"}", ", community:"},
    {"UsersNoArray", R"({"users": {}})", ", users: expected an array"},
    {"UserNoObject", R"({"users": [1]})", ", users[0]: expected an object"},
    {"UserIncomplete", R"({"users": [{"name": "a"}]})", "users[0]: lacks the member \"auth\""},
    {"UserUnknownMember", R"({"users": [{"x": 1}]})", "users[0]: lacks"},
    {"UserTwice", R"({"users": [)" + kUser + "," + kUser + "]}",
     "users[1].name: user \"trapuser\" is there twice"},
    {"UsersTooMany", usersOf(65), ", users: there are 65 users, at most 64 are possible"},
    {"UserNone", user("name", "\"--\""), "users[0].name: \"--\" stands for no user"},
    {"UserTooLong", user("name", "\"" + std::string(33, 'u') + "\""), "users[0].name: expected"},
    {"UserWithNul", user("name", R"("a\u0000b")"), "users[0].name: a NUL"},
    {"UnknownAuth", user("auth", "\"MD5\""),
     "users[0].auth: \"MD5\" is none of SHA, SHA-224, SHA-256, SHA-384, SHA-512"},
    {"UnknownPrivacy", user("privacy", "\"DES\""),
     "users[0].privacy: \"DES\" is none of AES, AES-192, AES-256"},
    {"ShortPassphrase", user("authPassphrase", "\"1234567\""),
     "users[0].authPassphrase: expected a text of 8 to 255 octets"},
    {"ShortPrivacyPassphrase", user("privacyPassphrase", "\"1234567\""),
     "users[0].privacyPassphrase: expected"},
    {"ReceiverWithoutAddress", R"({"receivers": [{"port": 1}]})",
     "receivers[0]: lacks the member \"address\""},
    {"ReceiverUnknownMember", receiver(R"(, "informs": true)"),
     "receivers[0]: unknown member \"informs\""},
    {"AddressNone", R"({"receivers": [{"address": "0.0.0.0"}]})",
     "receivers[0].address: \"0.0.0.0\" is no address and no host name"},
    {"PortZero", receiver(R"(, "port": 0)"),
     "receivers[0].port: expected a number from 1 to 65535"},
    {"PortText", receiver(R"(, "port": "162")"), "receivers[0].port: expected a number"},
    {"InformText", receiver(R"(, "inform": "yes")"), "receivers[0].inform: expected true or false"},
    {"TimeoutTooShort", receiver(R"(, "timeoutMs": 99)"), "receivers[0].timeoutMs: expected"},
    {"TimeoutTooLong", receiver(R"(, "timeoutMs": 60001)"), "receivers[0].timeoutMs: expected"},
    {"RetriesNegative", receiver(R"(, "retries": -1)"), "receivers[0].retries: expected"},
    {"RetriesTooMany", receiver(R"(, "retries": 11)"), "receivers[0].retries: expected"},
    {"RetriesFraction", receiver(R"(, "retries": 1.5)"), "receivers[0].retries: expected"},
    {"SourceName", receiver(R"(, "source": "localhost")"),
     "receivers[0].source: \"localhost\" is no IP address"},
    {"ReceiverTwice", R"({"receivers": [{"address": "A"}, {"address": "a"}]})",
     "receivers[1]: this receiver is there twice"},
    {"AgentAddressIpv6", R"({"v1AgentAddress": "::1"})", "v1AgentAddress: \"::1\" is no IPv4"},
};

INSTANTIATE_TEST_SUITE_P(Files, TrapSettingsRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

}  // namespace
