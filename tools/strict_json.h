#pragma once

#include <json/value.h>

#include <optional>
#include <string>

namespace talvik::ctl {

/// The value that `text` is in JSON as its standard has it: no comments, no member twice, nothing
/// behind it. Without one, `refusal` says in one line why, with line and column.
std::optional<Json::Value> strictJson(const std::string& text, std::string& refusal);

}  // namespace talvik::ctl
