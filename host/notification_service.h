#pragma once

#include "backend/background_work.h"
#include "backend/command_server.h"
#include "backend/server_thread.h"
#include "host/health_source.h"
#include "host/link/notification_channel.h"
#include "host/loop_calls.h"
#include "host/platform/device_config_file.h"
#include "host/platform/trap_store.h"
#include "host/snmp/notification_dispatcher.h"
#include "host/snmp/trap_sender.h"
#include "host/table_keeper.h"

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// All between the back end's notifications and the receivers of traps, with the socket that
/// `talvikctl` uses. Made, used and destroyed on the thread of the agent's loop, after the SNMP
/// library was configured and before it is shut down.
class NotificationService {
public:
    struct Settings {
        const DeviceConfigFile& device;  ///< has the numbers of the commands
        std::string ownSocket;           ///< where the agent listens for talvikctl
        std::string backendSocket;       ///< where the back end's notifications come from
        TrapSender::Settings sender;
        TableKeeper& tables;  ///< hears what the back end reports; outlives the service
        /// Without it notifications stay in the back end: nobody here can make traps of them.
        bool takesNotifications = true;
    };

    /// Adds the agent's own commands to `commands`; with an embedded back end these are the back
    /// end's and `work` is what it does besides, else null. Both, and `store`, outlive this object.
    /// Nothing is sent, opened or connected yet. Throws `StartupError`.
    NotificationService(const Settings& settings, const TrapStore& store,
                        backend::CommandServer& commands, backend::BackgroundWork* work);

    /// What is under way is given up without an acknowledgement, so that it comes again.
    ~NotificationService();

    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;

    /// Listens, tells the receivers that the agent has started, and takes notifications from then
    /// on, as far as the loop serves `watchers()`. `cold` tells the two kinds of start apart.
    /// Throws `StartupError`.
    void start(bool cold);

    /// Reads the trap settings, even if they look unchanged.
    void readSettingsAgain() { sender_.readSettingsAgain(); }

    /// Adds to `health` what is known of receivers, notifications and their handlers.
    void report(AgentHealth& health) const;

    /// Whether the back end's notifications come here.
    HealthSource::Subscription subscription() const;

    /// What the loop has to serve.
    std::vector<LoopWatcher*> watchers();

private:
    class Receivers;
    class SenderTurn;

    const Settings settings_;
    const backend::CommandServer& commands_;
    backend::BackgroundWork* const work_;
    LoopCalls calls_;
    TrapSender sender_;
    NotificationDispatcher dispatcher_;
    const std::unique_ptr<Receivers> receivers_;
    const std::unique_ptr<SenderTurn> senderTurn_;
    std::optional<backend::ServerThread> server_;
    NotificationChannel channel_;
};

}  // namespace talvik
