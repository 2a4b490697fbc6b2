#include "tools/trap_actions.h"

#include "tools/exit_status.h"
#include "tools/progress.h"
#include "tools/safe_text.h"
#include "tools/snmp_client.h"
#include "tools/trap_output.h"
#include "tools/trap_table.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <utility>

namespace talvik::ctl {

namespace {

void printFailure(const SnmpSettings& snmp, const OutputOptions& output, const Failure& failure)
{
    if (output.json) {
        auto value = failureJson(failure);
        value["agent"] = validUtf8(snmp.agent);
        std::cout << jsonText(value);
    } else {
        std::cerr << failureText(failure);
    }
}

int onTable(const TrapOptions& options, const std::function<void(TrapTable&)>& work)
{
    return onTrapTable(options.snmp, options.output, work);
}

Json::Value indexJson(const TrapOptions& options, std::uint32_t index)
{
    Json::Value value;
    value["agent"] = validUtf8(options.snmp.agent);
    value["index"] = index;
    return value;
}

/// Why a new row, which the agent took, gets nothing all the same; empty if that is not known.
std::string warningOf(const TrapDestination& row, std::uint32_t index)
{
    constexpr std::uint32_t kV3 = 3;
    const bool lacksUser = row.version == kV3 && (!row.user || *row.user == "--");
    const auto name = std::to_string(index);
    return lacksUser ? "nothing can be sent to trap destination " + name +
                           " yet, as v3 needs a user; name one with talvikctl trap modify " + name +
                           " --user NAME"
                     : std::string();
}

/// What came of a removal of several rows.
struct Removal {
    std::vector<std::uint32_t> removed;
    std::vector<std::uint32_t> notTried;
    std::vector<std::pair<std::uint32_t, Failure>> failed;
};

Removal removeEach(TrapTable& table, const std::vector<std::uint32_t>& indexes)
{
    Removal removal;
    for (const auto index : indexes) {
        if (!removal.failed.empty() && isForWantOfAnAnswer(removal.failed.back().second.kind())) {
            removal.notTried.push_back(index);  // it would wait for nothing
            continue;
        }
        try {
            table.remove(index);
            removal.removed.push_back(index);
        } catch (const Failure& failure) {
            removal.failed.emplace_back(index, failure);
        }
    }
    return removal;
}

std::vector<std::uint32_t> withoutRepeats(const std::vector<std::uint32_t>& indexes)
{
    std::vector<std::uint32_t> once;
    for (const auto index : indexes) {
        if (std::find(once.begin(), once.end(), index) == once.end()) {
            once.push_back(index);
        }
    }
    return once;
}

void printRemoval(const TrapOptions& options, const Removal& removal)
{
    if (!options.output.json) {
        for (const auto index : removal.removed) {
            std::cout << "removed trap destination " << index << '\n';
        }
        for (const auto& failed : removal.failed) {
            std::cerr << failureText(failed.second);
        }
        for (const auto index : removal.notTried) {
            std::cerr << "talvikctl: did not try to remove trap destination " << index << '\n';
        }
        return;
    }
    Json::Value root;
    root["agent"] = validUtf8(options.snmp.agent);
    root["removed"] = Json::Value(Json::arrayValue);
    root["failed"] = Json::Value(Json::arrayValue);
    for (const auto index : removal.removed) {
        root["removed"].append(index);
    }
    for (const auto& failed : removal.failed) {
        auto value = failureJson(failed.second);
        value["index"] = failed.first;
        root["failed"].append(value);
    }
    root["notTried"] = Json::Value(Json::arrayValue);
    for (const auto index : removal.notTried) {
        root["notTried"].append(index);
    }
    std::cout << jsonText(root);
}

std::vector<TrapDestination> listOf(TrapTable& table)
{
    const Progress::Span span("list the trap destinations");
    return table.list();
}

}  // namespace

int onTrapTable(const SnmpSettings& snmp, const OutputOptions& output,
                const std::function<void(TrapTable&)>& work)
{
    try {
        SnmpClient client(snmp);
        TrapTable table(client);
        work(table);
        return kExitGood;
    } catch (const Failure& failure) {
        printFailure(snmp, output, failure);
        return exitStatusOf(failure.kind());
    }
}

int runTrapList(const TrapOptions& options)
{
    return onTable(options, [&](TrapTable& table) {
        const auto destinations = listOf(table);
        std::cout << (options.output.json
                          ? jsonText(trapTableJson(options.snmp.agent, destinations))
                          : trapTableText(destinations, tableStyle(options.output)));
    });
}

int runTrapAdd(const TrapOptions& options)
{
    return onTable(options, [&](TrapTable& table) {
        const auto index = table.add(options.destination);
        const auto warning = warningOf(options.destination, index);
        if (options.output.json) {
            auto value = indexJson(options, index);
            if (!warning.empty()) {
                value["warning"] = warning;
            }
            std::cout << jsonText(value);
            return;
        }
        std::cout << index << '\n';
        if (!warning.empty()) {
            std::cout.flush();
            std::cerr << "talvikctl: " << warning << '\n';
        }
    });
}

int runTrapModify(const TrapOptions& options)
{
    const auto index = options.destination.index;
    return onTable(options, [&](TrapTable& table) {
        table.modify(options.destination);
        std::cout << (options.output.json
                          ? jsonText(indexJson(options, index))
                          : "changed trap destination " + std::to_string(index) + "\n");
    });
}

int runTrapRemove(const TrapOptions& options)
{
    int outcome = kExitGood;
    const int status = onTable(options, [&](TrapTable& table) {
        const auto removal = removeEach(table, withoutRepeats(options.indexes));
        printRemoval(options, removal);
        if (!removal.failed.empty()) {
            outcome = exitStatusOf(removal.failed.back().second.kind());
        }
    });
    return status == kExitGood ? outcome : status;
}

}  // namespace talvik::ctl
