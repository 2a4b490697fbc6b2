#include "tools/text_table.h"

#include "tools/safe_text.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kFoldIndent = 4;

/// Columns of a table that stand in one line.
struct Part {
    std::size_t first = 0;
    std::size_t end = 0;
    std::size_t indent = 0;
};

/// Lays the columns of a table out.
class Layout {
public:
    Layout(const std::vector<TableLine>& lines, const TableStyle& style, const Columns& cuttable)
        : lines_(lines),
          style_(style),
          least_(lines.front().size())
    {
        for (const auto& line : lines) {
            widths_.resize(std::max(widths_.size(), line.size()));
            for (std::size_t i = 0; i < line.size(); ++i) {
                widths_[i] = std::max(widths_[i], shownLength(line[i].text));
            }
        }
        least_ = widths_;
        for (const auto& column : cuttable) {
            const auto heading = shownLength(lines.front()[column.number].text);
            least_[column.number] =
                std::min(widths_[column.number], std::max(heading, column.least));
        }
        if (style.columns == 0) {
            parts_ = {{0, widths_.size(), 0}};
        } else {
            fold();
        }
    }

    std::string text() const
    {
        std::string text;
        for (const auto& line : lines_) {
            for (const auto& part : parts_) {
                append(text, line, part);
            }
        }
        return text;
    }

private:
    /// Parts of which each fits with its columns as narrow as may be, or has only one column.
    void fold()
    {
        Part part;
        auto taken = least_[0];
        for (std::size_t i = 1; i < least_.size(); ++i) {
            taken += kGap + least_[i];
            if (taken > style_.columns) {
                part.end = i;
                parts_.push_back(part);
                part = {i, i, indent()};
                taken = part.indent + least_[i];
            }
        }
        part.end = least_.size();
        parts_.push_back(part);
        for (const auto& each : parts_) {
            narrow(each);
        }
    }

    /// Of what is folded, behind the blanks that the heading begins with.
    std::size_t indent() const
    {
        const auto& heading = lines_.front().front().text;
        const auto blanks = std::min(heading.find_first_not_of(' '), heading.size());
        return std::min(blanks + kFoldIndent, style_.columns / 8);
    }

    /// Narrows the columns that are widest beyond their least width until the part fits.
    void narrow(const Part& part)
    {
        auto total = part.indent + kGap * (part.end - part.first - 1);
        for (auto i = part.first; i < part.end; ++i) {
            total += widths_[i];
        }
        for (; total > style_.columns; --total) {
            auto widest = part.first;
            for (auto i = part.first; i < part.end; ++i) {
                widest = widths_[i] - least_[i] > widths_[widest] - least_[widest] ? i : widest;
            }
            if (widths_[widest] == least_[widest]) {  // it is alone
                widths_[widest] = style_.columns - part.indent;
                return;
            }
            --widths_[widest];
        }
    }

    void append(std::string& text, const TableLine& line, const Part& part) const
    {
        text.append(part.indent, ' ');
        for (auto i = part.first; i < part.end; ++i) {
            const auto shown = cutToWidth(line[i].text, widths_[i]);
            text += style_.colors ? colored(shown, line[i].tone) : shown;
            if (i + 1 < part.end) {
                text.append(widths_[i] - shownLength(shown) + kGap, ' ');
            }
        }
        text += '\n';
    }

    const std::vector<TableLine>& lines_;
    const TableStyle& style_;
    std::vector<std::size_t> widths_;
    std::vector<std::size_t> least_;
    std::vector<Part> parts_;
};

}  // namespace

std::string alignedTable(const std::vector<TableLine>& lines, const TableStyle& style,
                         const Columns& cuttable)
{
    return lines.empty() ? std::string() : Layout(lines, style, cuttable).text();
}

}  // namespace talvik::ctl
