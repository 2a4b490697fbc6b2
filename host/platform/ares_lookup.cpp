#include "host/platform/ares_lookup.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace talvik {

AresLookup::AresLookup(AresSettings settings)
    : settings_(std::move(settings)),
      wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (wakeUp_ < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make an event descriptor");
    }
}

AresLookup::~AresLookup()
{
    channels_.clear();
    ::close(wakeUp_);
}

void AresLookup::start(const std::string& name, Done done)
{
    AresChannel* channel = nullptr;
    try {
        channel = &freshChannel();
    } catch (const std::runtime_error& error) {
        done({LookupOutcome::NoAnswer, {}, error.what()});
        return;
    }
    channel->start(name, std::move(done));
}

AresChannel& AresLookup::freshChannel()
{
    const auto now = std::chrono::steady_clock::now();
    if (channels_.empty() || now - lastMadeAt_ >= settings_.channelAge) {
        channels_.push_back(std::make_unique<AresChannel>(settings_));
        lastMadeAt_ = now;
    }
    return *channels_.back();
}

void AresLookup::wait(std::chrono::milliseconds atMost)
{
    dropIdleChannels();
    std::vector<pollfd> polled{{wakeUp_, POLLIN, 0}};
    for (const auto& channel : channels_) {
        channel->appendSockets(polled);
        atMost = channel->timeout(atMost);
    }
    const auto ready = ::poll(polled.data(), polled.size(), static_cast<int>(atMost.count()));
    if (ready < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for name servers");
    }
    if (ready > 0 && polled.front().revents != 0) {
        eventfd_t count = 0;
        ::eventfd_read(wakeUp_, &count);
    }
    for (const auto& channel : channels_) {
        channel->process(polled);
    }
}

/// The last one stays: the next look-ups may begin on it.
void AresLookup::dropIdleChannels()
{
    if (channels_.size() > 1) {
        const auto idle =
            std::remove_if(channels_.begin(), channels_.end() - 1,
                           [](const auto& channel) { return channel->underWay() == 0; });
        channels_.erase(idle, channels_.end() - 1);
    }
}

void AresLookup::wake() noexcept
{
    // Fails only when the counter is full, and then the thread is awake anyway.
    ::eventfd_write(wakeUp_, 1);
}

}  // namespace talvik
