#include "tools/folded_text.h"

#include "host/platform/utf8_text.h"
#include "tools/display_width.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

constexpr std::size_t kNameWidth = 12;

/// What stands at a place of a text: a character, or a colour.
struct Sign {
    std::size_t bytes = 1;
    std::size_t width = 1;
};

Sign signAt(const std::string& text, std::size_t at)
{
    if (text.compare(at, 2, "\x1B[") == 0) {
        return {std::min(text.find('m', at), text.size() - 1) + 1 - at, 0};
    }
    const auto character = utf8CharacterAt(text, at);
    return character.length == 0 ? Sign() : Sign{character.length, displayWidth(character.code)};
}

std::size_t widthOf(const std::string& text)
{
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto sign = signAt(text, at);
        width += sign.width;
        at += sign.bytes;
    }
    return width;
}

/// Breaks what is appended to it into lines.
class Folding {
public:
    Folding(std::size_t columns, std::size_t indent)
        : columns_(columns),
          indent_(std::min(indent, columns / 2))
    {
    }

    void append(const std::string& sign, std::size_t width)
    {
        const bool blank = sign == " ";
        while (width_ + width > columns_ && begun_) {
            breakLine(blank);
            if (blank) {
                return;
            }
        }
        if (blank && begun_) {
            blank_ = line_.size();
        }
        begun_ = begun_ || !blank;
        line_ += sign;
        width_ += width;
    }

    std::vector<std::string> end()
    {
        lines_.push_back(line_);
        return std::move(lines_);
    }

private:
    void breakLine(bool atBlank)
    {
        std::string rest;
        if (!atBlank && blank_ != 0 && blank_ >= indent_) {  // otherwise nothing is gained
            rest = line_.substr(blank_ + 1);
            line_.resize(blank_);
        }
        line_.erase(line_.find_last_not_of(' ') + 1);
        lines_.push_back(line_);
        line_ = std::string(indent_, ' ') + rest;
        width_ = indent_ + widthOf(rest);
        begun_ = !rest.empty();
        blank_ = 0;
    }

    std::size_t columns_;
    std::size_t indent_;
    std::vector<std::string> lines_;
    std::string line_;
    std::size_t width_ = 0;
    std::size_t blank_ = 0;  ///< where the line can be broken; 0 for nowhere
    bool begun_ = false;     ///< it has more than blanks
};

}  // namespace

std::vector<std::string> foldedLines(const std::string& text, const TableStyle& style,
                                     std::size_t indent)
{
    if (style.columns == 0) {
        return {text};
    }
    Folding folding(style.columns, indent);
    for (std::size_t at = 0; at < text.size();) {
        const auto sign = signAt(text, at);
        folding.append(text.substr(at, sign.bytes), sign.width);
        at += sign.bytes;
    }
    return folding.end();
}

std::string foldedText(const std::string& text, const TableStyle& style, std::size_t indent)
{
    std::string folded;
    for (const auto& line : foldedLines(text, style, indent)) {
        folded += line + "\n";
    }
    return folded;
}

std::string namedValue(const std::string& name, const std::string& value, const TableStyle& style)
{
    const std::string blanks(kNameWidth - std::min(kNameWidth - 1, name.size()), ' ');
    return foldedText(name + blanks + value, style, kNameWidth);
}

}  // namespace talvik::ctl
