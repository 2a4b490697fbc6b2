#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace talvik {

/// A database file whose content cannot be used. `what()` is the reason only: what becomes of the
/// file is for the catcher to say.
class DamagedFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// In octets. Many times what a full list of trap destinations takes: checking the file must not
/// hold the start up.
constexpr std::int64_t kMaxDatabaseSize = std::int64_t{64} << 20U;

/// Makes the database `path` when there is none, readable and writable for its owner only. `fill`
/// gets the name of an empty file, which gets its own name when it is filled and on disk: so `path`
/// is never there in part. Throws `DamagedFile` when SQLite would take what is left of a database
/// for a new one, when the file has more than `maxSize` octets, and when setting it aside was cut
/// short; `StartupError` when the file cannot be used.
void prepareDatabaseFile(const std::string& path,
                         const std::function<void(const std::string& path)>& fill,
                         std::int64_t maxSize = kMaxDatabaseSize);

/// Which file a name stands for.
class FileIdentity {
public:
    /// Throws `StartupError` if there is no such file.
    explicit FileIdentity(std::string path);

    /// True if the name stands for another file now, or for none.
    bool wasMoved() const;

private:
    std::string path_;
    dev_t device_ = 0;
    ino_t number_ = 0;
};

/// Where a damaged database is now.
struct SetAside {
    std::string path;
    bool readable;  ///< there is a file in which rows may be found
};

/// Renames the database `path`, its write-ahead log and journal to the first free
/// `PATH.damaged-N`, durably, or to the one where that was cut short. Throws `StartupError`.
SetAside setDatabaseAside(const std::string& path);

}  // namespace talvik
