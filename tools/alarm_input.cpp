#include "tools/alarm_input.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr std::array<std::pair<const char*, std::uint32_t>, 5> kSeverities = {
    {{"info", 2}, {"warning", 3}, {"minor", 4}, {"major", 5}, {"critical", 6}}};

// CAlarmConfigParser::converToQ7400AlarmLevel tells apart what lies between.
constexpr std::uint32_t kLeastLevel = 2;
constexpr std::uint32_t kMostLevel = 7;

constexpr char kSeparator = ',';

}  // namespace

std::optional<std::uint32_t> severityLevel(const std::string& nameOrNumber)
{
    for (const auto& [name, level] : kSeverities) {
        if (nameOrNumber == name) {
            return level;
        }
    }
    const auto level = wholeNumber(nameOrNumber, kLeastLevel, kMostLevel);
    return level ? std::optional(static_cast<std::uint32_t>(*level)) : std::nullopt;
}

std::optional<std::string> severityName(std::uint32_t level)
{
    const auto named = level == kMostLevel ? kSeverities.back().second : level;
    for (const auto& severity : kSeverities) {
        if (named == severity.second) {
            return severity.first;
        }
    }
    return std::nullopt;
}

std::string severityNames()
{
    std::string names;
    for (const auto& [name, level] : kSeverities) {
        names += std::string(name) + " (" + std::to_string(level) + "), ";
    }
    return names + "or a number from " + std::to_string(kLeastLevel) + " to " +
           std::to_string(kMostLevel);
}

std::optional<std::uint64_t> wholeNumber(const std::string& text, std::uint64_t least,
                                         std::uint64_t most)
{
    std::uint64_t number = 0;
    const auto* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < least || number > most ||
        text != std::to_string(number)) {
        return std::nullopt;
    }
    return number;
}

std::string parameterRefusal(const std::string& value)
{
    if (value.find(kSeparator) != std::string::npos) {
        return "\"" + value +
               "\" contains a comma, which would make several parameters of it; write &#44; for a "
               "comma within a parameter";
    }
    if (value.find('\0') != std::string::npos) {
        return "a parameter cannot contain a NUL";
    }
    return {};
}

std::string joinedParameters(const std::vector<std::string>& values)
{
    std::string joined;
    for (const auto& value : values) {
        joined += (&value == &values.front() ? "" : std::string(1, kSeparator)) + value;
    }
    return joined;
}

}  // namespace talvik::ctl
