#pragma once

#include <string>
#include <vector>

namespace talvik::ctl {

/// A line of a table: printable texts, one a column.
using TableLine = std::vector<std::string>;

/// `lines`, all of the same length, with their columns under each other and two blanks between.
std::string alignedTable(const std::vector<TableLine>& lines);

}  // namespace talvik::ctl
