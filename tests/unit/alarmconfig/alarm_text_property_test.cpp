// Random alarm texts against the plain implementation. Each seed is a test; a run with
// --gtest_random_seed=N takes other seeds, and a failure names the seed and the round.

#include "alarmconfig/alarm_text.h"
#include "tests/support/plain_alarm_texts.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"
#include "tests/unit/alarmconfig/alarm_text_maker.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace talvik::test::plain {

std::ostream& operator<<(std::ostream& os, const Line& line)
{
    return os << line.level << " 0x" << std::hex << line.code << std::dec << ' '
              << testing::PrintToString(line.text);
}

}  // namespace talvik::test::plain

namespace {

using namespace talvik::test;
using testing::PrintToString;

constexpr unsigned kSeeds = 4;
constexpr unsigned kRounds = 25000;

/// What came of filling one text.
struct Filled {
    int result = 0;
    std::string out = "untouched";
    plain::Lines lines;
};

class AlarmTextProperty : public AlarmCatalogueTest, public testing::WithParamInterface<unsigned> {
protected:
    AlarmTextProperty() : make(seed()) {}

    static unsigned seed()
    {
        return static_cast<unsigned>(GTEST_FLAG_GET(random_seed)) * kSeeds + GetParam();
    }

    /// The lines since the last call.
    plain::Lines newLines()
    {
        plain::Lines found;
        for (auto& line : host.log) {
            if (line.level != "trace") {
                found.push_back({line.level, line.messageId, std::move(line.text)});
            }
        }
        host.log.clear();
        host.calls.clear();
        return found;
    }

    Filled fillReally(const std::string& text, const Pairs& pairs)
    {
        Filled filled;
        filled.result = parser().replaceAlarmParamInfo(text, filled.out, pairs);
        filled.lines = newLines();
        return filled;
    }

    void expectCutOffProperly(const std::string& text, const Pairs& pairs, Filled real);
    void expectSameFilling(const std::string& text, const Pairs& pairs);
    void defineRandomCatalogue();

    /// From 0 on: few enough that some are met again.
    unsigned long long randomId()
    {
        const unsigned long long low = make.below(500);
        return low + (make.below(3) << 32U);
    }

    void expectSameLookUp(unsigned long long id, const std::string& params);

