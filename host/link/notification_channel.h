#pragma once

#include "backend/file_descriptor.h"
#include "backend/package_assembler.h"
#include "backend/protocol.h"
#include "host/link/acknowledgements.h"
#include "host/loop_watcher.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class CTLVRecordV3;

namespace talvik {

/// The notifications of the back end, on a connection of their own. What came is acknowledged when
/// it is settled, so the back end sends again what was under way when either side or the connection
/// broke off. When the back end waits for acknowledgements and none of the notifications becomes
/// settled for a while, the oldest are acknowledged nonetheless: who settles nothing must not hold
/// up the rest. Connects by itself, again and again while the back end is away.
class NotificationChannel : public LoopWatcher {
public:
    /// Takes one alarm record. The notification is settled when the last copy of `delivery` is
    /// gone. The record is the caller's. May throw an allocation failure only.
    using Consumer =
        std::function<void(const CTLVRecordV3& record, const std::shared_ptr<void>& delivery)>;

    struct Limits {
        std::chrono::milliseconds subscribe{5000};     ///< for the answer to the subscription
        std::chrono::milliseconds firstPause{100};     ///< before the first new attempt; doubles
        std::chrono::milliseconds longestPause{2000};  ///< between attempts
        unsigned recordsATurn = 32;                    ///< handed to the consumer by one `proceed`
        std::uint32_t unacknowledged = 1024;           ///< then the back end sends no more
        std::chrono::milliseconds longestHold{250};    ///< that what is not settled keeps it so
    };

    /// `path` is the back end's socket, `subscribeCommand` the number of SUBSCRIBE_NOTIFICATIONS.
    /// Connects at the first `proceed`.
    NotificationChannel(std::string path, std::uint64_t subscribeCommand, Consumer consumer);
    NotificationChannel(std::string path, std::uint64_t subscribeCommand, Consumer consumer,
                        const Limits& limits);

    int descriptor() const override { return socket_.get(); }
    bool wantsToWrite() const override { return written_ < output_.size(); }
    Time deadline() const override;
    void proceed(bool ready, Time now) override;

    /// True while the back end's notifications come here.
    bool isSubscribed() const { return state_ == State::Subscribed; }

    /// Whether they do, as far as is known: nothing before the first attempt has ended.
    std::optional<bool> works() const;

    /// When they last began to come.
    Time subscribedSince() const { return subscribedSince_; }

    /// How many notifications came since the start, repeats included.
    std::uint64_t received() const { return received_; }

private:
    enum class State { Down, Subscribing, Subscribed };

    void connect(Time now);
    void read();
    void takePackages();
    void takeReply(backend::Bytes& wire);
    void takeNotification(backend::Bytes& wire);
    void acknowledge(Time now);
    void acknowledgeUpTo(std::uint32_t number);
    bool isHeldUp() const;
    void write();
    void fail(const std::string& reason, Time now);

    const std::string path_;
    const std::uint64_t subscribeCommand_;
    const Consumer consumer_;
    const Limits limits_;
    State state_ = State::Down;
    std::string reported_;  // why it is down, as the log says it; empty while it is up
    Time retryAt_{};
    Time subscribeEnd_ = Time::max();
    Time subscribedSince_{};
    std::chrono::milliseconds pause_;
    backend::FileDescriptor socket_;
    backend::PackageAssembler input_;
    bool moreToTake_ = false;  // whole packages may be left in `input_`
    backend::Bytes output_;
    std::size_t written_ = 0;
    Acknowledgements acknowledgements_;
    std::uint32_t acknowledged_ = 0;  // up to which the back end has been told
    Time holdEnd_ = Time::max();      // when the oldest are acknowledged nonetheless
    bool holdReported_ = false;       // on this connection
    std::uint64_t received_ = 0;
};

}  // namespace talvik
