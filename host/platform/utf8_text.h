#pragma once

#include <string>

namespace talvik {

/// True if `text` is valid UTF-8 (RFC 3629) without control characters, a NUL among them.
bool isPlainUtf8(const std::string& text);

}  // namespace talvik
