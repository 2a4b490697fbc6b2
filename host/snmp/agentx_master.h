#pragma once

#include "host/loop_watcher.h"
#include "host/snmp/agentx_address.h"
#include "host/snmp/library_log.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

struct snmp_session;

namespace talvik {

/// The AgentX master (RFC 2741) that passes managers' requests on to this agent. Finds it, again
/// and again while it is away, and has the library register there what this agent serves.
///
/// The library would do so by itself, but waits for a master that does not accept, for as long as
/// that takes. So the master is first asked for a sign of life on a connection of its own, without
/// waiting. The library's own exchanges with it then do wait: to open the session, and for each
/// subtree that is offered, a second each at most. The first that stays without an answer is the
/// last: the session is ended, since nobody knows what the master has taken, and a new one begun
/// later. Subtrees that the master refuses, because another subagent serves them, are offered to it
/// again and again, too. On the agent's thread only, one instance a process.
class AgentxMaster : public LoopWatcher {
public:
    /// Makes the library a subagent; before its `init_agent`.
    static void enterRole();

    /// After the library's `init_agent`. `log` outlives it.
    AgentxMaster(AgentxAddress address, LibraryLog& log);
    ~AgentxMaster() override;

    /// From now on the master is looked for. After the library has read its configuration.
    void begin();

    /// Whether managers reach anything of this agent.
    bool isServing() const { return session_ != nullptr && taken_ != 0; }

    const std::string& name() const { return address_.text; }

    int descriptor() const override { return probe_; }
    bool wantsToWrite() const override { return state_ == State::Probing && !asked_; }
    Time deadline() const override;
    void proceed(bool ready, Time now) override;

private:
    enum class State {
        Idle,
        Away,
        Probing,
        Connected,
        Leaving,  ///< the session is given up; the library has yet to notice
    };

    static int onOpened(int majorId, int minorId, void* session, void* unused);
    static int onLost(int majorId, int minorId, void* session, void* unused);

    void closeProbe();
    void startProbe(Time now);
    void goOnWithProbe(Time now);
    void connect(Time now);
    void offerSubtrees(Time now);
    void report(std::size_t refused, const std::string& reason);
    void leave();
    void goOnLater(const std::string& reason, Time now);
    void tryLater(const std::string& reason, Time now);
    void pauseFrom(Time now);

    const AgentxAddress address_;
    LibraryLog& log_;
    State state_ = State::Idle;
    int probe_ = -1;                      ///< a connection of its own
    bool asked_ = false;                  ///< the sign of life was asked for
    bool reported_ = false;               ///< the log says that the master is away
    snmp_session* session_ = nullptr;     ///< the library's with the master, while it has one
    std::size_t taken_ = 0;               ///< subtrees that the master passes requests for
    std::optional<std::size_t> refused_;  ///< the others, once all have been offered
    std::size_t turn_ = 0;                ///< whose turn it is to be offered again
    std::chrono::milliseconds pause_{0};
    Time next_ = Time::max();  ///< when to try again, or how long to wait for a sign of life
};

}  // namespace talvik
