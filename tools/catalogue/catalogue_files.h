#pragma once

#include "tools/catalogue/json_document.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// The two files as the module reads them, with their places.
namespace talvik::ctl {

/// The members of a definition that the module reads.
enum class Member { EventId, Name, Reason, Suggestion, Detail, Location, AlarmOid, ParamDesc };

constexpr std::array<const char*, 8> kMemberNames = {
    "eventID", "name", "reason", "suggestion", "detail", "location", "alarmOid", "paramDesc"};

inline const char* nameOf(Member member)
{
    return kMemberNames.at(static_cast<std::size_t>(member));
}

/// A string of the file.
struct CatalogueText {
    const Json::Value* value = nullptr;  ///< null when the member is missing or no string
    bool isWrong = false;                ///< it is there and no string
    std::string text;                    ///< as the module sees it: up to the first NUL
};

struct Definition {
    const Json::Value* element = nullptr;
    std::uint64_t id = 0;    ///< as the module reads it; 0 for none
    bool isIgnored = false;  ///< the id is defined before, so the module looks no further
    std::array<CatalogueText, kMemberNames.size()> texts;

    const CatalogueText& of(Member member) const
    {
        return texts.at(static_cast<std::size_t>(member));
    }

    /// How messages call it: alarm 4711.
    std::string subject() const;

    /// How messages call one of its texts: "detail" of alarm 4711.
    std::string subject(Member member) const;

    /// Where the member is, or the definition when it is not there.
    Place place(const JsonDocument& file, Member member) const;
};

/// One value of an enumeration.
struct Literal {
    CatalogueText value;
    CatalogueText name;
};

struct Enumeration {
    const Json::Value* element = nullptr;
    CatalogueText name;
    bool hasWrongMembers = false;  ///< "enum_member" is there and no array
    std::vector<Literal> literals;
};

/// The definitions of the file; elements behind one of a wrong type, which the module loses, are
/// among them. Adds what keeps the module from reading one.
std::vector<Definition> readDefinitions(const JsonDocument& file, Findings& findings);

/// The same for the enumerations.
std::vector<Enumeration> readEnumerations(const JsonDocument& file, Findings& findings);

}  // namespace talvik::ctl
