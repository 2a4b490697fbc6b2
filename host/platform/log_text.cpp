#include "host/platform/log_text.h"

#include <cstdio>

namespace talvik {

std::string formatText(const char* format, va_list args)
{
    if (format == nullptr) {
        return {};
    }
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) {
        return format;
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

std::string oneLine(const std::string& text)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto end = text.find_last_not_of('\n');
    std::string safe;
    safe.reserve(text.size());
    for (std::size_t i = 0; end != std::string::npos && i <= end; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte == '\n') {
            safe += "\n    ";
        } else if (byte < 0x20 || byte == 0x7F) {
            safe += "\\x";
            safe += kDigits[byte >> 4U];
            safe += kDigits[byte & 0xFU];
        } else {
            safe += text[i];
        }
    }
    return safe;
}

}  // namespace talvik
