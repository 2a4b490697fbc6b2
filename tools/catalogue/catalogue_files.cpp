#include "tools/catalogue/catalogue_files.h"

#include "tools/catalogue/finding_kinds.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <set>
#include <utility>

namespace talvik::ctl {

namespace {

const char* typeName(const Json::Value& value)
{
    switch (value.type()) {
    case Json::nullValue:
        return "null";
    case Json::intValue:
    case Json::uintValue:
    case Json::realValue:
        return "a number";
    case Json::booleanValue:
        return "true or false";
    case Json::stringValue:
        return "a string";
    case Json::arrayValue:
        return "an array";
    case Json::objectValue:
        break;
    }
    return "an object";
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

/// Reads the elements of one array of a file, and knows what is lost when one is of a wrong type.
class ArrayReader {
public:
    ArrayReader(const JsonDocument& file, Findings& findings, const char* arrayName)
        : file_(file),
          findings_(findings),
          arrayName_(arrayName)
    {
    }

    /// Follows the member names down from the root; null when one is missing. `refusal` is what the
    /// module says of a missing one.
    const Json::Value* find(const std::vector<std::pair<const char*, const char*>>& steps)
    {
        const auto* value = &file_.root();
        for (const auto& [name, refusal] : steps) {
            const auto* next =
                value->isObject() ? value->find(name, name + std::strlen(name)) : nullptr;
            if (next == nullptr) {
                findings_.add(kind::kMissingElement, file_.placeOf(*value),
                              "there is no " + quoted(name) +
                                  " in here, so the module loads no alarm at all (\"" + refusal +
                                  "\")",
                              "add it; the layout is in docs/alarm-catalogue.md");
                return nullptr;
            }
            value = next;
        }
        return value;
    }

    bool isArray(const Json::Value& value, const char* name)
    {
        if (value.isArray()) {
            return true;
        }
        findings_.add(kind::kWrongType, file_.placeOf(value),
                      quoted(name) + " is " + typeName(value) +
                          ", so the module reads nothing from it",
                      "make it an array of objects");
        return false;
    }

    /// Sets what the messages count from: `element` is number `index` of `array`.
    void at(const Json::Value& array, Json::ArrayIndex index) { lost_ = array.size() - index; }

    /// False for an element that the module skips or fails at.
    bool isObject(const Json::Value& element)
    {
        if (element.isNull()) {
            findings_.add(kind::kNullElement, file_.placeOf(element), "the module skips this null",
                          "remove it");
            return false;
        }
        if (!element.isObject()) {
            addWrongType(element, "an element of " + quoted(arrayName_), "an object");
            return false;
        }
        return true;
    }

    CatalogueText text(const Json::Value& element, const char* name)
    {
        CatalogueText read;
        const auto* value = element.find(name, name + std::strlen(name));
        if (value == nullptr) {
            return read;
        }
        if (!value->isString()) {
            addWrongType(*value, quoted(name), "a string, in quotes");
            read.isWrong = true;
            return read;
        }
        read.value = value;
        read.text = value->asCString();
        return read;
    }

    /// A text without which the module skips `what` in silence.
    CatalogueText requiredText(const Json::Value& element, const char* name, const char* what)
    {
        const auto* value = element.find(name, name + std::strlen(name));
        if (value != nullptr && !value->isNull()) {
            return text(element, name);
        }
        findings_.add(kind::kIncompleteEnumeration, file_.placeOf(element),
                      std::string("there is no ") + quoted(name) +
                          " in here, so the module skips this " + what,
                      "add it as a string");
        return {};
    }

    void addWrongType(const Json::Value& value, const std::string& what, const std::string& wanted)
    {
        findings_.add(kind::kWrongType, file_.placeOf(value),
                      what + " is " + typeName(value) +
                          ": the module stops reading the file here and loses this element of " +
                          quoted(arrayName_) + " and the " + std::to_string(lost_ - 1) +
                          " behind it",
                      "make it " + wanted);
    }

    void addUnknownMembers(const Json::Value& element, const char* const* known, std::size_t count)
    {
        for (const auto& name : element.getMemberNames()) {
            if (std::find(known, known + count, name) == known + count) {
                findings_.add(kind::kUnknownMember, file_.placeOf(element[name]),
                              "the module does not read a member " + quoted(name),
                              "correct its name if it is a slip; otherwise it may stay");
            }
        }
    }

private:
    const JsonDocument& file_;
    Findings& findings_;
    const char* arrayName_;
    Json::ArrayIndex lost_ = 1;
};

Definition readId(ArrayReader& reader, const Json::Value& element)
{
    Definition definition;
    definition.element = &element;
    auto& text = definition.texts.at(static_cast<std::size_t>(Member::EventId));
    text = reader.text(element, nameOf(Member::EventId));
    definition.id = static_cast<std::uint64_t>(std::strtoll(text.text.c_str(), nullptr, 10));
    return definition;
}

void readTexts(ArrayReader& reader, Definition& definition)
{
    for (std::size_t member = 0; member < kMemberNames.size(); ++member) {
        if (member != static_cast<std::size_t>(Member::EventId)) {
            definition.texts.at(member) = reader.text(*definition.element, kMemberNames.at(member));
        }
    }
}

Literal readLiteral(ArrayReader& reader, const Json::Value& member)
{
    constexpr const char* kNames[] = {"value", "name"};
    reader.addUnknownMembers(member, kNames, std::size(kNames));
    return {reader.requiredText(member, "value", "value"),
            reader.requiredText(member, "name", "value")};
}

Enumeration readEnumeration(ArrayReader& reader, const Json::Value& element)
{
    constexpr const char* kNames[] = {"name", "enum_member"};
    reader.addUnknownMembers(element, kNames, std::size(kNames));
    Enumeration read;
    read.element = &element;
    read.name = reader.requiredText(element, "name", "enumeration");
    if (read.name.value == nullptr && !read.name.isWrong) {
        return read;  // the module does not look at its members
    }
    const auto& members = element["enum_member"];
    read.hasWrongMembers = element.isMember("enum_member") && !members.isArray();
    if (members.isObject() && !members.empty()) {
        reader.addWrongType(members, "\"enum_member\"", "an array of objects");
    } else if (read.hasWrongMembers) {
        reader.isArray(members, "enum_member");
    }
    if (read.hasWrongMembers) {
        return read;
    }
    for (const auto& member : members) {
        if (reader.isObject(member)) {
            read.literals.push_back(readLiteral(reader, member));
        }
    }
    return read;
}

}  // namespace

std::string Definition::subject() const
{
    return of(Member::EventId).value == nullptr ? "this definition"
                                                : "alarm " + of(Member::EventId).text;
}

std::string Definition::subject(Member member) const
{
    return quoted(nameOf(member)) + " of " + subject();
}

Place Definition::place(const JsonDocument& file, Member member) const
{
    const auto* value = of(member).value;
    return file.placeOf(value == nullptr ? *element : *value);
}

std::vector<Definition> readDefinitions(const JsonDocument& file, Findings& findings)
{
    ArrayReader reader(file, findings, "param");
    std::vector<Definition> definitions;
    const auto* param = reader.find({{"root", "root element is invalid, should be (root)."},
                                     {"eventDefinition", "parse eventDefinition element failed!"},
                                     {"param", "parse eventDefinition element failed!"}});
    if (param == nullptr || !reader.isArray(*param, "param")) {
        return definitions;
    }
    std::set<std::uint64_t> ids;
    for (Json::ArrayIndex i = 0; i < param->size(); ++i) {
        const auto& element = (*param)[i];
        reader.at(*param, i);
        if (!reader.isObject(element)) {
            continue;
        }
        reader.addUnknownMembers(element, kMemberNames.data(), kMemberNames.size());
        auto definition = readId(reader, element);
        const bool hasId = !definition.of(Member::EventId).isWrong;
        definition.isIgnored = hasId && !ids.insert(definition.id).second;
        if (!definition.isIgnored) {
            readTexts(reader, definition);
        }
        definitions.push_back(std::move(definition));
    }
    return definitions;
}

std::vector<Enumeration> readEnumerations(const JsonDocument& file, Findings& findings)
{
    ArrayReader reader(file, findings, "param_enum");
    std::vector<Enumeration> enumerations;
    const auto* types = reader.find({{"alarm", "root element is invalid, should be (alarm)."},
                                     {"param_enum", "parse param_enum element failed!"}});
    if (types == nullptr || !reader.isArray(*types, "param_enum")) {
        return enumerations;
    }
    for (Json::ArrayIndex i = 0; i < types->size(); ++i) {
        reader.at(*types, i);
        if (reader.isObject((*types)[i])) {
            enumerations.push_back(readEnumeration(reader, (*types)[i]));
        }
    }
    return enumerations;
}

}  // namespace talvik::ctl
