#pragma once

#include "host/snmp/net_snmp.h"

#include <chrono>
#include <memory>
#include <string>

namespace talvik {

/// How to talk to one receiver.
struct SessionSettings {
    std::string address;  ///< numeric
    unsigned int port = 0;
    std::string source;  ///< numeric address to send from; empty: the system chooses
    std::chrono::milliseconds timeout{1000};
    int retries = 3;
    bool version3 = false;  ///< otherwise 2c
    std::string community;
    std::string user;      ///< of version 3; empty: none, nothing is authenticated
    std::string engineId;  ///< the receiver's; empty: unknown
};

struct SessionClose {
    void operator()(netsnmp_session* session) const { snmp_close(session); }
};

/// An open session of the SNMP library. Closing it ends what is under way with timed-out callbacks;
/// never close it from a callback.
using ReceiverSession = std::unique_ptr<netsnmp_session, SessionClose>;

/// Opens one that neither waits when it sends nor asks for the engine ID itself. Null, with the
/// reason in `problem`, when the library refuses.
ReceiverSession openReceiverSession(const SessionSettings& settings, std::string& problem);

}  // namespace talvik
