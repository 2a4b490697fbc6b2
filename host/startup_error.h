#pragma once

#include <stdexcept>

namespace talvik {

/// Why a program cannot start or a file cannot be used. `what()` is for the user: it names what
/// failed, where (file, and line where known) and what to do.
class StartupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace talvik
