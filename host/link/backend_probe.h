#pragma once

#include "host/link/socket_connection.h"
#include "host/loop_watcher.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace talvik {

/// Finds out when a back end that left a command without an answer answers again, although nobody
/// has a command for it: asks it for something small, on a connection of its own, and waits for as
/// long as it takes, beside the loop. While the back end answers nothing is asked. The link's own
/// connection is left alone: a command must not wait for this.
class BackendProbe : public LoopWatcher {
public:
    /// When the back end last left a command without an answer; nothing while it answers.
    using SilentSince = std::function<std::optional<Time>()>;

    /// After a command without an answer, and between two attempts.
    static constexpr std::chrono::seconds kPause{2};

    /// `path` is the back end's socket, `command` the number of one that changes nothing.
    /// `answered` is called when it was answered, if only with a refusal.
    BackendProbe(std::string path, std::uint64_t command, SilentSince silentSince,
                 std::function<void()> answered);

    int descriptor() const override { return connection_.descriptor(); }
    Time deadline() const override;
    void proceed(bool ready, Time now) override;

private:
    void ask();
    void takeAnswer();
    void giveUp();

    const std::string path_;
    const std::uint64_t command_;
    const SilentSince silentSince_;
    const std::function<void()> answered_;
    SocketConnection connection_;
    bool asked_ = false;
    Time next_ = Time::min();
};

}  // namespace talvik
