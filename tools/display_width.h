#pragma once

#include <cstdint>

namespace talvik::ctl {

/// How many columns of a terminal a character takes: 0 for a mark that stands on the one before it,
/// 2 for a wide one, otherwise 1. Control characters are not asked for.
unsigned displayWidth(std::uint32_t code);

}  // namespace talvik::ctl
