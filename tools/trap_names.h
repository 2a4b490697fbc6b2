#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace talvik::ctl {

/// "v1", "v2c" or "v3"; an unknown code as its number.
std::string trapVersionName(std::uint32_t code);
std::optional<std::uint32_t> trapVersionCode(const std::string& name);

/// "alarm", "no-alarm", "alarm-legacy" or "alarm-own-oid"; an unknown code as its number.
std::string trapTypeName(std::uint32_t code);

/// Of a name, or of a plain number whose meaning the agent judges.
std::optional<std::uint32_t> trapTypeCode(const std::string& nameOrNumber);

/// A plain decimal number from 1 to 2147483647, without sign, blanks or leading zeros.
std::optional<std::uint32_t> plainNumber(const std::string& text);

}  // namespace talvik::ctl
