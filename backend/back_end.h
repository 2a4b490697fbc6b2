#pragma once

#include "backend/alarm_store.h"
#include "backend/background_work.h"
#include "backend/command_server.h"
#include "backend/notification_stream.h"
#include "backend/resend_job.h"
#include "backend/wake_signal.h"
#include "host/platform/device_config_file.h"

#include <string>

namespace talvik::backend {

/// The whole back end but its socket: the alarms, the commands on them, and what is to be done
/// besides. It outlives every server and link that it is given to.
class BackEnd : public BackgroundWork {
public:
    /// `config` has the numbers of the commands and what they answer; `storePath` is the file of
    /// the alarms, or `DurableDatabase::kInMemory`. Throws `StartupError`.
    BackEnd(const DeviceConfigFile& config, const std::string& storePath);

    BackEnd(const BackEnd&) = delete;
    BackEnd& operator=(const BackEnd&) = delete;

    AlarmStore& alarms() { return store_; }

    /// Every command of the back end. More can be added before it serves.
    CommandServer& commands() { return commands_; }

    int wakeFd() const override { return changed_.fd(); }
    Time deadline() const override { return resend_.deadline(); }
    void proceed(Time now) override;

private:
    WakeSignal changed_;
    AlarmStore store_;
    NotificationSource notifications_;
    ResendJob resend_;
    CommandServer commands_;
};

/// The file of the alarms in a state directory.
std::string alarmFileIn(const std::string& stateDirectory);

}  // namespace talvik::backend
