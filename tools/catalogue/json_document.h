#pragma once

#include "tools/catalogue/finding.h"

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

namespace talvik::ctl {

/// A JSON file read as the module reads it (comments and trailing commas are allowed), with the
/// place of every value. Values are looked at where they are: a `Json::Value` knows its offset.
class JsonDocument {
public:
    /// Throws `StartupError` when the file cannot be read. Whether it is JSON is `isJson`.
    static JsonDocument load(const std::string& path);

    /// The same for a text that is at hand; `path` is what findings name.
    JsonDocument(std::string path, std::string text);

    /// False, with the reason in `findings`, when the module cannot read the file at all. Adds what
    /// the module puts up with in silence, too.
    bool isJson(Findings& findings) const;

    /// Null unless the file is JSON.
    const Json::Value& root() const { return root_; }

    const std::string& path() const { return path_; }

    /// Where `value`, a part of `root`, starts.
    Place placeOf(const Json::Value& value) const;

    /// Where character `index` (in bytes) of the string `value` stands; behind its last character
    /// for an index at its end.
    Place placeIn(const Json::Value& value, std::size_t index) const;

private:
    Place placeAt(std::size_t offset) const;
    Place placeAt(std::size_t line, std::size_t byteColumn) const;
    bool parse(const Json::CharReaderBuilder& builder, Json::Value& root,
               std::string& errors) const;

    /// The first of JsonCpp's `errors`, of the form "* Line 3, Column 4\n  Reason\n".
    void addReaderError(const std::string& errors, Findings& findings) const;

    std::size_t charactersBefore(std::size_t offset) const;

    std::string path_;
    std::string text_;                     // without a byte order mark, which JsonCpp skips
    std::vector<std::size_t> starts_;      // offset of each line
    std::vector<std::size_t> characters_;  // before each block of the text: lines can be long
    Json::Value root_;
    std::string errors_;  // JsonCpp's; empty for JSON
};

}  // namespace talvik::ctl
