#include "host/snmp/health_subtree.h"

#include "host/platform/utf8_text.h"
#include "host/snmp/varbind.h"
#include "platform/time_conversion.h"

#include <snmp_pp/octet.h>

#include <algorithm>
#include <memory>
#include <new>

namespace talvik {

namespace {

using Instance = std::pair<ObjectId, SnmpValue>;
using Instances = std::vector<Instance>;

/// What a request keeps until it ends.
constexpr const char* kKey = "talvik:health";

// Below the root: .1 the scalars, .2.1 the table of served objects, .2.2 that of the notification
// handlers.
constexpr unsigned long kScalars = 1;
constexpr unsigned long kServed = 2;
constexpr unsigned long kObjects = 1;
constexpr unsigned long kNotificationHandlers = 2;
constexpr unsigned long kEntry = 1;

/// Cut where it is too long; between two characters, if it is UTF-8.
SnmpValue text(std::string octets)
{
    constexpr std::size_t kMost = 255;
    constexpr std::size_t kLongestCharacter = 4;
    if (octets.size() > kMost) {
        auto end = kMost;
        for (auto at = kMost - kLongestCharacter + 1; at < kMost; ++at) {
            if (at + utf8CharacterAt(octets, at).length > kMost) {
                end = at;
                break;
            }
        }
        octets.resize(end);
    }
    return {Syntax::OctetString, 0, std::move(octets)};
}

SnmpValue counter(std::uint64_t count)
{
    return {Syntax::Counter64, static_cast<std::int64_t>(count), {}};
}

SnmpValue gauge(std::uint64_t count)
{
    constexpr std::uint64_t kMost = 0xFFFFFFFFU;
    return {Syntax::Gauge32, static_cast<std::int64_t>(std::min(count, kMost)), {}};
}

template <typename Enumeration>
SnmpValue label(Enumeration value)
{
    return {Syntax::Integer, static_cast<std::int64_t>(value), {}};
}

/// Eight zeros for a moment that has not come yet.
SnmpValue moment(std::optional<std::time_t> time)
{
    if (!time) {
        return {Syntax::OctetString, 0, std::string(8, '\0')};
    }
    Snmp_pp::OctetStr octets;
    CSnmpUtil::convertTime2DateTime(octets, static_cast<long>(*time));
    return {Syntax::OctetString, 0, {reinterpret_cast<const char*>(octets.data()), octets.len()}};
}

/// In the order of their numbers.
std::vector<SnmpValue> scalarsOf(const AgentHealth& health)
{
    const auto total = totalOf(health.objects);
    return {text(health.version),
            moment(health.started),
            moment(health.reloaded),
            text(health.moduleFile),
            label(health.module),
            label(health.master),
            text(health.backendName),
            label(health.backend),
            moment(health.backendAnswered),
            counter(health.backendCommands),
            counter(health.backendFailures),
            counter(total.requests),
            counter(total.sets),
            counter(total.errors),
            counter(health.notificationsTaken),
            gauge(health.receivers),
            counter(health.traps.sent),
            counter(health.traps.failed),
            counter(health.traps.answered),
            counter(health.traps.givenUp),
            gauge(health.traps.waiting)};
}

/// The columns behind the index, which is not accessible, in the order of their numbers.
std::vector<SnmpValue> columnsOf(const ServedObject& object)
{
    constexpr int kReadOnly = 1;
    constexpr int kWritable = 2;
    return {text(object.name),
            text(toText(object.id)),
            label(object.writable ? kWritable : kReadOnly),
            counter(object.counters.requests),
            counter(object.counters.sets),
            counter(object.counters.errors)};
}

std::vector<SnmpValue> columnsOf(const NotificationHandlerHealth& handler)
{
    return {text(toText(handler.base)), counter(handler.counters.built),
            counter(handler.counters.refused)};
}

/// Appends a row for each, numbered from 1.
template <typename Rows>
void appendTable(Instances& instances, unsigned long table, const Rows& rows)
{
    unsigned long row = 0;
    for (const auto& one : rows) {
        ++row;
        unsigned long column = 1;
        for (const auto& value : columnsOf(one)) {
            instances.push_back({{kServed, table, kEntry, ++column, row}, value});
        }
    }
}

const Instances& instancesFor(netsnmp_agent_request_info* info,
                              const std::function<AgentHealth()>& source)
{
    if (const auto* held = netsnmp_agent_get_list_data(info, kKey)) {
        return *static_cast<const Instances*>(held);
    }
    auto made = std::make_unique<Instances>(healthInstances(source()));
    auto* node = netsnmp_create_data_list(kKey, made.get(),
                                          [](void* held) { delete static_cast<Instances*>(held); });
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *made.release();
}

void answerGet(const Instances& instances, netsnmp_agent_request_info* info,
               netsnmp_request_info* request)
{
    const auto suffix = suffixOf(*request->requestvb, healthRoot());
    const auto found =
        std::find_if(instances.begin(), instances.end(),
                     [&](const Instance& instance) { return instance.first == suffix; });
    if (found != instances.end()) {
        setValue(*request->requestvb, found->second);
        return;
    }
    // Whatever begins as an object that is served lacks the instance, the rest the object.
    const auto depth = suffix.empty() || suffix.front() == kScalars ? 2U : 4U;
    const bool known = std::any_of(instances.begin(), instances.end(), [&](const Instance& one) {
        return std::min(suffix.size(), one.first.size()) > depth &&
               std::equal(suffix.begin(), suffix.begin() + depth, one.first.begin());
    });
    netsnmp_set_request_error(info, request, known ? SNMP_NOSUCHINSTANCE : SNMP_NOSUCHOBJECT);
}

void answerGetNext(const Instances& instances, netsnmp_request_info* request)
{
    const auto suffix = suffixOf(*request->requestvb, healthRoot());
    const bool inclusive = request->inclusive != 0;
    const auto found =
        std::find_if(instances.begin(), instances.end(), [&](const Instance& instance) {
            return instance.first > suffix || (inclusive && instance.first == suffix);
        });
    if (found == instances.end()) {
        return;
    }
    auto name = healthRoot();
    name.insert(name.end(), found->first.begin(), found->first.end());
    setName(*request->requestvb, name);
    setValue(*request->requestvb, found->second);
}

}  // namespace

RequestCounters totalOf(const std::vector<ServedObject>& objects)
{
    RequestCounters total;
    for (const auto& object : objects) {
        total.requests += object.counters.requests;
        total.sets += object.counters.sets;
        total.errors += object.counters.errors;
    }
    return total;
}

const ObjectId& healthRoot()
{
    static const ObjectId kRoot = {1, 3, 6, 1, 4, 1, 99999, 2, 91, 20};
    return kRoot;
}

Instances healthInstances(const AgentHealth& health)
{
    Instances instances;
    unsigned long number = 0;
    for (const auto& value : scalarsOf(health)) {
        instances.push_back({{kScalars, ++number, 0}, value});
    }
    appendTable(instances, kObjects, health.objects);
    appendTable(instances, kNotificationHandlers, health.notificationHandlers);
    std::sort(instances.begin(), instances.end(),
              [](const Instance& a, const Instance& b) { return a.first < b.first; });
    return instances;
}

HealthSubtree::HealthSubtree(std::function<AgentHealth()> source) : source_(std::move(source)) {}

void HealthSubtree::answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    const auto& instances = instancesFor(info, source_);
    for (auto* request = requests; request != nullptr; request = request->next) {
        if (request->processed != 0) {
            continue;
        }
        if (info->mode == MODE_GET) {
            answerGet(instances, info, request);
        } else {
            answerGetNext(instances, request);
        }
    }
}

}  // namespace talvik