    AlarmTextMaker make;
    plain::Catalogue catalogue;
    unsigned longRunsLeft = 20;
};

Filled fillPlainly(const std::string& text, const Pairs& pairs, const plain::Limit& limit)
{
    Filled filled;
    filled.result = plain::fill(text, pairs, filled.out, filled.lines, limit);
    return filled;
}

void expectSame(const Filled& real, const Filled& expected)
{
    EXPECT_EQ(real.result, expected.result);
    EXPECT_EQ(real.out, expected.out);
    EXPECT_EQ(real.lines, expected.lines);
}

bool isBoundWarning(const plain::Line& line)
{
    return line.level == "warn" && line.code == 0x1002F &&
           (line.text.find("leads back to itself at character ") != std::string::npos ||
            line.text.find("the values of an alarm text ask for more than") == 0);
}

/// `real` is of a text that the plain filling did not finish in a few steps: unless more of them
/// do finish it, the text must be one that it had on the way, followed by the one warning.
void AlarmTextProperty::expectCutOffProperly(const std::string& text, const Pairs& pairs,
                                             Filled real)
{
    ASSERT_EQ(real.result, 0);
    if (real.lines.empty() || !isBoundWarning(real.lines.back())) {
        expectSame(real, fillPlainly(text, pairs, {200000, 64UL * 1024 * 1024}));
        return;
    }
    const bool leadsBack = real.lines.back().text.find("leads back") != std::string::npos;
    real.lines.pop_back();
    EXPECT_EQ(std::count_if(real.lines.begin(), real.lines.end(), isBoundWarning), 0);
    if (longRunsLeft == 0) {
        return;
    }
    --longRunsLeft;

    bool passed = real.out == text && real.lines.empty();
    Filled expected;
    plain::Limit limit{leadsBack ? 3000U : 66000U, 64UL * 1024 * 1024};
    limit.afterStep = [&](const std::string& worked) {
        passed = passed || (worked == real.out && expected.lines == real.lines);
    };
    expected.result = plain::fill(text, pairs, expected.out, expected.lines, limit);
    EXPECT_EQ(expected.result, plain::kDoesNotEnd);
    EXPECT_TRUE(passed) << "delivered: " << PrintToString(real.out.substr(0, 200));
}

void AlarmTextProperty::expectSameFilling(const std::string& text, const Pairs& pairs)
{
    SCOPED_TRACE("filling " + PrintToString(text) + " from " + PrintToString(pairs));
    const auto real = fillReally(text, pairs);
    const auto expected = fillPlainly(text, pairs, {200});
    if (expected.result == plain::kDoesNotEnd) {
        expectCutOffProperly(text, pairs, real);
    } else {
        expectSame(real, expected);
    }
}

TEST_P(AlarmTextProperty, StepsGiveWhatThePlainOnesGive)
{
    parser();
    newLines();
    for (unsigned round = 0; round < kRounds && !HasFailure(); ++round) {
        auto text = make.text();
        if (make.oneIn(50)) {
            text.insert(make.below(text.size() + 1), 1, '\0');
        }
        const auto params = make.params();
        SCOPED_TRACE("seed " + std::to_string(seed()) + ", round " + std::to_string(round) +
                     ", text " + PrintToString(text) + ", parameters " + PrintToString(params));

        Fields fields;
        parser().parseAlarmParamList(params, fields);
        EXPECT_EQ(fields, plain::fieldsOf(params));
        EXPECT_EQ(newLines(), plain::Lines());

        Pairs pairs;
        Pairs expectedPairs;
        if (make.oneIn(10)) {
            pairs = expectedPairs = make.pairs();
        }
        plain::Lines expectedLines;
        parserParmeterByDetail(fields, pairs, text);
        plain::pairUp(fields, text, expectedPairs, expectedLines);
        EXPECT_EQ(pairs, expectedPairs);
        EXPECT_EQ(newLines(), expectedLines);

        auto cleaned = text;
        auto expectedCleaned = text;
        expectedLines.clear();
        replaceBraceWithEmptyString(cleaned);
        plain::removeBraces(expectedCleaned, expectedLines);
        EXPECT_EQ(cleaned, expectedCleaned);
        EXPECT_EQ(newLines(), expectedLines);

        expectSameFilling(cleaned, pairs);
        expectSameFilling(make.text(), make.oneIn(2) ? make.pairs() : pairs);
    }
}

TEST_P(AlarmTextProperty, ReplacementsGiveWhatThePlainOnesGive)
{
    static const char* const kSought[] = {"&#44;", "&#38;",     "#",  "##",  "{a",
                                          "a",     "&#38;#44;", "aa", "aba", "0#0"};
    for (unsigned round = 0; round < kRounds && !HasFailure(); ++round) {
        std::string text = make.oneIn(2) ? make.params() : make.text();
        for (auto more = make.below(6); more != 0; --more) {
            text += make.oneOf(kSought);
        }
        const std::string from = make.oneOf(kSought);
        const std::string to = make.oneIn(3) ? from + from : make.value();
        const auto pairs = make.pairs();
        const auto position = static_cast<int>(make.below(8)) - 2;
        const auto start = make.below(text.size() + 1);
        const auto length = make.below(8);
        SCOPED_TRACE("seed " + std::to_string(seed()) + ", round " + std::to_string(round) +
                     ", text " + PrintToString(text) + ", " + PrintToString(from) + " to " +
                     PrintToString(to) + ", position " + std::to_string(position) + " at " +
                     std::to_string(start) + " for " + std::to_string(length) + " of " +
                     PrintToString(pairs));

        EXPECT_EQ(relpacestr(text, from, to), plain::replaced(text, from, to));

        auto written = text;
        auto expected = text;
        EXPECT_EQ(replaceParaWithBraceValue(written, position, start, length, pairs),
                  plain::writeOver(expected, position, start, length, pairs));
        EXPECT_EQ(written, expected);
        EXPECT_EQ(newLines(), plain::Lines());
    }
}

std::string jsonText(const std::string& text)
{
    std::string json = "\"";
    for (const char c : text) {
        char escaped[8] = {c, '\0'};
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ') {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
        }
        json += escaped;
    }
    return json + "\"";
}

