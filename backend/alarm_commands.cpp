#include "backend/alarm_commands.h"

#include "backend/alarm_tags.h"
#include "backend/backend_log.h"
#include "backend/connection.h"
#include "backend/record_builder.h"
#include "backend/request_cells.h"
#include "backend/system_commands.h"

#include <limits>
#include <string>
#include <utility>

namespace talvik::backend {

namespace {

constexpr auto kMaxWord = std::numeric_limits<std::uint32_t>::max();
constexpr auto kMaxLong = std::numeric_limits<std::uint64_t>::max();

/// More than a record about an active alarm takes beside its parameters.
constexpr std::size_t kRecordRoom = 128;
static_assert(kMaxParametersInPage + kMaxParameters + (kMaxAlarmsInPage + 1) * kRecordRoom <
                  kMaxPackageSize,
              "an answer about active alarms fits a package");

/// Adds `command` under the number that the device configuration gives to `name`; a `BadCell` that
/// leaves it becomes a result code.
void addChecked(CommandServer& server, const DeviceConfigFile& config, const std::string& name,
                CommandServer::Command command)
{
    server.add(commandNumber(config, name), name,
               [name, command = std::move(command)](const Package& request, Package& reply) {
                   try {
                       return command(request, reply);
                   } catch (const BadCell& error) {
                       backendLog()->warn("{} is refused: {}", name, error.what());
                       return result::kBadRequest;
                   }
               });
}

Alarm reportedIn(const Package& request, const AlarmServices& services)
{
    const RequestCells cells(request);
    Alarm reported;
    reported.id = cells.number(alarm::kIdTag, "alarm id", kMaxLong);
    reported.level = static_cast<std::uint32_t>(cells.number(alarm::kLevelTag, "level", kMaxWord));
    reported.parameters = cells.text(alarm::kParametersTag, "parameters", kMaxParameters);
    const auto time = cells.optionalNumber(alarm::kTimeTag, "time", kMaxTime);
    reported.time = time ? *time : services.clock();
    return reported;
}

/// RAISE_ALARM and REPORT_EVENT.
CommandServer::Command reportWith(StoreAnswer (AlarmStore::*report)(const Alarm&),
                                  const AlarmServices& services)
{
    return [report, services](const Package& request, Package& reply) {
        const auto answer = (services.store.*report)(reportedIn(request, services));
        if (answer.code == result::kSuccess) {
            RecordBuilder(reply, request[0]->ullRecordId).u32(alarm::kSerialTag, answer.serial);
        }
        return answer.code;
    };
}

void append(Package& reply, const ActiveAlarm& active)
{
    RecordBuilder(reply, alarm::kRecordId)
        .u8(alarm::kKindTag, static_cast<std::uint8_t>(alarm::Kind::Fault))
        .u64(alarm::kIdTag, active.alarm.id)
        .u32(alarm::kLevelTag, active.alarm.level)
        .u32(alarm::kSerialTag, active.serial)
        .u64(alarm::kTimeTag, active.alarm.time)
        .text(alarm::kParametersTag, active.alarm.parameters);
}

/// GET_CURRENT_ALARM.
CommandServer::Command showWith(const AlarmServices& services)
{
    return [services](const Package& request, Package& reply) {
        const RequestCells cells(request);
        const auto after = cells.number(alarm::kSerialTag, "serial number", kMaxWord);
        const auto count = cells.positiveNumber(alarm::kCountTag, "count", kMaxAlarmsInPage);
        const auto page = services.store.pageOfActive(static_cast<std::uint32_t>(after), count,
                                                      kMaxParametersInPage);
        reply.oRecords.reserve(page.alarms.size() + 1);
        for (const auto& active : page.alarms) {
            append(reply, active);
        }
        if (page.isLast) {
            RecordBuilder(reply, alarm::kRecordId).u32(alarm::kEndMarkTag, 0);
        }
        return result::kSuccess;
    };
}

CommandServer::Command clearWith(const AlarmServices& services)
{
    return [services](const Package& request, Package&) {
        const RequestCells cells(request);
        const auto serial = cells.number(alarm::kSerialTag, "serial number", kMaxWord);
        const auto requester = cells.text(alarm::kRequesterTag, "requester", kMaxRequester);
        return services.store.clear(static_cast<std::uint32_t>(serial), requester,
                                    services.clock());
    };
}

CommandServer::Command resendWith(const AlarmServices& services)
{
    return [services](const Package& request, Package& reply) {
        const auto count = services.resend.start();
        services.wake();
        RecordBuilder(reply, request[0]->ullRecordId).u32(alarm::kCountTag, count);
        return result::kSuccess;
    };
}

CommandServer::ConnectionCommand subscribeWith(const AlarmServices& services)
{
    return [services](Connection& connection, const Package&) {
        auto stream = services.notifications.subscribe();
        if (!stream) {
            return result::kAlreadySubscribed;
        }
        connection.carry(std::move(stream));
        return result::kSuccess;
    };
}

}  // namespace

void addAlarmCommands(CommandServer& server, const DeviceConfigFile& config,
                      const AlarmServices& services)
{
    addChecked(server, config, "GET_CURRENT_ALARM", showWith(services));
    addChecked(server, config, "RAISE_ALARM", reportWith(&AlarmStore::raise, services));
    addChecked(server, config, "REPORT_EVENT", reportWith(&AlarmStore::reportEvent, services));
    addChecked(server, config, "CLEAR_ALARM", clearWith(services));
    addChecked(server, config, "RESEND_ALARMS", resendWith(services));
    const std::string subscribe = "SUBSCRIBE_NOTIFICATIONS";
    server.addForConnection(commandNumber(config, subscribe), subscribe, subscribeWith(services));
}

}  // namespace talvik::backend
