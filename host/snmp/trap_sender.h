#pragma once

#include "host/snmp/agent_health.h"
#include "host/snmp/trap.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace talvik {

class MibDescription;
class NameCache;

/// What came of the notifications to one receiver since the agent started.
struct ReceiverStatus {
    tTrapDestInfo receiver;
    bool inform = false;
    std::string state;         ///< "ok", or what is wrong, for a human: "does not answer informs"
    std::uint64_t sent = 0;    ///< traps handed to the network; informs sent for the first time
    std::uint64_t failed = 0;  ///< could not be handed to the network, or there was no way to send
    std::uint64_t answered = 0;  ///< informs that the receiver acknowledged
    std::uint64_t givenUp = 0;   ///< informs refused or never answered; anything for lack of room
    std::uint64_t waiting = 0;   ///< queued, or on their way without an answer
};

/// Sends notifications to receivers: v1, v2c or v3 by the receiver's version, as a trap or, where
/// the settings file says so, as an inform. Nothing here waits: a receiver that is slow, dead or
/// has no address delays neither the others nor the caller. All on the thread of the SNMP library,
/// whose loop serves the informs' sessions, and never from one of its callbacks. Made after the
/// library read its configuration (it has to know the agent's own users), gone before that is shut
/// down.
///
/// docs/trap-settings.md says what the settings file can hold and what is waited for how long.
class TrapSender {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Settings {
        std::string receiversFile;            ///< empty: no file, defaults only
        const MibDescription* mib = nullptr;  ///< names objects in the log; null or outlives this
        NameCache* names = nullptr;           ///< null: no name resolves; or outlives this
    };

    /// Reads the settings file. Throws `StartupError` when it is there and wrong.
    explicit TrapSender(const Settings& settings);

    /// Gives up what is under way.
    ~TrapSender();

    TrapSender(const TrapSender&) = delete;
    TrapSender& operator=(const TrapSender&) = delete;

    /// Sends `trap` to its receivers, or queues it for those that cannot take it now. `delivery` is
    /// held until every receiver has it or was given up. Receivers that `setReceivers` did not name
    /// get nothing but a line in the log. Throws nothing but allocation failures.
    void send(Trap trap, const Delivery& delivery);

    /// The receivers as they are now, each with an index of its own. What is owed to one that is
    /// gone is given up; what is owed to a row that has other columns now goes out by these. The
    /// counters of such a row and of new ones begin at 0.
    void setReceivers(const std::vector<tTrapDestInfo>& receivers);

    /// In the order of `setReceivers`.
    std::vector<ReceiverStatus> status() const;

    /// Of all receivers since the agent started, those that are gone included.
    TrapTotals totals() const;

    /// Reads the settings file, even one that looks unchanged. One that is wrong is a line in the
    /// log, and the former settings stay.
    void readSettingsAgain();

    /// When `proceed` is due next: a time in the past after an answer to an inform came;
    /// `Time::max()` for never.
    Time deadline() const;

    /// Goes on with what waits: names, queues, discovery, the settings file.
    void proceed(Time now);

private:
    class Outgoing;

    std::unique_ptr<Outgoing> outgoing_;
};

}  // namespace talvik
