#include "tools/trap_import_element.h"

#include "host/startup_error.h"
#include "tools/safe_text.h"

#include <algorithm>

namespace talvik::ctl {

void refuseTrapList(const std::string& name, const std::string& reason)
{
    throw StartupError(printable("receiver list " + name + ": " + reason));
}

void TrapListElement::refuse(const std::string& reason) const
{
    const auto start = source_.text.begin();
    const auto line = 1 + std::count(start, start + value_.getOffsetStart(), '\n');
    refuseTrapList(source_.name + ", line " + std::to_string(line) +
                       (place_.empty() ? "" : ", " + place_),
                   reason);
}

TrapListElement TrapListElement::at(const std::string& member) const
{
    return {value_[member], source_, place_.empty() ? member : place_ + "." + member};
}

void TrapListElement::expectMembers(const std::set<std::string>& known) const
{
    for (const auto& name : value_.getMemberNames()) {
        if (known.count(name) != 0) {
            continue;
        }
        std::string names;
        for (const auto& one : known) {
            names += (names.empty() ? "" : ", ") + one;
        }
        at(name).refuse("unknown member; known are " + names);
    }
}

std::vector<TrapListElement> TrapListElement::list() const
{
    if (!isArray()) {
        refuse("expected an array of destinations");
    }
    std::vector<TrapListElement> elements;
    for (Json::ArrayIndex i = 0; i < value_.size(); ++i) {
        elements.emplace_back(value_[i], source_, place_ + "[" + std::to_string(i) + "]");
    }
    return elements;
}

std::string TrapListElement::text(const std::string& allowed) const
{
    if (!isText()) {
        refuse(allowed + ", as a text" + hint());
    }
    return value_.asString();
}

std::uint32_t TrapListElement::number(std::uint32_t most) const
{
    // A number with a point is none, even where it is whole.
    const bool whole = value_.type() == Json::intValue || value_.type() == Json::uintValue;
    if (!whole || !value_.isUInt64() || value_.asUInt64() < 1 || value_.asUInt64() > most) {
        refuse("expected a whole number from 1 to " + std::to_string(most) + hint());
    }
    return static_cast<std::uint32_t>(value_.asUInt64());
}

/// `talvikctl trap list --json` prints null for what the agent did not show.
std::string TrapListElement::hint() const
{
    return isNull() ? "; where an agent did not show it, list again with a user or community that "
                      "sees all columns"
                    : "";
}

}  // namespace talvik::ctl
