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

constexpr int kSessionEnds = 11;  ///< the library's SNMPD_CALLBACK_INDEX_STOP

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
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, kSessionEnds, &AgentxMaster::onLost, nullptr);
}

AgentxMaster::~AgentxMaster()
{
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
        if (session_) {
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
    if (subagent_open_master_session() != 0) {
        tryLater("it opens no session", now);
        return;
    }
    session_ = true;
    reported_ = false;
    taken_ = 0;
    refused_.reset();
    pause_ = {};
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
        const auto result = offerSubtree(*subtree, log_);
        if (!session_) {
            return;  // it has gone meanwhile
        }
        if (!result) {
            setTaken(*subtree);
            continue;
        }
        reason = *result;
        if (again) {
            break;
        }
    }
    taken_ = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), &isTaken));
    report(all.size() - taken_, reason);
    pauseFrom(now);
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
    if (!session_) {
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
    session_ = false;
    state_ = State::Away;
    pauseFrom(now);
}

/// The session with the master has ended.
int AgentxMaster::onLost(int, int, void*, void*)
{
    return guardCallback("AgentX", SNMPERR_GENERR, [] {
        if (current != nullptr && current->session_) {
            current->tryLater("it has ended the session", std::chrono::steady_clock::now());
        }
        return SNMPERR_SUCCESS;
    });
}

}  // namespace talvik
