#pragma once

#include "tools/text_table.h"

#include <cstddef>
#include <string>
#include <vector>

namespace talvik::ctl {

/// `text` in lines that fit `style`, broken at blanks where that is possible; those behind the
/// first begin with `indent` blanks. Colours take no room.
std::vector<std::string> foldedLines(const std::string& text, const TableStyle& style,
                                     std::size_t indent = 0);

/// The same, each line with a line feed.
std::string foldedText(const std::string& text, const TableStyle& style, std::size_t indent);

/// A name in a column of its own and beside it what it stands for.
std::string namedValue(const std::string& name, const std::string& value, const TableStyle& style);

}  // namespace talvik::ctl
