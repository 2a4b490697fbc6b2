#include "host/snmp/agentx_master.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/agentx_offer.h"
#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

// Exported by the library, declared in none of its headers.
extern "C" {
SNMPCallback subagent_startup;  // connects when the configuration has been read
int subagent_open_master_session(void);
}

namespace talvik {

namespace {

constexpr int kSessionBegins = 10;  ///< the library's SNMPD_CALLBACK_INDEX_START
constexpr int kSessionEnds = 11;    ///< the library's SNMPD_CALLBACK_INDEX_STOP

constexpr std::chrono::milliseconds kFirstPause{100};
constexpr std::chrono::milliseconds kLongestPause{5000};
constexpr std::chrono::seconds kSignOfLife{1};

/// An agentx-Ping-PDU in a session that is not open: a master answers it with an error.
constexpr std::array<unsigned char, 20> kPing = {1, 13, 0x10, 0};

/// The one instance. The library would free a callback's argument when it shuts down.
AgentxMaster* current = nullptr;

bool mustWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR || error == EINPROGRESS;
}

}  // namespace

void AgentxMaster::enterRole()
{
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
}

AgentxMaster::AgentxMaster(AgentxAddress address, LibraryLog& log)
    : address_(std::move(address)),
      log_(log)
{
    current = this;
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG,
                             &subagent_startup, nullptr, 0);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, kSessionBegins, &AgentxMaster::onOpened,
                           nullptr);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, kSessionEnds, &AgentxMaster::onLost, nullptr);
}

AgentxMaster::~AgentxMaster()
{
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, kSessionBegins, &AgentxMaster::onOpened,
                             nullptr, 0);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, kSessionEnds, &AgentxMaster::onLost,
                             nullptr, 0);
    current = nullptr;
    closeProbe();
}

void AgentxMaster::begin()
{
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET,
                          address_.text.c_str());
    // The library neither looks for the master nor asks it whether it is there: it would wait.
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, 0);
    // On a connection of bytes a repetition is of no use; it would only make the wait longer.
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_RETRIES, 0);
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_TIMEOUT, 1);
    state_ = State::Away;
    next_ = Time();
}

LoopWatcher::Time AgentxMaster::deadline() const
{
    const bool waits = state_ == State::Away || state_ == State::Probing ||
                       (state_ == State::Connected && refused_.value_or(0) != 0);
    return waits ? next_ : Time::max();
}

void AgentxMaster::proceed(bool /*ready*/, Time now)
{
    if (state_ == State::Probing) {
        goOnWithProbe(now);
    } else if (now >= deadline()) {
        startProbe(now);
    }
}

void AgentxMaster::closeProbe()
{
    if (probe_ >= 0) {
        ::close(std::exchange(probe_, -1));
    }
}

void AgentxMaster::startProbe(Time now)
{
    const int family = address_.socket.ss_family;
    probe_ = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe_ < 0) {
        goOnLater(std::strerror(errno), now);
        return;
    }
    const auto* const socket = reinterpret_cast<const sockaddr*>(&address_.socket);
    // A local socket whose queue is full says so at once (EAGAIN) and never becomes connected.
    if (::connect(probe_, socket, address_.size) != 0 && errno != EINPROGRESS) {
        goOnLater(errno == EAGAIN ? "it takes no connection" : std::strerror(errno), now);
        return;
    }
    state_ = State::Probing;
    asked_ = false;
    next_ = now + kSignOfLife;
}

void AgentxMaster::goOnWithProbe(Time now)
{
    std::array<unsigned char, 1> answer{};
    const auto count =
        asked_ ? ::recv(probe_, answer.data(), answer.size(), MSG_DONTWAIT)
               : ::send(probe_, kPing.data(), kPing.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0 && asked_) {
        closeProbe();
        if (session_ != nullptr) {
            offerSubtrees(now);
        } else {
            connect(now);
        }
    } else if (count > 0) {
        asked_ = true;
    } else if (count == 0 || !mustWait(errno)) {
        goOnLater(count == 0 ? "it closed the connection" : std::strerror(errno), now);
    } else if (now >= next_) {
        goOnLater("it does not answer", now);
    }
}

