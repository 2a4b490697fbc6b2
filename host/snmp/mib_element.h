#pragma once

#include "host/snmp/json_place.h"
#include "host/snmp/object_id.h"

#include <json/value.h>

#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// One element of a MIB description file: a place in it, and what such files are made of. Valid as
/// long as the document that it lies in.
class MibElement : public JsonPlace {
public:
    /// The whole `document` of `file`.
    MibElement(const Json::Value& document, const std::string& file);

    MibElement at(const std::string& member) const { return MibElement(JsonPlace::at(member)); }

    /// What the member is; each refuses a value of another kind.
    std::vector<MibElement> list(const char* member) const;
    std::string text(const char* member) const;
    long number(const std::string& member, long low, long high) const;
    bool flag(const char* member) const { return at(member).JsonPlace::flag(); }
    ObjectId objectId(const char* member) const;

    /// The names in this element, an object that is not empty.
    std::vector<std::string> memberNames() const;

    /// This element as a text or a number itself.
    std::string asText(const std::string& expected) const;
    long asNumber(long low, long high) const;

private:
    explicit MibElement(JsonPlace place) : JsonPlace(std::move(place)) {}
};

/// The strict JSON of `file`. Throws `StartupError` that names the file.
Json::Value parseMibFile(const std::string& file);

}  // namespace talvik
