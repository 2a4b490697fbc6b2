#include "tools/alarm_actions.h"

#include "backend/alarm_commands.h"
#include "host/startup_error.h"
#include "tools/alarm_client.h"
#include "tools/alarm_output.h"
#include "tools/alarm_scenario.h"
#include "tools/exit_status.h"
#include "tools/progress.h"
#include "tools/scenario_run.h"
#include "tools/socket_output.h"
#include "tools/trap_output.h"

#include <algorithm>
#include <iostream>
#include <thread>
#include <utility>

namespace talvik::ctl {

namespace {

AlarmReport reportOf(const AlarmOptions& options)
{
    auto report = options.report;
    report.parameters = joinedParameters(options.parameters);
    if (report.parameters.size() > backend::kMaxParameters) {
        throw StartupError("the parameters have " + std::to_string(report.parameters.size()) +
                           " bytes together, at most " + std::to_string(backend::kMaxParameters) +
                           " are possible; shorten them");
    }
    return report;
}

/// Runs raise or event.
int reportWith(std::uint32_t (AlarmClient::*send)(const AlarmReport&), const AlarmOptions& options)
{
    const auto report = reportOf(options);
    AlarmClient client(options.socket);
    return orPrintFailure(options.socket, [&] {
        const auto serial = (client.*send)(report);
        auto value = socketJson(options.socket);
        value["serial"] = serial;
        std::cout << (options.socket.output.json ? jsonText(value) : std::to_string(serial) + "\n");
    });
}

/// What came of a clear of several alarms.
struct Clearing {
    std::vector<std::uint32_t> cleared;
    std::vector<std::uint32_t> notTried;
    std::vector<std::pair<std::uint32_t, Failure>> failed;
};

bool nobodyAnswers(const Clearing& clearing)
{
    return !clearing.failed.empty() && isForWantOfAnAnswer(clearing.failed.back().second.kind());
}

Clearing clearEach(AlarmTarget& target, const std::vector<std::uint32_t>& serials)
{
    Clearing clearing;
    for (const auto serial : serials) {
        if (nobodyAnswers(clearing)) {
            clearing.notTried.push_back(serial);  // it would wait for nothing
            continue;
        }
        try {
            target.clear(serial);
            clearing.cleared.push_back(serial);
        } catch (const Failure& failure) {
            clearing.failed.emplace_back(serial, failure);
        }
    }
    return clearing;
}

Json::Value listOf(const std::vector<std::uint32_t>& serials)
{
    Json::Value list(Json::arrayValue);
    for (const auto serial : serials) {
        list.append(serial);
    }
    return list;
}

void printAsJson(const SocketOptions& options, const Clearing& clearing)
{
    auto root = socketJson(options);
    root["cleared"] = listOf(clearing.cleared);
    root["failed"] = Json::Value(Json::arrayValue);
    for (const auto& [serial, failure] : clearing.failed) {
        auto value = failureJson(failure);
        value["serial"] = serial;
        root["failed"].append(value);
    }
    root["notTried"] = listOf(clearing.notTried);
    std::cout << jsonText(root);
}

void printText(const Clearing& clearing)
{
    for (const auto serial : clearing.cleared) {
        std::cout << "cleared alarm " << serial << '\n';
    }
    for (const auto& failed : clearing.failed) {
        std::cerr << failureText(failed.second);
    }
    for (const auto serial : clearing.notTried) {
        std::cerr << "talvikctl: did not try to clear alarm " << serial << '\n';
    }
}

std::vector<std::uint32_t> withoutRepeats(const std::vector<std::uint32_t>& serials)
{
    std::vector<std::uint32_t> once;
    for (const auto serial : serials) {
        if (std::find(once.begin(), once.end(), serial) == once.end()) {
            once.push_back(serial);
        }
    }
    return once;
}

}  // namespace

int runAlarmRaise(const AlarmOptions& options)
{
    return reportWith(&AlarmClient::raise, options);
}

int runAlarmEvent(const AlarmOptions& options)
{
    return reportWith(&AlarmClient::reportEvent, options);
}

int runAlarmList(const AlarmOptions& options)
{
    AlarmClient client(options.socket);
    return orPrintFailure(options.socket, [&] {
        const auto alarms = client.active(options.after, options.limit);
        std::cout << (options.socket.output.json
                          ? jsonText(activeAlarmsJson(alarms))
                          : activeAlarmsText(alarms, tableStyle(options.socket.output)));
    });
}

int runAlarmClear(const AlarmOptions& options)
{
    AlarmClient client(options.socket);
    const auto clearing = clearEach(client, withoutRepeats(options.serials));
    if (options.socket.output.json) {
        printAsJson(options.socket, clearing);
    } else {
        printText(clearing);
    }
    return clearing.failed.empty() ? kExitGood : exitStatusOf(clearing.failed.back().second.kind());
}

int runAlarmResend(const AlarmOptions& options)
{
    AlarmClient client(options.socket);
    return orPrintFailure(options.socket, [&] {
        const auto count = client.resend();
        auto value = socketJson(options.socket);
        value["count"] = count;
        std::cout << (options.socket.output.json
                          ? jsonText(value)
                          : std::to_string(count) +
                                (count == 1 ? " active alarm" : " active alarms") +
                                " will be sent again\n");
    });
}

int runAlarmScenario(const AlarmOptions& options)
{
    const auto scenario = AlarmScenario::load(options.scenario);
    AlarmClient client(options.socket);
    ScenarioText text(std::cout, std::cerr, tableStyle(options.socket.output));
    ScenarioJson json(std::cout);
    ScenarioReport& report = options.socket.output.json ? static_cast<ScenarioReport&>(json) : text;
    ScenarioRun run(
        client, [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }, report);
    const Progress::Span span("scenario");
    const auto counts = run.run(scenario, options.keepGoing);
    if (counts.unanswered) {
        return kExitNoAnswer;
    }
    return counts.failed == 0 ? kExitGood : kExitBad;
}

}  // namespace talvik::ctl