/// 400 definitions, some of an id that was there before, and the literals of three types.
void AlarmTextProperty::defineRandomCatalogue()
{
    static const char* const kTypes[] = {"A", "B", ""};
    catalogue = {};
    std::string definitions;
    for (unsigned i = 0; i < 400; ++i) {
        plain::Definition made;
        made.id = randomId();
        made.name = make.text();
        made.location = make.text();
        made.detail = make.oneIn(20) ? "None" : make.text();
        made.suggestion = make.text();
        std::string paramDesc;
        for (auto count = make.oneIn(2) ? 0 : make.below(5); count != 0; --count) {
            const auto place = static_cast<unsigned>(make.below(6));
            made.enumPositions.emplace_back(place, make.oneOf(kTypes));
            const auto& [position, type] = made.enumPositions.back();
            paramDesc += std::to_string(position) + "=" + type + ",";
        }
        definitions += (i == 0 ? "" : ",") + std::string(R"({"eventID":")") +
                       std::to_string(made.id) + R"(","name":)" + jsonText(made.name) +
                       R"(,"location":)" + jsonText(made.location) +
                       (made.detail == "None" ? "" : R"(,"detail":)" + jsonText(made.detail)) +
                       R"(,"suggestion":)" + jsonText(made.suggestion) + R"(,"paramDesc":)" +
                       jsonText(paramDesc) + "}";
        catalogue.alarms.emplace(made.id, made);
    }
    std::string types;
    for (const char* type : kTypes) {
        std::string members;
        for (unsigned i = 0; i < 12; ++i) {
            const auto value = make.oneIn(6) ? "--" : make.value();
            const auto literal = make.value();
            members += (i == 0 ? "" : ",") + std::string(R"({"value":)") + jsonText(value) +
                       R"(,"name":)" + jsonText(literal) + "}";
            catalogue.literals.emplace(std::string(type) + "_" + value, literal);
        }
        types += (types.empty() ? "" : ",") + std::string(R"({"name":)") + jsonText(type) +
                 R"(,"enum_member":[)" + members + "]}";
    }
    CAlarmConfigParser::destroy();
    defineAlarms(definitions);
    defineEnums(types);
    parser();
    newLines();
}

void AlarmTextProperty::expectSameLookUp(unsigned long long id, const std::string& params)
{
    const auto real = infoOf(id, params);
    const auto realLines = newLines();
    plain::Texts expected{-77, 77, "untouched", "untouched", "untouched", "untouched"};
    plain::Lines expectedLines;
    plain::lookUp(catalogue, id, params, expected, expectedLines, {200});

    EXPECT_EQ(real.id32, expected.id32);
    if (expected.result == plain::kDoesNotEnd) {
        // The steps alone are compared by the other test; here the other texts must come all the
        // same, unless one of them fails.
        EXPECT_TRUE(real.result == 0 || real.result == plain::kNoPosition) << real.result;
        EXPECT_EQ(real.name, real.result == 0 ? catalogue.alarms.at(id).name : "untouched");
        return;
    }
    EXPECT_EQ(real.result, expected.result);
    EXPECT_EQ(real.location, expected.location);
    EXPECT_EQ(real.detail, expected.detail);
    EXPECT_EQ(real.suggestion, expected.suggestion);
    EXPECT_EQ(real.name, expected.name);
    EXPECT_EQ(realLines, expectedLines);
}

TEST_P(AlarmTextProperty, LookUpsGiveWhatThePlainOnesGive)
{
    for (unsigned round = 0; round < kRounds && !HasFailure(); ++round) {
        if (round % 5000 == 0) {
            defineRandomCatalogue();
        }
        auto id = randomId();
        if (!make.oneIn(50)) {
            id = std::next(catalogue.alarms.begin(),
                           static_cast<std::ptrdiff_t>(make.below(catalogue.alarms.size())))
                     ->first;
        }
        const auto params = make.params();
        const auto alarm = catalogue.alarms.find(id);
        SCOPED_TRACE("seed " + std::to_string(seed()) + ", round " + std::to_string(round) +
                     ", alarm " + std::to_string(id) + ", parameters " + PrintToString(params) +
                     (alarm == catalogue.alarms.end()
                          ? std::string()
                          : ", detail " + PrintToString(alarm->second.detail) + ", location " +
                                PrintToString(alarm->second.location) + ", suggestion " +
                                PrintToString(alarm->second.suggestion) + ", enumerated " +
                                PrintToString(alarm->second.enumPositions)));

        expectSameLookUp(id, params);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, AlarmTextProperty, testing::Range(1U, 1U + kSeeds));

}  // namespace
