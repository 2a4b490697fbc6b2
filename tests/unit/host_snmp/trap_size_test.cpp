#include "host/snmp/trap_size.h"

#include "host/platform/utf8_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using talvik::fitTexts;
using talvik::kMaxTrapHeader;
using talvik::kMaxTrapMessage;
using talvik::ObjectId;
using talvik::Syntax;
using talvik::TrapBinding;
using talvik::variablesSize;

const ObjectId kId{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 1};
const ObjectId kTime{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 8, 0};
constexpr std::size_t kRoom = kMaxTrapMessage - kMaxTrapHeader;

TrapBinding text(unsigned long number, const std::string& octets)
{
    return {{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, number, 0},
            {Syntax::OctetString, 0, octets}};
}

TEST(TrapSize, CountsWhatAMessageHolds)
{
    // sysUpTime.0: 30 0F 06 08 (8) 43 05 (5); snmpTrapOID.0: 30 1E 06 0A (10) 06 0F (15)
    const auto header = 19U + 31U;
    EXPECT_EQ(variablesSize(kId, {}), header);
    // 30 17 06 10 (16) 04 03 abc
    EXPECT_EQ(variablesSize(kId, {text(4, "abc")}), header + 25U);
    // 30 82 .. .. 06 10 (16) 04 82 .. .. (300)
    EXPECT_EQ(variablesSize(kId, {text(4, std::string(300, 'x'))}), header + 4 + 18 + 4 + 300U);
    // 30 81 .. 06 10 (16) 04 81 .. (128)
    EXPECT_EQ(variablesSize(kId, {text(4, std::string(128, 'x'))}), header + 3 + 18 + 3 + 128U);
    // A Counter64 may take nine octets.
    EXPECT_EQ(variablesSize(kId, {{kTime, {Syntax::Counter64, 1, ""}}}), header + 2 + 18 + 11U);
}

TEST(TrapSize, LeavesWhatFitsAsItIs)
{
    std::vector<TrapBinding> bindings{text(1, "a"), text(2, std::string(1000, 'b'))};

    const auto cuts = fitTexts(kId, bindings);

    ASSERT_TRUE(cuts.has_value());
    EXPECT_TRUE(cuts->empty());
    EXPECT_EQ(bindings[1].value.octets, std::string(1000, 'b'));
}

TEST(TrapSize, MakesTextsPlainEvenIfTheyFit)
{
    std::vector<TrapBinding> bindings{text(1, "a\nb\xFF")};

    ASSERT_TRUE(fitTexts(kId, bindings).has_value());

    EXPECT_EQ(bindings[0].value.octets, "a b\xEF\xBF\xBD");
}

TEST(TrapSize, CutsTheLongestTextsToOneLength)
{
    std::vector<TrapBinding> bindings{text(1, "short"), text(2, std::string(3000, 'b')),
                                      text(3, std::string(700, 'c')),
                                      text(4, std::string(99, 'd'))};

    const auto cuts = fitTexts(kId, bindings);

    ASSERT_TRUE(cuts.has_value());
    ASSERT_EQ(cuts->size(), 2u);
    EXPECT_EQ((*cuts)[0].binding, 1u);
    EXPECT_EQ((*cuts)[0].before, 3000u);
    EXPECT_EQ((*cuts)[1].binding, 2u);
    EXPECT_EQ((*cuts)[0].after, (*cuts)[1].after);
    EXPECT_EQ(bindings[0].value.octets, "short");
    EXPECT_EQ(bindings[3].value.octets, std::string(99, 'd'));
    EXPECT_EQ(bindings[2].value.octets, std::string((*cuts)[1].after - 3, 'c') + "…");
    EXPECT_LE(variablesSize(kId, bindings), kRoom);
    EXPECT_GE(variablesSize(kId, bindings), kRoom - 3) << "the room is used";
}

TEST(TrapSize, CutsATextOf64KiB)
{
    for (const char octet : {'x', '\xFF', '\n'}) {
        std::vector<TrapBinding> bindings{text(1, std::string(65536, octet)), text(2, "b")};

        const auto cuts = fitTexts(kId, bindings);

        ASSERT_TRUE(cuts.has_value());
        EXPECT_EQ(cuts->size(), 1u);
        EXPECT_TRUE(talvik::isPlainUtf8(bindings[0].value.octets));
        EXPECT_LE(variablesSize(kId, bindings), kRoom);
        EXPECT_GE(variablesSize(kId, bindings), kRoom - 5);
    }
}

TEST(TrapSize, LeavesTheTimeWhole)
{
    const std::string time("\x07\xEA\x0B\x15\x0D\x05\x09\x00\x2B\x01\x00", 11);
    std::vector<TrapBinding> bindings{{kTime, {Syntax::OctetString, 0, time}},
                                      text(2, std::string(2000, 'b'))};

    ASSERT_TRUE(fitTexts(kId, bindings).has_value());

    EXPECT_EQ(bindings[0].value.octets, time);
}

TEST(TrapSize, RefusesWhatDoesNotFitWithoutTexts)
{
    // 25 octets each with an empty text: 47 of them fit behind the header's 50, 54 do not.
    std::vector<TrapBinding> bindings(54, text(1, "abc"));
    EXPECT_FALSE(fitTexts(kId, bindings).has_value());

    bindings.assign(53, text(1, "abc"));
    EXPECT_TRUE(fitTexts(kId, bindings).has_value());
    EXPECT_EQ(bindings[0].value.octets, "") << "no room for even the mark of a cut";
}

}  // namespace
