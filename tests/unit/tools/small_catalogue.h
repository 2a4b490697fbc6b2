#pragma once

#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// Members of a definition that differ from the ordinary one: name and JSON text, empty to leave
/// the member out.
using Changes = std::vector<std::pair<std::string, std::string>>;

/// A definition with nothing to find, apart from `changes`. Each member is on a line of its own, in
/// the order of this function, left out or not.
inline std::string definition(const Changes& changes = {})
{
    Changes members = {{"eventID", "\"1\""},    {"name", "\"N\""},     {"reason", "\"R\""},
                       {"suggestion", "\"S\""}, {"detail", "\"D\""},   {"location", "\"L\""},
                       {"alarmOid", "\"\""},    {"paramDesc", "\"\""}, {"more", ""}};
    for (const auto& [name, json] : changes) {
        for (auto& member : members) {
            if (member.first == name) {
                member.second = json;
            }
        }
    }
    std::string text = "{\n";
    for (const auto& [name, json] : members) {
        text += json.empty() ? "\n" : "\"" + name + "\": " + json + ",\n";
    }
    return text + "}";
}

/// A file with these elements; the first begins in line 2, so that its "eventID" is in line 3.
inline std::string definitions(const std::vector<std::string>& elements)
{
    std::string text = "{\"root\": {\"eventDefinition\": {\"param\": [\n";
    for (const auto& element : elements) {
        text += element + ",\n";
    }
    return text + "]}}}\n";
}

inline std::string alarm(const Changes& changes = {})
{
    return definitions({definition(changes)});
}

/// A file with this text as the array of enumerations.
inline std::string enumerations(const std::string& array)
{
    return "{\"alarm\": {\"param_enum\": " + array + "}}\n";
}

/// The lines of the first definition's members.
constexpr std::size_t kElement = 2;
constexpr std::size_t kEventId = 3;
constexpr std::size_t kName = 4;
constexpr std::size_t kReason = 5;
constexpr std::size_t kSuggestion = 6;
constexpr std::size_t kDetail = 7;
constexpr std::size_t kLocation = 8;
constexpr std::size_t kAlarmOid = 9;
constexpr std::size_t kParamDesc = 10;
constexpr std::size_t kMore = 11;
/// How many lines one definition takes.
constexpr std::size_t kLines = 11;

}  // namespace talvik::test
