#include "backend/back_end.h"

#include "backend/alarm_commands.h"
#include "backend/system_commands.h"

#include <ctime>

namespace talvik::backend {

namespace {

std::uint64_t now()
{
    return static_cast<std::uint64_t>(std::time(nullptr));
}

}  // namespace

BackEnd::BackEnd(const DeviceConfigFile& config, const std::string& storePath)
    : store_(storePath),
      notifications_(store_),
      resend_(store_),
      commands_(makeCommandServer(config))
{
    const auto wake = [this] { changed_.raise(); };
    store_.onChange(wake);
    addAlarmCommands(commands_, config, {store_, notifications_, resend_, wake, now});
}

void BackEnd::proceed(Time now)
{
    changed_.clear();
    resend_.proceed(now);
}

std::string alarmFileIn(const std::string& stateDirectory)
{
    return stateDirectory + "/" + AlarmStore::kFileName;
}

}  // namespace talvik::backend
