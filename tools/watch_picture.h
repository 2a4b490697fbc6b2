#pragma once

#include "tools/text_table.h"
#include "tools/watcher.h"

#include <cstddef>
#include <string>
#include <vector>

namespace talvik::ctl {

/// What a terminal of `rows` lines shows after a look, with the last line free for the cursor. How
/// many alarms and receivers there are comes first; then what is new, and the tables share the
/// rest. Of what has no room the number is told. The alarms with the greatest serial numbers are
/// shown, and the receivers that are in trouble before the others.
std::string watchPicture(const Look& look, const std::vector<Change>& changes,
                         const TableStyle& style, std::size_t rows);

}  // namespace talvik::ctl
