#pragma once

#include "host/snmp/mib_description.h"

#include <json/value.h>

#include <initializer_list>
#include <string>

namespace talvik {

/// One reading of one MIB description file: knows the file and where in it it is, so that every
/// refusal names both.
class MibDescriptionReader {
public:
    explicit MibDescriptionReader(const std::string& path) : path_(path) {}

    /// The description, checked as `MibDescription::load` says.
    MibDescription read() const;

private:
    struct Element;

    [[noreturn]] void refuse(const std::string& place, const std::string& reason) const;
    Json::Value parse() const;
    void expectObject(const Element& element, std::initializer_list<const char*> required,
                      std::initializer_list<const char*> optional) const;
    std::vector<Element> list(const Element& parent, const char* member) const;
    std::string text(const Element& parent, const char* member) const;
    std::string name(const Element& parent) const;
    long number(const Element& parent, const char* member, long low, long high) const;
    ObjectId objectId(const Element& parent, const char* member) const;
    Syntax syntax(const Element& parent) const;
    Access access(const Element& parent) const;

    MibTable table(const Element& element) const;
    MibColumn column(const Element& element) const;
    MibScalar scalar(const Element& element) const;
    std::map<long, std::string> enumeration(const Element& column, Syntax syntax) const;
    std::vector<std::size_t> index(const Element& element, const MibTable& table) const;
    void checkColumns(const Element& element, const MibTable& table) const;
    void checkObjectIds(const MibDescription& description) const;

    std::string path_;
};

}  // namespace talvik
