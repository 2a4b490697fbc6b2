#include "host/snmp/agentx_master.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

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
    return state_ == State::Away || state_ == State::Probing ? next_ : Time::max();
}

void AgentxMaster::proceed(bool /*ready*/, Time now)
{
    if (state_ == State::Probing) {
        goOnWithProbe(now);
    } else if (state_ == State::Away && now >= next_) {
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
        tryLater(std::strerror(errno), now);
        return;
    }
    const auto* const socket = reinterpret_cast<const sockaddr*>(&address_.socket);
    // A local socket whose queue is full says so at once (EAGAIN) and never becomes connected.
    if (::connect(probe_, socket, address_.size) != 0 && errno != EINPROGRESS) {
        tryLater(errno == EAGAIN ? "it takes no connection" : std::strerror(errno), now);
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
        connect(now);
    } else if (count > 0) {
        asked_ = true;
    } else if (count == 0 || !mustWait(errno)) {
        tryLater(count == 0 ? "it closed the connection" : std::strerror(errno), now);
    } else if (now >= next_) {
        tryLater("it does not answer", now);
    }
}

void AgentxMaster::connect(Time now)
{
    closeProbe();
    if (subagent_open_master_session() != 0) {
        tryLater("it opens no session", now);
        return;
    }
    state_ = State::Connected;
    registerAll();
    if (state_ != State::Connected) {
        return;  // it has gone again meanwhile
    }
    hostLog()->info("AgentX master {}: connected, requests come through it", name());
    reported_ = false;
    pause_ = {};
}

/// The library tells of a refusal in its log only.
void AgentxMaster::registerAll()
{
    log_.startKeeping();
    register_mib_reattach();
    const auto lines = log_.stopKeeping();
    const auto isError = [](const LibraryLog::Line& line) {
        return line.level == LibraryLog::Level::Error;
    };
    const auto first = std::find_if(lines.begin(), lines.end(), isError);
    if (first != lines.end()) {
        hostLog()->error("AgentX master {}: refuses {} of the subtrees of this agent ({}); if "
                         "another subagent serves them, end that one and restart this agent",
                         name(), std::count_if(lines.begin(), lines.end(), isError),
                         oneLine(first->text));
    }
}

void AgentxMaster::tryLater(const std::string& reason, Time now)
{
    closeProbe();
    if (!std::exchange(reported_, true)) {
        hostLog()->warn("AgentX master {} cannot be reached: {}; nobody can ask this agent until "
                        "it can",
                        name(), reason);
    }
    state_ = State::Away;
    pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
    next_ = now + pause_;
}

/// The session with the master has ended.
int AgentxMaster::onLost(int, int, void*, void*)
{
    return guardCallback("AgentX", SNMPERR_GENERR, [] {
        if (current != nullptr && current->state_ == State::Connected) {
            current->tryLater("it has ended the session", std::chrono::steady_clock::now());
        }
        return SNMPERR_SUCCESS;
    });
}

}  // namespace talvik
