#pragma once

#include "host/snmp/trap_settings.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

namespace talvik {

/// The trap settings file, read again whenever it changed.
class TrapSettingsFile {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// An empty `path` is no file: the defaults then hold for good.
    explicit TrapSettingsFile(std::string path) : path_(std::move(path)) {}

    /// What the file says; the defaults where there is none. Warns when others than its owner can
    /// read passphrases in it. Throws `StartupError`.
    TrapSettings load();

    /// The settings, if the file has others since the last look, which is at least a millisecond
    /// ago: a notification that comes after a change goes by it. A file that is wrong is reported
    /// in the log once; whoever asks keeps what it has.
    std::optional<TrapSettings> changed(Time now);

    /// As `changed`, for a file that looks unchanged, too; the log has what came of it.
    std::optional<TrapSettings> readAgain(Time now);

private:
    /// Inode, size and time of the last change; all 0 for no file.
    using Identity = std::tuple<std::uint64_t, std::int64_t, std::int64_t, std::int64_t>;

    std::string read();
    Identity identityNow() const;
    void warnOfReaders(const TrapSettings& settings) const;

    std::string path_;
    Identity known_;
    unsigned mode_ = 0;
    Time nextLook_ = Time::min();
};

}  // namespace talvik
