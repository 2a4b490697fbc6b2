#pragma once

#include <string>

namespace talvik {

/// A program's state directory, made when it is missing and held by one process at a time.
class StateDirectory {
public:
    /// Throws `StartupError` when it cannot be made or another process holds it.
    explicit StateDirectory(const std::string& path);
    ~StateDirectory();

    StateDirectory(const StateDirectory&) = delete;
    StateDirectory& operator=(const StateDirectory&) = delete;

private:
    int lock_;
};

}  // namespace talvik
