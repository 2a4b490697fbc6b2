#include "tests/support/codec_test.h"

#include <algorithm>
#include <cctype>

namespace talvik::test {

namespace {

bool isDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/// Each run of digits as a single 9.
std::string shape(const std::string& text)
{
    std::string found;
    for (const char c : text) {
        if (!isDigit(c)) {
            found += c;
        } else if (found.empty() || found.back() != '9') {
            found += '9';
        }
    }
    return found;
}

std::string withoutLineNumber(std::string text)
{
    const std::string mark = "Line=";
    const auto found = text.find(mark);
    if (found != std::string::npos) {
        const auto first = text.begin() + static_cast<std::ptrdiff_t>(found + mark.size());
        const auto last = std::find_if_not(first, text.end(), isDigit);
        text.replace(first, last, first != last && *first != '0' ? "N" : "no number");
    }
    return text;
}

}  // namespace

std::string logText(const std::string& line)
{
    const auto end = line.find(") ");
    if (end == std::string::npos ||
        shape(line.substr(0, end + 2)) != "9-9-9 9:9:9.9 LM_ERROR (9) ") {
        return "unstamped: " + line;
    }
    return withoutLineNumber(line.substr(end + 2));
}

}  // namespace talvik::test
