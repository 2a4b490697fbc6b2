#include "host/snmp/trap_encoder.h"

#include "host/snmp/trap_size.h"
#include "host/snmp/usm_users.h"
#include "tests/unit/host_snmp/sender_kit.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/trap_pdu.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using talvik::encodeTrap;
using talvik::ObjectId;
using talvik::Syntax;
using talvik::TrapContent;
using talvik::TrapMessageKind;
using talvik::test::parseMessage;
using testing::ElementsAre;

const ObjectId kAlarmTrap{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 1};

ObjectId object(unsigned long number)
{
    return {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, number, 0};
}

TrapContent content()
{
    return {kAlarmTrap,
            4711,
            {{object(1), {Syntax::OctetString, 0, "node"}},
             {object(6), {Syntax::Integer, -3, ""}},
             {object(7), {Syntax::Counter64, -1, ""}},
             {object(9), {Syntax::Gauge32, 4294967295, ""}}}};
}

std::string encode(const TrapContent& trap, const TrapMessageKind& kind)
{
    std::string problem;
    const auto message = encodeTrap(trap, kind, problem);
    EXPECT_TRUE(message.has_value()) << problem;
    return message.value_or("");
}

ObjectId nameOf(const netsnmp_variable_list& variable)
{
    return {variable.name, variable.name + variable.name_length};
}

ObjectId objectIdOf(const netsnmp_variable_list& variable)
{
    return {variable.val.objid, variable.val.objid + variable.val_len / sizeof(oid)};
}

/// The variables of `content`, from `variable` on; a Counter64 only if `with64`.
void expectBindings(const netsnmp_variable_list* variable, bool with64)
{
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(nameOf(*variable), object(1));
    EXPECT_EQ(variable->type, ASN_OCTET_STR);
    EXPECT_EQ(std::string(variable->val.string, variable->val.string + variable->val_len), "node");
    variable = variable->next_variable;
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(nameOf(*variable), object(6));
    EXPECT_EQ(variable->type, ASN_INTEGER);
    EXPECT_EQ(*variable->val.integer, -3);
    variable = variable->next_variable;
    if (with64) {
        ASSERT_NE(variable, nullptr);
        EXPECT_EQ(nameOf(*variable), object(7));
        EXPECT_EQ(variable->type, ASN_COUNTER64);
        EXPECT_EQ(variable->val.counter64->high, 0xFFFFFFFFU);
        EXPECT_EQ(variable->val.counter64->low, 0xFFFFFFFFU);
        variable = variable->next_variable;
    }
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(nameOf(*variable), object(9));
    EXPECT_EQ(variable->type, ASN_GAUGE);
    EXPECT_EQ(static_cast<u_long>(*variable->val.integer), 4294967295U);
    EXPECT_EQ(variable->next_variable, nullptr);
}

/// Time and kind of the notification first, then its bindings.
void expectVersion2Variables(const netsnmp_pdu& pdu)
{
    const auto* variable = pdu.variables;
    ASSERT_NE(variable, nullptr);
    EXPECT_THAT(nameOf(*variable), ElementsAre(1, 3, 6, 1, 2, 1, 1, 3, 0));
    EXPECT_EQ(variable->type, ASN_TIMETICKS);
    EXPECT_EQ(*variable->val.integer, 4711);
    variable = variable->next_variable;
    ASSERT_NE(variable, nullptr);
    EXPECT_THAT(nameOf(*variable), ElementsAre(1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0));
    EXPECT_EQ(variable->type, ASN_OBJECT_ID);
    EXPECT_EQ(objectIdOf(*variable), kAlarmTrap);
    expectBindings(variable->next_variable, true);
}

TEST(TrapEncoding, OfVersion2cCarriesTimeKindAndBindings)
{
    const auto pdu = parseMessage(encode(content(), {2, "traps", {}}));

    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->version, SNMP_VERSION_2c);
    EXPECT_EQ(pdu->command, SNMP_MSG_TRAP2);
    EXPECT_EQ(std::string(pdu->community, pdu->community + pdu->community_len), "traps");
    expectVersion2Variables(*pdu);
}

TEST(TrapEncoding, OfVersion1HasNoCounter64)
{
    const auto pdu = parseMessage(encode(content(), {1, "c", {192, 0, 2, 9}}));

    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->version, SNMP_VERSION_1);
    EXPECT_EQ(pdu->command, SNMP_MSG_TRAP);
    EXPECT_EQ(std::string(pdu->community, pdu->community + pdu->community_len), "c");
    EXPECT_THAT(pdu->agent_addr, ElementsAre(192, 0, 2, 9));
    EXPECT_EQ(pdu->time, 4711U);
    EXPECT_EQ(pdu->trap_type, SNMP_TRAP_ENTERPRISESPECIFIC);
    EXPECT_EQ(pdu->specific_type, 1);
    EXPECT_EQ(ObjectId(pdu->enterprise, pdu->enterprise + pdu->enterprise_length),
              ObjectId(kAlarmTrap.begin(), kAlarmTrap.end() - 2));
    expectBindings(pdu->variables, false);
}

