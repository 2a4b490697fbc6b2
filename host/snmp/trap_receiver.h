#pragma once

#include "host/snmp/inform_link.h"
#include "host/snmp/line_budget.h"
#include "host/snmp/receiver_address.h"
#include "host/snmp/trap_queue.h"
#include "host/snmp/trap_sender.h"
#include "host/snmp/trap_settings.h"
#include "host/snmp/udp_sender.h"
#include "host/snmp/usm_users.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace talvik {

/// What all receivers share.
struct ReceiverServices {
    NameCache* names = nullptr;
    UsmUsers users;
    UdpSender udp;
    QueueTotal queues;
    LineBudget lines;      ///< of what becomes of receivers
    TrapTotals former;     ///< of receivers that are gone
    bool workDue = false;  ///< an answer came: `TrapReceiver::proceed` has something to do
};

/// One row of the trap destination table: how to reach it, what waits for it, and what came of it.
///
/// Notifications leave in the order in which they came. One waits while the receiver has no
/// address, its engine ID is not known or the system cannot send just now, for a limited time;
/// while as many informs as are allowed are on their way; and while one about the same alarm is.
class TrapReceiver {
public:
    using Time = TrapSender::Time;

    static constexpr std::size_t kMaxUnderWay = 32;

    /// How long one waits for a way to the receiver; longer where a single inform may.
    static constexpr std::chrono::seconds kMaxWait{10};

    /// How many wait at most: twice what the back end hands over before it wants acknowledgements,
    /// so that they hold it back first.
    static constexpr std::size_t kMaxWaiting = 2048;

    /// How many wait when nothing has reached the receiver for `kMaxWait`.
    static constexpr std::size_t kMaxWaitingStuck = 512;

    /// `services` outlives it.
    TrapReceiver(tTrapDestInfo row, const TrapSettings& settings, ReceiverServices& services);

    /// Gives up what is under way.
    ~TrapReceiver();

    TrapReceiver(const TrapReceiver&) = delete;
    TrapReceiver& operator=(const TrapReceiver&) = delete;

    const tTrapDestInfo& row() const { return status_.receiver; }

    /// Other settings hold from now on. What is under way is sent again by them, if they matter.
    void configure(const TrapSettings& settings);

    /// The keys of these users are others now.
    void usersChanged(const std::set<std::string>& names);

    /// Goes on with what was owed to `former`, the same row with other columns.
    void takeOver(TrapReceiver& former);

    /// Sends `trap` now or queues it.
    void send(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery, Time now);

    /// Counts a notification that cannot be sent to anybody.
    void fail() { ++status_.failed; }

    ReceiverStatus status() const;

    /// Adds what it has counted since it was made, without what waits.
    void addTo(TrapTotals& totals) const;

    /// How many notifications are queued, or on their way without an answer.
    std::uint64_t waiting() const { return queue_.size() + link_.underWay(); }
    Time deadline() const;
    void proceed(Time now);

private:
    void pump(Time now);
    bool sendFirst(Time now);
    bool sendTrap(OutgoingTrap& trap, Time now);
    bool makeKind(TrapMessageKind& kind, Time now, std::string& problem);
    bool sendInform(const QueuedTrap& next, Time now);
    bool noWay(const std::string& why);
    void informEnded(QueuedTrap item, InformEnd end, const std::string& detail);
    void closeLink();
    SessionSettings sessionSettings() const;

    void giveUpExpired(Time now);
    void makeRoom(Time now);
    void giveUpOldest();
    bool wait(const std::string& why);
    bool failed(const std::string& why);
    void succeeded();
    void setState(const std::string& state);
    std::string title() const;

    ReceiverServices& services_;
    ReceiverStatus status_;
    ReceiverSettings settings_;
    std::string community_;
    std::optional<std::array<unsigned char, 4>> v1AgentAddress_;
    ReceiverAddress address_;

    TrapQueue queue_;
    bool blocked_ = false;      ///< the first waits for a way to the receiver
    bool overflowing_ = false;  ///< the log says that there is no room
    bool moved_ = false;        ///< something reached the receiver
    Time progress_;             ///< when something did, or when it last had nothing to wait for
    bool engineChanged_ = false;
    bool dying_ = false;
    Time nextTry_ = Time::max();
    InformLink link_;  // the last: closing it calls back
};

}  // namespace talvik