void AgentxMaster::connect(Time now)
{
    if (subagent_open_master_session() != 0 || session_ == nullptr) {
        tryLater("it opens no session", now);
        return;
    }
    taken_ = 0;
    refused_.reset();
    offerSubtrees(now);
}

/// Those that the master has not taken yet. A master may log each refusal, so of those that it has
/// refused before, it gets one, a different one each time, and the others once it takes that.
void AgentxMaster::offerSubtrees(Time now)
{
    state_ = State::Connected;
    const auto all = subtreesToOffer();
    auto left = all;
    left.erase(std::remove_if(left.begin(), left.end(), &isTaken), left.end());
    const bool again = refused_.has_value();
    if (again && !left.empty()) {
        const auto first = static_cast<std::ptrdiff_t>(turn_++ % left.size());
        std::rotate(left.begin(), left.begin() + first, left.end());
    }
    std::string reason;
    for (auto* subtree : left) {
        const auto answer = offerSubtree(*session_, *subtree, log_);
        if (session_ == nullptr) {
            return;  // it has gone meanwhile
        }
        if (answer.kind == OfferAnswer::Kind::None) {
            leave();
            return;
        }
        if (answer.kind == OfferAnswer::Kind::Taken) {
            setTaken(*subtree);
            continue;
        }
        reason = answer.reason;
        if (again) {
            break;
        }
    }
    taken_ = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), &isTaken));
    report(all.size() - taken_, reason);
    if (!again) {
        reported_ = false;
        pause_ = {};
    }
    pauseFrom(now);
}

/// A repetition in the same session would be refused if the master has taken the first one after
/// all. The library ends a session when its connection does, and tells so.
void AgentxMaster::leave()
{
    taken_ = 0;
    state_ = State::Leaving;
    const auto* transport = snmp_sess_transport(snmp_sess_pointer(session_));
    ::shutdown(transport->sock, SHUT_RDWR);
}

/// Says what has changed since the last offer.
void AgentxMaster::report(std::size_t refused, const std::string& reason)
{
    if (std::exchange(refused_, refused) == refused) {
        return;
    }
    if (refused == 0) {
        hostLog()->info("AgentX master {}: connected, requests come through it", name());
    } else {
        hostLog()->error("AgentX master {}: connected, but refuses {} of the {} subtrees of this "
                         "agent ({}), so nobody can ask this agent for them; if another subagent "
                         "serves them, end that one. They are offered again, at least every {} s",
                         name(), refused, taken_ + refused, oneLine(reason),
                         std::chrono::duration_cast<std::chrono::seconds>(kLongestPause).count());
    }
}

/// As long as there is a session, its end is told by the library.
void AgentxMaster::goOnLater(const std::string& reason, Time now)
{
    if (session_ == nullptr) {
        tryLater(reason, now);
        return;
    }
    closeProbe();
    state_ = State::Connected;
    pauseFrom(now);
}

void AgentxMaster::pauseFrom(Time now)
{
    pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
    next_ = now + pause_;
}

void AgentxMaster::tryLater(const std::string& reason, Time now)
{
    closeProbe();
    if (!std::exchange(reported_, true)) {
        hostLog()->warn("AgentX master {} cannot be reached: {}; nobody can ask this agent until "
                        "it can",
                        name(), reason);
    }
    session_ = nullptr;
    state_ = State::Away;
    pauseFrom(now);
}

/// A session with the master has begun.
int AgentxMaster::onOpened(int, int, void* session, void*)
{
    return guardCallback("AgentX", SNMPERR_GENERR, [session] {
        if (current != nullptr) {
            current->session_ = static_cast<snmp_session*>(session);
        }
        return SNMPERR_SUCCESS;
    });
}

/// The session with the master has ended.
int AgentxMaster::onLost(int, int, void*, void*)
{
    return guardCallback("AgentX", SNMPERR_GENERR, [] {
        if (current != nullptr && current->session_ != nullptr) {
            const bool left = current->state_ == State::Leaving;
            current->tryLater(left ? "it does not answer whether it takes what this agent serves"
                                   : "it has ended the session",
                              std::chrono::steady_clock::now());
        }
        return SNMPERR_SUCCESS;
    });
}

}  // namespace talvik
