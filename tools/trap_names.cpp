#include "tools/trap_names.h"

#include "tools/trap_destination.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace talvik::ctl {

namespace {

struct Name {
    std::uint32_t code;
    const char* text;
};

constexpr Name kVersions[] = {{1, "v1"}, {2, "v2c"}, {3, "v3"}};
constexpr Name kTypes[] = {
    {1, "alarm"}, {2, "no-alarm"}, {3, "alarm-legacy"}, {7, "alarm-own-oid"}};

template <std::size_t N>
std::string nameOf(const Name (&names)[N], std::uint32_t code)
{
    for (const auto& name : names) {
        if (name.code == code) {
            return name.text;
        }
    }
    return std::to_string(code);
}

template <std::size_t N>
std::optional<std::uint32_t> codeOf(const Name (&names)[N], const std::string& text)
{
    for (const auto& name : names) {
        if (name.text == text) {
            return name.code;
        }
    }
    return std::nullopt;
}

}  // namespace

std::string trapVersionName(std::uint32_t code)
{
    return nameOf(kVersions, code);
}

std::optional<std::uint32_t> trapVersionCode(const std::string& name)
{
    return codeOf(kVersions, name);
}

std::string trapTypeName(std::uint32_t code)
{
    return nameOf(kTypes, code);
}

std::optional<std::uint32_t> trapTypeCode(const std::string& nameOrNumber)
{
    const auto code = codeOf(kTypes, nameOrNumber);
    return code ? code : plainNumber(nameOrNumber);
}

std::optional<std::uint32_t> plainNumber(const std::string& text)
{
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end || text.front() == '0' ||
        number > kMaxTrapIndex) {
        return std::nullopt;
    }
    return number;
}

}  // namespace talvik::ctl
