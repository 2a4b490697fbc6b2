#include "tools/backend_status.h"

#include "backend/protocol.h"
#include "backend/system_commands.h"
#include "backend/system_tags.h"
#include "backend/unix_address.h"
#include "host/link/socket_link.h"
#include "host/startup_error.h"
#include "tools/exit_status.h"
#include "tools/folded_text.h"
#include "tools/progress.h"
#include "tools/safe_text.h"

#include <json/json.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace talvik::ctl {

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

struct Status {
    bool up = false;
    int exitStatus = kExitGood;
    std::string wwn;            // when up
    Milliseconds roundTrip{0};  // when up, connecting included
    std::string reason;         // when down
    std::string advice;         // when down: what to do
};

std::string hex(int code)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(code));
    return text;
}

std::string adviceOn(int code, const StatusOptions& options)
{
    switch (code) {
    case BackendLink::kUnreachable:
        return "start talvik-backendd --socket " + options.socket +
               " or name the socket that it listens on; the user must be its own or root";
    case BackendLink::kTimedOut:
        return "look at the back end's log and restart it if it hangs, or allow more time with "
               "--timeout";
    case BackendLink::kProtocolError:
        return "make sure that talvik-backendd of the same release listens on " + options.socket;
    case static_cast<int>(backend::result::kUnknownCommand):
        return "name the socket of talvik-backendd with --socket if the agent uses one; otherwise "
               "make sure that the back end reads the same device configuration as " +
               options.device + ", and look at its log";
    default:
        return "look at the back end's log";
    }
}

/// The text of the WWN cell; empty when the answer has none.
std::string wwnIn(const Package& answer)
{
    for (const CTLVRecordV3* record : answer.oRecords) {
        const auto cell = record->find(backend::system_tag::kWwn);
        if (cell != record->pCells->end()) {
            return (*cell)->toString();
        }
    }
    return std::string();
}

Status failed(int code, const std::string& reason, const StatusOptions& options)
{
    Status status;
    const bool linkFailed = code == BackendLink::kUnreachable || code == BackendLink::kTimedOut ||
                            code == BackendLink::kProtocolError;
    status.exitStatus = linkFailed ? kExitNoAnswer : kExitBad;
    status.reason = reason;
    status.advice = adviceOn(code, options);
    return status;
}

SocketLimits limitsOf(const StatusOptions& options)
{
    const std::chrono::milliseconds timeout(options.timeoutMs);
    SocketLimits limits;
    limits.connect = timeout;
    limits.exchange = timeout;
    return limits;
}

void appendRecord(Package& package, std::unique_ptr<CTLVRecordV3> record)
{
    package.oRecords.push_back(record.get());
    record.release();
}

Status ask(const StatusOptions& options, std::uint64_t command)
{
    SocketLink link(options.socket, limitsOf(options));
    Package request;
    Package answer;
    appendRecord(request, std::make_unique<CTLVRecordV3>(command));
    const Progress::Span span("waiting for an answer at " + options.socket);
    const auto start = std::chrono::steady_clock::now();
    const int code = link.exchange(request, answer);
    const auto end = std::chrono::steady_clock::now();
    if (!link.lastFailure().empty()) {
        return failed(code, link.lastFailure(), options);
    }
    if (code != 0) {
        return failed(code,
                      "it refused GET_SYSTEM_WWN (" + std::to_string(command) + ") with code " +
                          hex(code),
                      options);
    }
    Status status;
    status.wwn = wwnIn(answer);
    if (status.wwn.empty()) {
        return failed(BackendLink::kProtocolError, "its answer holds no WWN", options);
    }
    status.up = true;
    status.roundTrip = end - start;
    return status;
}

void printJson(const StatusOptions& options, const Status& status)
{
    Json::Value root;
    root["socket"] = options.socket;
    root["state"] = status.up ? "up" : "down";
    if (status.up) {
        root["wwn"] = status.wwn;
        root["roundTripMs"] = status.roundTrip.count();
    } else {
        root["reason"] = status.reason;
        root["advice"] = status.advice;
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["precision"] = 4;
    std::cout << Json::writeString(writer, root) << '\n';
}

void printTable(const StatusOptions& options, const Status& status)
{
    const auto style = tableStyle(options.output);
    const auto printRow = [&style](const char* name, const std::string& value) {
        std::cout << namedValue(name, printable(value), style);
    };
    printRow("socket", options.socket);
    printRow("state", status.up ? "up" : "down");
    if (status.up) {
        char time[32];
        std::snprintf(time, sizeof time, "%.3f ms", status.roundTrip.count());
        printRow("WWN", status.wwn);
        printRow("round trip", time);
    } else {
        printRow("reason", status.reason);
        printRow("to do", status.advice);
    }
}

}  // namespace

int runStatus(const StatusOptions& options)
{
    if (!backend::unixAddress(options.socket)) {
        throw StartupError(backend::unixAddressRefusal(options.socket));
    }
    const auto config = DeviceConfigFile::load(options.device);
    const auto status = ask(options, backend::commandNumber(config, "GET_SYSTEM_WWN"));
    if (options.output.json) {
        printJson(options, status);
    } else {
        printTable(options, status);
    }
    return status.exitStatus;
}

}  // namespace talvik::ctl
