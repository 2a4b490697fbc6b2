#pragma once

#include "host/snmp/inform_link.h"
#include "host/snmp/line_budget.h"
#include "host/snmp/outgoing_trap.h"
#include "host/snmp/receiver_address.h"
#include "host/snmp/trap_sender.h"
#include "host/snmp/trap_settings.h"
#include "host/snmp/udp_sender.h"
#include "host/snmp/usm_users.h"

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace talvik {

/// What all receivers share.
struct ReceiverServices {
    NameCache* names = nullptr;
    UsmUsers users;
    UdpSender udp;
    LineBudget lines;      ///< of what becomes of receivers
    bool workDue = false;  ///< an answer came: `TrapReceiver::proceed` has something to do
};

/// One row of the trap destination table: how to reach it, what waits for it, and what came of it.
///
/// Notifications leave in the order in which they came. One waits while the receiver has no address
/// or its engine ID is not known, for a limited time, and while as many informs as are allowed are
/// on their way.
class TrapReceiver {
public:
    using Time = TrapSender::Time;

    static constexpr std::size_t kMaxUnderWay = 32;
    static constexpr std::size_t kMaxWaiting = 512;

    /// How long one waits for an address or an engine ID; longer where a single inform may.
    static constexpr std::chrono::seconds kMaxWait{10};

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

    /// Sends `trap` now or queues it.
    void send(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery, Time now);

    /// Counts a notification that cannot be sent to anybody.
    void fail() { ++status_.failed; }

    ReceiverStatus status() const;
    Time deadline() const;
    void proceed(Time now);

private:
    struct Item {
        std::uint64_t number = 0;  ///< the order in which they came
        std::shared_ptr<OutgoingTrap> trap;
        Delivery delivery;
        Time since;
        unsigned attempts = 0;
    };

    void pump(Time now);
    bool sendFirst(Time now);
    void sendTrap(OutgoingTrap& trap, Time now);
    bool makeKind(TrapMessageKind& kind, Time now, std::string& problem);
    bool sendInform(Time now);
    void informEnded(Item item, InformEnd end, const std::string& detail);
    void closeLink();
    SessionSettings sessionSettings() const;

    void giveUpExpired(Time now);
    void giveUpOldest();
    void failed(const std::string& why);
    void succeeded();
    void setState(const std::string& state);
    std::string title() const;

    ReceiverServices& services_;
    ReceiverStatus status_;
    ReceiverSettings settings_;
    std::string community_;
    std::optional<std::array<unsigned char, 4>> v1AgentAddress_;
    ReceiverAddress address_;

    std::uint64_t nextNumber_ = 0;
    std::deque<Item> waiting_;
    std::vector<Item> returned_;  ///< informs that are to be sent again
    bool blocked_ = false;        ///< the first waits for an address or an engine ID
    bool overflowing_ = false;    ///< the log says that there is no room
    bool engineChanged_ = false;
    bool dying_ = false;
    Time nextTry_ = Time::max();
    InformLink link_;  // the last: closing it calls back
};

}  // namespace talvik
