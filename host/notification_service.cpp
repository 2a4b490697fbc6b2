#include "host/notification_service.h"

#include "backend/system_commands.h"
#include "host/platform/host_log.h"
#include "host/receiver_commands.h"
#include "host/snmp/standard_notifications.h"

#include <utility>

namespace talvik {

/// Passes the list of receivers on when it has changed: a while later at the most, since a manager
/// that enters a thousand of them must not have the whole list passed on a thousand times, and
/// before anything is sent.
class NotificationService::Receivers : public LoopWatcher {
public:
    Receivers(const TrapStore& store, NotificationDispatcher& dispatcher, TrapSender& sender)
        : store_(store),
          dispatcher_(dispatcher),
          sender_(sender)
    {
        passOn();
    }

    std::list<tTrapDestInfo> all() const { return store_.all(); }
    std::size_t count() const { return count_; }

    void refresh()
    {
        if (hasChanged()) {
            passOn();
        }
    }

    int descriptor() const override { return -1; }
    Time deadline() const override { return hasChanged() ? passedOn_ + kPause : Time::max(); }
    void proceed(bool /*ready*/, Time /*now*/) override { refresh(); }

private:
    static constexpr std::chrono::milliseconds kPause{200};

    bool hasChanged() const { return store_.changes() != seen_; }

    void passOn()
    {
        passedOn_ = std::chrono::steady_clock::now();
        seen_ = store_.changes();
        const auto receivers = store_.all();
        count_ = receivers.size();
        dispatcher_.setReceivers(receivers);
        sender_.setReceivers({receivers.begin(), receivers.end()});
    }

    const TrapStore& store_;
    NotificationDispatcher& dispatcher_;
    TrapSender& sender_;
    std::uint64_t seen_ = 0;
    std::size_t count_ = 0;
    Time passedOn_{};
};

/// Lets the sender go on with what waits.
class NotificationService::SenderTurn : public LoopWatcher {
public:
    explicit SenderTurn(TrapSender& sender) : sender_(sender) {}

    int descriptor() const override { return -1; }
    Time deadline() const override { return sender_.deadline(); }
    void proceed(bool /*ready*/, Time now) override { sender_.proceed(now); }

private:
    TrapSender& sender_;
};

NotificationService::NotificationService(const Settings& settings, const TrapStore& store,
                                         backend::CommandServer& commands,
                                         backend::BackgroundWork* work)
    : settings_(settings),
      commands_(commands),
      work_(work),
      sender_(settings.sender),
      dispatcher_([this](Trap&& trap, const Delivery& delivery) {
          sender_.send(std::move(trap), delivery);
      }),
      receivers_(std::make_unique<Receivers>(store, dispatcher_, sender_)),
      senderTurn_(std::make_unique<SenderTurn>(sender_)),
      channel_(settings.backendSocket,
               backend::commandNumber(settings.device, "SUBSCRIBE_NOTIFICATIONS"),
               [this](const CTLVRecordV3& record, const Delivery& delivery) {
                   settings_.tables.reported(record);
                   receivers_->refresh();
                   dispatcher_.dispatch(record, delivery);
               })
{
    addReceiverCommands(commands, settings.device, calls_, sender_,
                        [this] { receivers_->refresh(); });
}

NotificationService::~NotificationService()
{
    calls_.close();
}

void NotificationService::start(bool cold)
{
    server_.emplace(commands_, settings_.ownSocket, work_);
    const auto all = receivers_->all();
    sender_.send(cold ? coldStart(all) : warmStart(all), nullptr);
}

void NotificationService::report(AgentHealth& health) const
{
    health.receivers = receivers_->count();
    health.traps = sender_.totals();
    health.notificationsTaken = channel_.received();
    health.notificationHandlers = dispatcher_.handlers();
}

HealthSource::Subscription NotificationService::subscription() const
{
    return {channel_.works(), channel_.subscribedSince()};
}

std::vector<LoopWatcher*> NotificationService::watchers()
{
    std::vector<LoopWatcher*> all{receivers_.get(), &calls_, senderTurn_.get(), &settings_.tables};
    if (settings_.takesNotifications) {
        all.push_back(&channel_);
    }
    return all;
}

}  // namespace talvik
