#include "host/snmp/json_place.h"

#include "host/startup_error.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>

namespace talvik {

namespace {

/// JsonCpp reports over several lines; a log line wants one.
std::string joinLines(const std::string& text)
{
    std::string joined;
    for (const char c : text) {
        const bool blank = c == '\n' || c == ' ' || c == '*';
        if (!blank) {
            joined += c;
        } else if (!joined.empty() && joined.back() != ' ') {
            joined += ' ';
        }
    }
    while (!joined.empty() && joined.back() == ' ') {
        joined.pop_back();
    }
    return joined;
}

}  // namespace

void JsonPlace::refuse(const std::string& reason) const
{
    throw StartupError(file_ + (place_.empty() ? "" : ", " + place_) + ": " + reason);
}

void JsonPlace::expectObject(std::initializer_list<const char*> required,
                             std::initializer_list<const char*> optional) const
{
    if (!value_.isObject()) {
        refuse("expected an object");
    }
    for (const char* name : required) {
        if (!value_.isMember(name)) {
            refuse("lacks the member \"" + std::string(name) + "\"");
        }
    }
    const auto isKnown = [&](const std::string& name) {
        return std::find(required.begin(), required.end(), name) != required.end() ||
               std::find(optional.begin(), optional.end(), name) != optional.end();
    };
    for (const auto& name : value_.getMemberNames()) {
        if (!isKnown(name)) {
            refuse("unknown member \"" + name + "\"");
        }
    }
}

JsonPlace JsonPlace::at(const std::string& member) const
{
    return {value_[member], file_, place_.empty() ? member : place_ + "." + member};
}

std::vector<JsonPlace> JsonPlace::list(const char* member) const
{
    std::vector<JsonPlace> elements;
    if (!has(member)) {
        return elements;
    }
    const auto all = at(member);
    if (!all.value_.isArray()) {
        all.refuse("expected an array");
    }
    for (Json::ArrayIndex i = 0; i < all.value_.size(); ++i) {
        elements.push_back(
            JsonPlace(all.value_[i], file_, all.place_ + "[" + std::to_string(i) + "]"));
    }
    return elements;
}

std::string JsonPlace::text(std::size_t least, std::size_t most) const
{
    const auto text = value_.isString() ? value_.asString() : std::string();
    if (!value_.isString() || text.size() < least || text.size() > most) {
        refuse("expected a text of " + std::to_string(least) + " to " + std::to_string(most) +
               " octets");
    }
    return text;
}

int JsonPlace::number(int low, int high) const
{
    if (!value_.isInt() || value_.asInt() < low || value_.asInt() > high) {
        refuse("expected a number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return value_.asInt();
}

bool JsonPlace::flag() const
{
    if (!value_.isBool()) {
        refuse("expected true or false");
    }
    return value_.asBool();
}

Json::Value parseStrictJson(const std::string& text, const std::string& file)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value document;
    std::string errors;
    try {
        if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
            throw StartupError(file + ": " + joinLines(errors));
        }
    } catch (const Json::Exception& error) {  // nesting beyond the reader's limit
        throw StartupError(file + ": " + joinLines(error.what()));
    }
    return document;
}

}  // namespace talvik
