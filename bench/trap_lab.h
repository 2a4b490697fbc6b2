#pragma once

#include "backend/protocol.h"
#include "host/platform/device_config_file.h"
#include "host/snmp/notification_dispatcher.h"
#include "host/snmp/trap_sender.h"

#include <memory>
#include <string>
#include <vector>

namespace talvik::bench {

/// UDP sockets on the loopback that take what is sent to them and are never read.
class DeafReceivers {
public:
    explicit DeafReceivers(unsigned count);
    ~DeafReceivers();

    DeafReceivers(const DeafReceivers&) = delete;
    DeafReceivers& operator=(const DeafReceivers&) = delete;

    const std::vector<unsigned>& ports() const { return ports_; }

private:
    std::vector<int> sockets_;
    std::vector<unsigned> ports_;
};

/// The way of an alarm through the agent, from the bytes of a notification of the back end to the
/// datagrams, with the module's handlers and without the hand-over and the log.
class AlarmPath {
public:
    /// `receivers` are of type 1 and version 2c.
    explicit AlarmPath(const DeafReceivers& receivers);
    ~AlarmPath();

    AlarmPath(const AlarmPath&) = delete;
    AlarmPath& operator=(const AlarmPath&) = delete;

    /// The bytes of a notification: a disk of the delivered catalogue fails.
    static backend::Bytes notification();

    void send(const backend::Bytes& notification);

    /// Traps that were handed to the network; throws `std::runtime_error` when one failed.
    std::uint64_t sent() const;

private:
    TrapSender sender_;
    NotificationDispatcher dispatcher_;
};

/// The least that an SNMP library needs: a session a receiver, a PDU an alarm.
class BareLoop {
public:
    explicit BareLoop(const DeafReceivers& receivers);
    ~BareLoop();

    BareLoop(const BareLoop&) = delete;
    BareLoop& operator=(const BareLoop&) = delete;

    /// Builds the notification of fourteen bindings from `trap` and sends it to every receiver.
    void send(const Trap& trap);

private:
    std::vector<void*> sessions_;  // the library's own
};

/// What the dispatcher makes of `notification`, for the bare loop to send the same.
Trap trapOf(const backend::Bytes& notification);

/// Sets up what the agent's program would: log, device configuration, catalogue, SNMP library.
void startLab(const std::string& folder);

}  // namespace talvik::bench
