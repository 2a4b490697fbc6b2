#include "tools/text_table.h"

#include "tools/safe_text.h"

#include <algorithm>
#include <numeric>

namespace talvik::ctl {

namespace {

constexpr std::size_t kGap = 2;

using Widths = std::vector<std::size_t>;

Widths widthsOf(const std::vector<TableLine>& lines)
{
    Widths widths;
    for (const auto& line : lines) {
        widths.resize(std::max(widths.size(), line.size()));
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], shownLength(line[i].text));
        }
    }
    return widths;
}

std::size_t lineWidth(const Widths& widths)
{
    return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

/// Narrows the widest of the cuttable columns until a line fits, or all are as narrow as may be.
void fit(Widths& widths, const TableLine& heading, const TableStyle& style, const Columns& cuttable)
{
    for (auto total = lineWidth(widths); total > style.columns; --total) {
        const auto widest = std::max_element(
            cuttable.begin(), cuttable.end(), [&widths, &heading](std::size_t a, std::size_t b) {
                return widths[a] - std::min(widths[a], shownLength(heading[a].text)) <
                       widths[b] - std::min(widths[b], shownLength(heading[b].text));
            });
        if (widest == cuttable.end() || widths[*widest] <= shownLength(heading[*widest].text)) {
            return;
        }
        --widths[*widest];
    }
}

}  // namespace

std::string alignedTable(const std::vector<TableLine>& lines, const TableStyle& style,
                         const Columns& cuttable)
{
    if (lines.empty()) {
        return {};
    }
    auto widths = widthsOf(lines);
    if (style.columns != 0) {
        fit(widths, lines.front(), style, cuttable);
    }
    std::string text;
    for (const auto& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const auto shown = cutToWidth(line[i].text, widths[i]);
            text += style.colors ? colored(shown, line[i].tone) : shown;
            if (i + 1 < line.size()) {
                text.append(widths[i] - shownLength(shown) + kGap, ' ');
            }
        }
        text += '\n';
    }
    return text;
}

}  // namespace talvik::ctl
