#include "fuzz/properties/alarm_text_property.h"

#include "alarmconfig/alarm_config_parser.h"
#include "alarmconfig/alarm_text.h"
#include "fuzz/properties/alarm_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace talvik::fuzz {

namespace {

namespace plain = test::plain;

/// What came of filling one text.
struct Filled {
    int result = 0;
    std::string out = "untouched";
    plain::Lines lines;
};

CAlarmConfigParser& parser()
{
    static const bool written = [] {
        alarmHost().definitions.write(R"({"root":{"eventDefinition":{"param":[]}}})");
        alarmHost().literals.write(R"({"alarm":{"param_enum":[]}})");
        return true;
    }();
    static_cast<void>(written);
    return *CAlarmConfigParser::instance();
}

void require(bool holds, const char* rule)
{
    if (!holds) {
        std::fprintf(stderr, "alarm text property broken: %s\n", rule);
        std::abort();
    }
}

/// The lines since the last call.
plain::Lines newLines()
{
    require(alarmHost().guards == 0, "every log guard is closed");
    return std::exchange(alarmHost().lines, {});
}

void say(const char* who, const Filled& filled)
{
    std::fprintf(stderr, "%s: result 0x%x, \"%s\"\n", who, static_cast<unsigned>(filled.result),
                 filled.out.c_str());
    for (const plain::Line& line : filled.lines) {
        std::fprintf(stderr, "  %s 0x%llx %s\n", line.level.c_str(), line.code, line.text.c_str());
    }
}

bool isBoundWarning(const plain::Line& line)
{
    return line.text.find("leads back to itself at character ") != std::string::npos ||
           line.text.find("the values of an alarm text ask for more than") == 0;
}

/// No text is longer than its own placeholders and the bound on nested ones allow.
std::size_t longest(const std::string& text, const plain::Pairs& pairs)
{
    std::size_t value = 4;
    for (const auto& pair : pairs) {
        value = std::max(value, pair.second.size());
    }
    return text.size() + (text.size() / 2 + 2) * value + kMaxNestedLength;
}

void checkFilling(const std::string& text, const plain::Pairs& pairs)
{
    Filled real;
    real.result = parser().replaceAlarmParamInfo(text, real.out, pairs);
    real.lines = newLines();
    Filled expected;
    expected.result = plain::fill(text, pairs, expected.out, expected.lines, {200, 64UL * 1024});
    if (expected.result == plain::kDoesNotEnd) {
        const auto warnings = std::count_if(real.lines.begin(), real.lines.end(), isBoundWarning);
        require(warnings <= 1, "a filling stops once");
        require(warnings == 0 || (isBoundWarning(real.lines.back()) && real.result == 0),
                "a filling that stops says so last and succeeds");
        require(real.out.size() <= longest(text, pairs), "a filling is within its bounds");
    } else if (real.result != expected.result || real.out != expected.out ||
               real.lines != expected.lines) {
        say("catalogue", real);
        say("plain", expected);
        require(false, "both fill alike");
    }
}

/// Takes what stands before the first zero byte, and that byte, off `input`.
std::string takePart(std::string& input)
{
    const std::string part = input.substr(0, input.find('\0'));
    input.erase(0, part.size() + 1);
    return part;
}

}  // namespace

void checkAlarmText(const std::uint8_t* data, std::size_t size)
{
    std::string input(data, data + size);
    std::string detail = takePart(input);
    const std::string params = takePart(input);
    const std::string& location = input;

    plain::Fields fields;
    parser();
    newLines();
    parser().parseAlarmParamList(params, fields);
    require(fields == plain::fieldsOf(params), "both split the parameters alike");
    require(newLines().empty(), "splitting says nothing");

    plain::Pairs pairs;
    plain::Pairs expectedPairs;
    plain::Lines expectedLines;
    parserParmeterByDetail(fields, pairs, detail);
    plain::pairUp(fields, detail, expectedPairs, expectedLines);
    require(pairs == expectedPairs, "both make the same value pairs");
    require(newLines() == expectedLines, "both say the same of the value pairs");

    std::string cleaned = detail;
    expectedLines.clear();
    replaceBraceWithEmptyString(cleaned);
    plain::removeBraces(detail, expectedLines);
    require(cleaned == detail, "both delete the same braces");
    require(newLines() == expectedLines, "both say the same of the braces");

    checkFilling(cleaned, pairs);
    checkFilling(location, pairs);
}

}  // namespace talvik::fuzz
