#pragma once

#include <json/value.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// A value within a JSON file: knows the file and where in it it is, so that every refusal
/// names both. Valid as long as the document that it lies in.
class JsonPlace {
public:
    /// The whole `document`; `file` is what messages call it.
    JsonPlace(const Json::Value& document, std::string file)
        : JsonPlace(document, std::move(file), "")
    {
    }

    /// Throws `StartupError` that names file, place and `reason`.
    [[noreturn]] void refuse(const std::string& reason) const;

    /// Refuses anything but an object with all of `required` and nothing beyond `optional`.
    void expectObject(std::initializer_list<const char*> required,
                      std::initializer_list<const char*> optional) const;

    bool has(const char* member) const { return value_.isMember(member); }
    JsonPlace at(const std::string& member) const;

    /// The elements of the array `member`; none where there is no such member.
    std::vector<JsonPlace> list(const char* member) const;

    /// What this value is; each refuses a value of another kind.
    std::string text(std::size_t least, std::size_t most) const;
    int number(int low, int high) const;
    bool flag() const;

    const std::string& place() const { return place_; }
    const Json::Value& value() const { return value_; }

private:
    JsonPlace(const Json::Value& value, std::string file, std::string place)
        : value_(value),
          file_(std::move(file)),
          place_(std::move(place))
    {
    }

    const Json::Value& value_;
    std::string file_;
    std::string place_;  ///< "receivers[0].port"
};

/// The strict JSON `text`, which comes from `file`: no comments, no member twice. Throws
/// `StartupError`.
Json::Value parseStrictJson(const std::string& text, const std::string& file);

}  // namespace talvik
