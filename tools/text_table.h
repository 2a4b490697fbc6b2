#pragma once

#include "tools/tone.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace talvik::ctl {

/// A printable text of a table.
struct TableCell {
    // NOLINTBEGIN(google-explicit-constructor): most cells are nothing but their text
    TableCell(std::string shown, Tone itsTone = Tone::Plain) : text(std::move(shown)), tone(itsTone)
    {
    }
    TableCell(const char* shown) : text(shown) {}
    // NOLINTEND(google-explicit-constructor)

    std::string text;
    Tone tone = Tone::Plain;
};

/// A line of a table: one cell a column.
using TableLine = std::vector<TableCell>;

/// What a table is printed on.
struct TableStyle {
    std::size_t columns = 0;  ///< of the terminal; 0 when a line may be as long as it likes
    bool colors = false;
};

/// A column whose texts may be cut.
struct CuttableColumn {
    std::size_t number = 0;  ///< from 0
    std::size_t least = 0;   ///< it is not cut below that; nor below its heading
};
using Columns = std::vector<CuttableColumn>;

/// `lines`, all of the same length and the first one the heading, with their columns under each
/// other and two blanks between. Where they do not fit `style`, the texts of `cuttable` are cut,
/// those that are widest beyond their least width first. If that is not enough, each line is folded
/// and goes on below itself, indented. What is then still too wide by itself is cut, too.
std::string alignedTable(const std::vector<TableLine>& lines, const TableStyle& style = {},
                         const Columns& cuttable = {});

}  // namespace talvik::ctl
