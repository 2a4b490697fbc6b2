#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace talvik::ctl {

/// What RAISE_ALARM and REPORT_EVENT are told.
struct AlarmReport {
    std::uint64_t id = 0;
    std::uint32_t severity = 0;                        ///< as the back end counts
    std::string parameters;                            ///< joined as the catalogue expects them
    std::optional<std::uint64_t> time = std::nullopt;  ///< seconds since 1970; now when absent
};

constexpr const char* kAlarmSeverity = "major";  ///< of alarms, unless something else is said
constexpr const char* kEventSeverity = "info";   ///< of events

/// The back end's level for a severity's name, or for the level itself as a number. Levels and
/// names are those that the module tells managers apart by: info 2, warning 3, minor 4, major 5,
/// critical 6; 7 is critical too.
std::optional<std::uint32_t> severityLevel(const std::string& nameOrNumber);

/// The name of a level, if it has one: also of 7, which no name stands for.
std::optional<std::string> severityName(std::uint32_t level);

/// The names and numbers that `severityLevel` knows, for people.
std::string severityNames();

/// A plain decimal number from `least` to `most`, without sign, blanks or leading zeros.
std::optional<std::uint64_t> wholeNumber(const std::string& text, std::uint64_t least,
                                         std::uint64_t most);

/// Why `value` cannot be one of an alarm's values; empty when it can.
std::string parameterRefusal(const std::string& value);

/// Values that `parameterRefusal` has nothing against, as the catalogue expects them.
std::string joinedParameters(const std::vector<std::string>& values);

}  // namespace talvik::ctl
