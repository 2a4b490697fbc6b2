#pragma once

#include "host/snmp/receiver_session.h"
#include "host/snmp/trap_content.h"

#include <functional>
#include <list>
#include <memory>
#include <string>

namespace talvik {

/// How an inform ended.
enum class InformEnd {
    Answered,
    NoAnswer,       ///< not even after the last retry
    Refused,        ///< the receiver said why
    UnknownEngine,  ///< the receiver's engine ID is another one now
    NotSent,        ///< a retry could not be handed to the network
    Closed,         ///< the session was closed before it ended
};

/// Sends informs to one receiver, many at a time, without waiting for an answer. The SNMP library's
/// loop serves it. On the thread of that.
class InformSession {
public:
    /// `detail` is for a human. Called from the loop, and from the destructor; must not destroy the
    /// session.
    using Done = std::function<void(InformEnd end, const std::string& detail)>;

    /// Null, with the reason in `problem`, when the library refuses.
    static std::unique_ptr<InformSession> open(const SessionSettings& settings,
                                               std::string& problem);

    /// Ends what is under way as `Closed`.
    ~InformSession();

    InformSession(const InformSession&) = delete;
    InformSession& operator=(const InformSession&) = delete;

    /// Sends one; `done` is called once, later. False, with the reason in `problem` and `done` not
    /// called, when it cannot be sent.
    bool send(const TrapContent& content, Done done, std::string& problem);

    /// The system's error of the last `send` that failed; 0 if it was not the system.
    int error() const;

    std::size_t underWay() const { return requests_.size(); }

private:
    struct Request;

    explicit InformSession(ReceiverSession session, bool version3);

    static int onEvent(int operation, netsnmp_session* session, int id, netsnmp_pdu* pdu,
                       void* request);
    void handle(int operation, const netsnmp_pdu* pdu, const Request& request);
    void finish(const Request& request, InformEnd end, const std::string& detail);

    std::list<Request> requests_;
    bool sending_ = false;
    bool closing_ = false;
    bool version3_;
    ReceiverSession session_;
};

}  // namespace talvik
