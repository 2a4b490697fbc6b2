#pragma once

#include "host/snmp/engine_discovery.h"
#include "host/snmp/inform_session.h"
#include "host/snmp/line_budget.h"
#include "host/snmp/outgoing_trap.h"
#include "host/snmp/trap_sender.h"
#include "host/snmp/trap_settings.h"
#include "host/snmp/udp_sender.h"
#include "host/snmp/usm_users.h"

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

    /// How long one waits for an address or an engine ID; longer where a single request may.
    static constexpr std::chrono::seconds kMaxWait{10};

    /// `services` outlives it.
    TrapReceiver(tTrapDestInfo row, const TrapSettings& settings, ReceiverServices& services);

    /// Gives up what is under way.
    ~TrapReceiver();

    TrapReceiver(const TrapReceiver&) = delete;
    TrapReceiver& operator=(const TrapReceiver&) = delete;

    const tTrapDestInfo& row() const { return row_; }

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

    struct Effective;
    struct Path;

    void pump(Time now);
    bool sendFirst(Time now);
    bool sendTrap(OutgoingTrap& trap, Time now);
    bool sendInform(Item& item);
    void informEnded(Item item, InformEnd end, const std::string& detail);

    bool findAddress();
    void useAddress(const std::string& address);
    bool openSession(Time now);
    bool findEngine(Time now);
    void takeDiscovery(Time now);
    void closeSession();
    SessionSettings sessionSettings() const;
    std::optional<TrapMessageKind> messageKind(Time now, std::string& problem);

    void giveUpExpired(Time now);
    void giveUpOldest();
    void failFirst(const std::string& why);
    void setState(const std::string& state);
    std::string okState() const;
    std::string title() const;

    tTrapDestInfo row_;
    ReceiverServices& services_;
    ReceiverStatus status_;

    std::string community_;
    ReceiverSettings settings_;
    std::optional<std::array<unsigned char, 4>> v1AgentAddress_;

    bool isName_ = false;
    bool stale_ = false;  ///< the name does not resolve; the address is the last known one
    std::string address_;
    std::optional<SocketAddress> to_;

    std::uint64_t nextNumber_ = 0;
    std::deque<Item> waiting_;
    std::vector<Item> returned_;  ///< informs that are to be sent again
    bool blocked_ = false;        ///< the first waits for an address or an engine ID
    bool overflowing_ = false;    ///< the log says that there is no room
    Time nextTry_ = Time::max();

    std::string engineId_;
    std::unique_ptr<EngineDiscovery> discovery_;
    std::chrono::milliseconds discoveryPause_{0};
    Time discoverAt_ = Time::min();
    bool engineChanged_ = false;
    bool dying_ = false;
    std::unique_ptr<InformSession> session_;  // closing it calls back
};

}  // namespace talvik
