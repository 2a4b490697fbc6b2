#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace talvik::ctl {

/// A list of trap destinations: its text, and what messages call it.
struct TrapListSource {
    const std::string& text;
    const std::string& name;
};

/// Throws `StartupError` that names the list.
[[noreturn]] void refuseTrapList(const std::string& name, const std::string& reason);

/// A value of a list of trap destinations: knows where it stands, so that every refusal says so.
/// Valid as long as the document and the source are.
class TrapListElement {
public:
    /// `value` was read from the text of `source`; `place` is empty for the whole list.
    TrapListElement(const Json::Value& value, const TrapListSource& source, std::string place)
        : value_(value),
          source_(source),
          place_(std::move(place))
    {
    }

    /// Throws `StartupError` that names the list, the line and the place.
    [[noreturn]] void refuse(const std::string& reason) const;

    bool isText() const { return value_.isString(); }
    bool isArray() const { return value_.isArray(); }
    bool isObject() const { return value_.isObject(); }
    bool isNull() const { return value_.isNull(); }
    bool has(const std::string& member) const { return value_.isMember(member); }

    /// Of an array.
    std::size_t size() const { return value_.size(); }

    /// Of an object that has it.
    TrapListElement at(const std::string& member) const;
    const std::string& place() const { return place_; }

    /// Refuses an object that has other members than `known`.
    void expectMembers(const std::set<std::string>& known) const;

    /// What this is; each refuses a value of another kind. `allowed` says what is expected.
    std::vector<TrapListElement> list() const;
    std::string text(const std::string& allowed) const;

    /// 1 to `most`.
    std::uint32_t number(std::uint32_t most) const;

private:
    std::string hint() const;

    const Json::Value& value_;
    const TrapListSource& source_;
    std::string place_;
};

}  // namespace talvik::ctl
