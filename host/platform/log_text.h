#pragma once

#include <cstdarg>
#include <string>

namespace talvik {

/// `format` filled with `args` in the manner of printf; `format` itself when it cannot be filled.
std::string formatText(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

/// `text` made safe for a line log: a line feed becomes a line feed and an indentation, so that
/// text from outside can never pass for a line of its own; every other control character becomes
/// \xNN. Line feeds at the end are dropped.
std::string oneLine(const std::string& text);

}  // namespace talvik