talvik::TrapUser trapUser(const std::string& auth, const std::string& privacy)
{
    return {"trapuser", auth, "authentication", privacy, "privacy-phrase"};
}

TEST(TrapEncoding, OfVersion3IsAuthenticatedAndEncryptedByTheOwnEngine)
{
    for (const char* auth : {"SHA", "SHA-224", "SHA-256", "SHA-384", "SHA-512"}) {
        for (const char* privacy : {"AES", "AES-192", "AES-256"}) {
            SCOPED_TRACE(std::string(auth) + " " + privacy);
            talvik::UsmUsers users;
            std::vector<talvik::TrapUser> settings{trapUser(auth, privacy)};
            users.replace(settings);
            std::string problem;
            ASSERT_TRUE(users.makeReady("trapuser", talvik::UsmUsers::ownEngineId(), problem))
                << problem;

            const auto message = encode(content(), {3, "trapuser", {}});
            const auto pdu = parseMessage(message);

            EXPECT_EQ(message.find("node"), std::string::npos) << "it is encrypted";
            ASSERT_NE(pdu, nullptr);
            EXPECT_EQ(pdu->version, SNMP_VERSION_3);
            EXPECT_EQ(pdu->command, SNMP_MSG_TRAP2);
            EXPECT_EQ(pdu->securityLevel, SNMP_SEC_LEVEL_AUTHPRIV);
            EXPECT_EQ(pdu->securityModel, SNMP_SEC_MODEL_USM);
            EXPECT_EQ(std::string(pdu->securityName, pdu->securityNameLen), "trapuser");
            EXPECT_EQ(std::string(pdu->securityEngineID,
                                  pdu->securityEngineID + pdu->securityEngineIDLen),
                      talvik::UsmUsers::ownEngineId());
            EXPECT_EQ(
                std::string(pdu->contextEngineID, pdu->contextEngineID + pdu->contextEngineIDLen),
                talvik::UsmUsers::ownEngineId());
            EXPECT_EQ(pdu->contextNameLen, 0U);
            expectVersion2Variables(*pdu);
        }
    }
}

TEST(TrapEncoding, OfVersion3WithoutTheUserFails)
{
    std::string problem;

    EXPECT_FALSE(encodeTrap(content(), {3, "nobody", {}}, problem).has_value());
    EXPECT_THAT(problem, testing::StartsWith("cannot be encoded: "));
}

TEST(TrapEncoding, OfTheLongestTextsFitsEveryVersion)
{
    const std::string user(talvik::kMaxUserName, 'u');
    talvik::UsmUsers users;
    std::vector<talvik::TrapUser> settings{trapUser("SHA-512", "AES-256")};
    settings[0].name = user;
    users.replace(settings);
    std::string problem;
    ASSERT_TRUE(users.makeReady(user, talvik::UsmUsers::ownEngineId(), problem)) << problem;
    auto trap = content();
    for (unsigned long i = 10; i < 20; ++i) {
        trap.bindings.push_back({object(i), {Syntax::OctetString, 0, std::string(5000, 'x')}});
    }
    ASSERT_TRUE(talvik::fitTexts(trap.id, trap.bindings).has_value());

    const auto v3 = encode(trap, {3, user, {}});

    EXPECT_LE(v3.size(), talvik::kMaxTrapMessage);
    EXPECT_GE(v3.size(), talvik::kMaxTrapMessage - 80) << "the room is used";
    const std::string community(talvik::kMaxCommunity, 'c');
    EXPECT_LE(encode(trap, {2, community, {}}).size(), talvik::kMaxTrapMessage);
    EXPECT_LE(encode(trap, {1, community, {1, 2, 3, 4}}).size(), talvik::kMaxTrapMessage);
}

TEST(TrapEncoding, LeavesNothingOfTheTrapBefore)
{
    auto longer = content();
    for (unsigned long i = 10; i < 40; ++i) {
        longer.bindings.push_back({object(i), {Syntax::OctetString, 0, std::string(100, 'x')}});
    }
    std::string problem;
    EXPECT_FALSE(encodeTrap(longer, {2, "c", {}}, problem).has_value());

    const auto version2 = parseMessage(encode(content(), {2, "c", {}}));
    const auto version1 = parseMessage(encode(content(), {1, "c", {}}));

    ASSERT_NE(version2, nullptr);
    expectVersion2Variables(*version2);
    ASSERT_NE(version1, nullptr);
    expectBindings(version1->variables, false);
}

