#pragma once

#include <stdexcept>
#include <string>

namespace talvik {

/// A database file whose content cannot be used. `what()` is the reason only: what becomes of the
/// file is for the catcher to say.
class DamagedFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Makes `path` an empty file when there is none, and readable and writable for its owner only.
/// Throws `DamagedFile` when SQLite would take what is left of a database for a new one, and
/// `StartupError` when the file cannot be used.
void prepareDatabaseFile(const std::string& path);

/// Where a damaged database is now.
struct SetAside {
    std::string path;
    bool readable;  ///< there is a file in which rows may be found
};

/// Renames the database `path`, its write-ahead log and journal to the first free
/// `PATH.damaged-N`, durably. Throws `StartupError`.
SetAside setDatabaseAside(const std::string& path);

}  // namespace talvik
