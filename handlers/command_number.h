#pragma once

#include <string>

namespace talvik {

/// The number of a back-end command: what section COMMAND of the device configuration says of
/// `key`, as a signed decimal number of 64 bits (the nearest one for text beyond them). 0 when it
/// is not configured or does not start with a number.
long long commandNumber(const std::string& key);

}  // namespace talvik
