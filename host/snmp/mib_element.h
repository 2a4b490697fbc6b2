#pragma once

#include "host/snmp/object_id.h"

#include <json/value.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace talvik {

/// One element of a MIB description file: knows the file and where in it it is, so that every
/// refusal names both. Valid as long as the document that it lies in.
class MibElement {
public:
    /// The whole `document` of `file`.
    MibElement(const Json::Value& document, const std::string& file)
        : MibElement(document, file, "")
    {
    }

    /// Throws `StartupError` that names file, place and `reason`.
    [[noreturn]] void refuse(const std::string& reason) const;

    /// Refuses anything but an object with all of `required` and nothing beyond `optional`.
    void expectObject(std::initializer_list<const char*> required,
                      std::initializer_list<const char*> optional) const;

    bool has(const char* member) const { return value_.isMember(member); }
    MibElement at(const std::string& member) const;

    /// What the member is; each refuses a value of another kind.
    std::vector<MibElement> list(const char* member) const;
    std::string text(const char* member) const;
    long number(const std::string& member, long low, long high) const;
    bool flag(const char* member) const;
    ObjectId objectId(const char* member) const;

    /// The names in this element, an object that is not empty.
    std::vector<std::string> memberNames() const;

    /// This element as a text or a number itself.
    std::string asText(const std::string& expected) const;
    long asNumber(long low, long high) const;

private:
    MibElement(const Json::Value& value, const std::string& file, std::string place)
        : value_(value),
          file_(file),
          place_(std::move(place))
    {
    }

    const Json::Value& value_;
    const std::string& file_;
    std::string place_;  ///< "tables[0].columns[2]"
};

/// The strict JSON of `file`. Throws `StartupError` that names the file.
Json::Value parseMibFile(const std::string& file);

}  // namespace talvik
