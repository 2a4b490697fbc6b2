#pragma once

#include <json/value.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace talvik::ctl {

/// One element of a scenario file: knows the file and where in it it is, so that every refusal
/// names both. Valid as long as the document that it lies in.
class ScenarioElement {
public:
    ScenarioElement(const Json::Value& value, const std::string& file, std::string place)
        : value_(value),
          file_(file),
          place_(std::move(place))
    {
    }

    /// Throws `StartupError`.
    [[noreturn]] void refuse(const std::string& reason) const;

    /// Refuses anything but an object with all of `required` and nothing beyond `optional`.
    void expectObject(std::initializer_list<const char*> required,
                      std::initializer_list<const char*> optional) const;

    /// The name of the only member; refuses anything but an object with one.
    std::string onlyMember() const;

    bool has(const char* member) const { return value_.isMember(member); }
    ScenarioElement at(const std::string& member) const;
    const std::string& place() const { return place_; }

    /// What this is; each refuses a value of another kind.
    std::vector<ScenarioElement> list() const;
    std::string text() const;
    std::uint64_t number(std::uint64_t least, std::uint64_t most) const;

    /// A text, or a number as text.
    std::string textOrNumber() const;

private:
    const Json::Value& value_;
    const std::string& file_;
    std::string place_;
};

/// The strict JSON of `file`. Throws `StartupError` that names the file.
Json::Value parseScenarioFile(const std::string& file);

}  // namespace talvik::ctl
