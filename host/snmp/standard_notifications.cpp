#include "host/snmp/standard_notifications.h"

#include "host/platform/host_log.h"
#include "host/snmp/durable_file.h"
#include "host/startup_error.h"
#include "platform/basic_info.h"
#include "platform/time_conversion.h"

#include <snmp_pp/octet.h>

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <utility>

namespace talvik {

namespace {

// snmpTraps of RFC 3418.
const ObjectId& standardNotification(bool cold)
{
    static const ObjectId kColdStart = {1, 3, 6, 1, 6, 3, 1, 1, 5, 1};
    static const ObjectId kWarmStart = {1, 3, 6, 1, 6, 3, 1, 1, 5, 2};
    return cold ? kColdStart : kWarmStart;
}

const ObjectId& alarmObjects()
{
    static const ObjectId kBase = {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1};
    return kBase;
}

const ObjectId& testNotification()
{
    static const ObjectId kId = {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 2};
    return kId;
}

constexpr int kCategoryEvent = 3;
constexpr int kFaultTypeEvent = 3;
constexpr int kLeastLevel = 5;  // informational; 1 is the most severe

SnmpValue text(std::string value)
{
    return {Syntax::OctetString, 0, std::move(value)};
}

SnmpValue number(Syntax syntax, std::int64_t value)
{
    return {syntax, value, {}};
}

std::string nodeCode()
{
    const char* const code = CSNMPBasicImpl::getNodeCode();
    return code == nullptr ? "" : code;
}

std::string dateAndTimeNow()
{
    Snmp_pp::OctetStr octets;
    CSnmpUtil::convertTime2DateTime(octets, static_cast<long>(std::time(nullptr)));
    return {reinterpret_cast<const char*>(octets.data()), octets.len()};
}

/// A line for each file; a file that is not there has one too.
std::string noteOf(const std::list<std::string>& files)
{
    std::string note;
    for (const auto& file : files) {
        struct stat status {};
        note += file;
        if (::stat(file.c_str(), &status) == 0) {
            note += '\t' + std::to_string(status.st_size) + '\t' +
                    std::to_string(status.st_mtim.tv_sec) + '.' +
                    std::to_string(status.st_mtim.tv_nsec);
        }
        note += '\n';
    }
    return note;
}

}  // namespace

Trap coldStart(const std::list<tTrapDestInfo>& receivers)
{
    return {standardNotification(true), {}, receivers};
}

Trap warmStart(const std::list<tTrapDestInfo>& receivers)
{
    return {standardNotification(false), {}, receivers};
}

Trap testTrap(const tTrapDestInfo& receiver)
{
    Trap trap;
    trap.id = testNotification();
    trap.receivers.push_back(receiver);
    const SnmpValue values[] = {
        text(nodeCode()),
        text("receiver " + receiver.index),
        text("Nothing to do: this notification was asked for to test the way to its receiver."),
        text("Test trap"),
        number(Syntax::Integer, kFaultTypeEvent),
        number(Syntax::Integer, kLeastLevel),
        number(Syntax::Gauge32, 0),
        text(dateAndTimeNow()),
        number(Syntax::Gauge32, 0),
        text("No alarm is behind this notification."),
        number(Syntax::Integer, kCategoryEvent),
        number(Syntax::Counter64, 0),
        number(Syntax::Integer, CSNMPBasicImpl::device_type),
        text(CSNMPBasicImpl::product_sn),
    };
    unsigned long suffix = 0;
    for (const auto& value : values) {
        auto name = alarmObjects();
        name.push_back(++suffix);
        name.push_back(0);
        trap.bindings.push_back({std::move(name), value});
    }
    return trap;
}

bool configurationMayHaveChanged(const std::string& stateDirectory,
                                 const std::list<std::string>& files)
{
    const auto path = stateDirectory + "/last-start";
    try {
        const auto note = noteOf(files);
        const auto before = readFile(path);
        if (before == note) {
            return false;
        }
        writeDurably(path, note);
    } catch (const StartupError& error) {
        hostLog()->warn("whether the configuration changed since the last start is not known: {}; "
                        "the receivers are told of a cold start",
                        error.what());
    }
    return true;
}

}  // namespace talvik
