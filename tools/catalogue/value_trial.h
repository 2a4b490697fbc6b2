#pragma once

#include "tools/catalogue/catalogue_files.h"

#include <optional>
#include <string>

namespace talvik::ctl {

/// What becomes of an alarm's texts when a value with "#" in it comes; asked of the module.
struct ValueTrial {
    std::optional<Member> refused;  ///< the text that the module refuses because of it
    bool isEndless = false;         ///< the value leads back to itself
};

/// Fills the texts of `definition` with `field` for parameter `position`.
ValueTrial tryValue(const Definition& definition, unsigned position, const std::string& field);

}  // namespace talvik::ctl
