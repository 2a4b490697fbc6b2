#pragma once

#include "host/platform/ares_channel.h"
#include "host/platform/name_lookup.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace talvik {

/// Looks names up in /etc/hosts and then in DNS, through c-ares. Its sockets are watched with
/// poll(), so there may be any number of descriptors in the process.
///
/// A c-ares channel reads /etc/resolv.conf once. So look-ups begin on a new channel when the last
/// one is too old, and an old channel goes when its last look-up has ended.
class AresLookup : public NameLookup {
public:
    /// Throws `std::system_error`.
    explicit AresLookup(AresSettings settings = {});
    ~AresLookup() override;

    void start(const std::string& name, Done done) override;
    void wait(std::chrono::milliseconds atMost) override;
    void wake() noexcept override;

private:
    AresChannel& freshChannel();
    void dropIdleChannels();

    const AresSettings settings_;
    int wakeUp_;                                          ///< an eventfd
    std::vector<std::unique_ptr<AresChannel>> channels_;  ///< look-ups begin on the last one
    std::chrono::steady_clock::time_point lastMadeAt_;
};

}  // namespace talvik