TEST(TrapEncoding, OfTooMuchFails)
{
    auto trap = content();
    trap.bindings.push_back({object(2), {Syntax::OctetString, 0, std::string(65535, 'x')}});
    std::string problem;

    EXPECT_FALSE(encodeTrap(trap, {2, "c", {}}, problem).has_value());
    EXPECT_THAT(problem, testing::HasSubstr("more than 1472"));
}

struct Mapping {
    const char* name;
    ObjectId id;
    ObjectId enterprise;
    long generic;
    long specific;
    bool asLibrary;  ///< the SNMP library's own conversion agrees

    friend std::ostream& operator<<(std::ostream& os, const Mapping& row) { return os << row.name; }
};

class TrapAsVersion1 : public testing::TestWithParam<Mapping> {};

TEST_P(TrapAsVersion1, HasTheKindOfRfc3584)
{
    const auto& row = GetParam();
    const TrapContent trap{row.id, 77, {{object(1), {Syntax::OctetString, 0, "x"}}}};
    talvik::VariableRoom room;

    const auto pdu = talvik::borrowV1TrapPdu(trap, {1, 2, 3, 4}, room);

    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(ObjectId(pdu->enterprise, pdu->enterprise + pdu->enterprise_length), row.enterprise);
    EXPECT_EQ(pdu->trap_type, row.generic);
    EXPECT_EQ(pdu->specific_type, row.specific);
    EXPECT_THAT(pdu->agent_addr, ElementsAre(1, 2, 3, 4));
    if (row.asLibrary) {
        const auto version2 = talvik::makeTrapPdu(SNMP_MSG_TRAP2, SNMP_VERSION_2c, trap);
        const talvik::PduPtr theirs(convert_v2pdu_to_v1(version2.get()));
        ASSERT_NE(theirs, nullptr);
        EXPECT_EQ(theirs->trap_type, pdu->trap_type);
        EXPECT_EQ(theirs->specific_type, pdu->specific_type);
        EXPECT_EQ(theirs->time, pdu->time);
        if (theirs->enterprise != nullptr) {
            EXPECT_EQ(ObjectId(theirs->enterprise, theirs->enterprise + theirs->enterprise_length),
                      row.enterprise);
        }
        EXPECT_EQ(nameOf(*theirs->variables), nameOf(*pdu->variables));
    }
}

const ObjectId kSnmpTraps{1, 3, 6, 1, 6, 3, 1, 1, 5};

const Mapping kMappings[] = {
    {"ColdStart", {1, 3, 6, 1, 6, 3, 1, 1, 5, 1}, kSnmpTraps, 0, 0, true},
    {"WarmStart", {1, 3, 6, 1, 6, 3, 1, 1, 5, 2}, kSnmpTraps, 1, 0, true},
    {"LinkDown", {1, 3, 6, 1, 6, 3, 1, 1, 5, 3}, kSnmpTraps, 2, 0, true},
    {"LinkUp", {1, 3, 6, 1, 6, 3, 1, 1, 5, 4}, kSnmpTraps, 3, 0, true},
    {"AuthenticationFailure", {1, 3, 6, 1, 6, 3, 1, 1, 5, 5}, kSnmpTraps, 4, 0, true},
    {"EgpNeighborLoss", {1, 3, 6, 1, 6, 3, 1, 1, 5, 6}, kSnmpTraps, 5, 0, true},
    {"BeyondTheStandardOnes", {1, 3, 6, 1, 6, 3, 1, 1, 5, 7}, kSnmpTraps, 6, 7, false},
    {"ZeroInFront", kAlarmTrap, {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1}, 6, 1, true},
    {"NoZeroInFront",
     {1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 5},
     {1, 3, 6, 1, 4, 1, 99999, 2, 251, 20},
     6,
     5,
     true},
    {"LargeNumber",
     {1, 3, 6, 1, 4, 1, 99999, 2, 0, 4294967295},
     {1, 3, 6, 1, 4, 1, 99999, 2},
     6,
     4294967295,
     true},
};

INSTANTIATE_TEST_SUITE_P(Kinds, TrapAsVersion1, testing::ValuesIn(kMappings),
                         [](const auto& row) { return row.param.name; });

TEST(TrapWithoutEnterprise, IsNoneOfVersion1)
{
    const TrapContent trap{{1, 0, 1}, 0, {}};
    talvik::VariableRoom room;

    EXPECT_EQ(talvik::borrowV1TrapPdu(trap, {}, room), nullptr);
}

}  // namespace
