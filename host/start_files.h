#pragma once

#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// Files that the agent reads at the start only; tells which of them are no longer what they were.
class StartFiles {
public:
    /// Notes what `file` is like, unless it is noted already. Call it before the file is read, or a
    /// change in between stays unseen.
    void add(const std::string& file);

    /// Says in the log what SIGHUP means for each of them, in the order in which they were added.
    void report() const;

private:
    std::vector<std::pair<std::string, std::string>> files_;  ///< path, and what tells a change
};

}  // namespace talvik
