#include "tools/text_table.h"

#include "tools/safe_text.h"

#include <algorithm>
#include <cstddef>

namespace talvik::ctl {

namespace {

std::vector<std::size_t> widthsOf(const std::vector<TableLine>& lines)
{
    std::vector<std::size_t> widths;
    for (const auto& line : lines) {
        widths.resize(std::max(widths.size(), line.size()));
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], shownLength(line[i]));
        }
    }
    return widths;
}

}  // namespace

std::string alignedTable(const std::vector<TableLine>& lines)
{
    const auto widths = widthsOf(lines);
    std::string text;
    for (const auto& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            text += line[i];
            if (i + 1 < line.size()) {
                text.append(widths[i] - shownLength(line[i]) + 2, ' ');
            }
        }
        text += '\n';
    }
    return text;
}

}  // namespace talvik::ctl
