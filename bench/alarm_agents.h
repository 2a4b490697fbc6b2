#pragma once

#include "bench/agent_process.h"
#include "bench/snmp_manager.h"
#include "bench/table_rows.h"

#include <cstddef>
#include <string>

namespace talvik::bench {

/// The command by which this program serves rows: port, folder and file of rows follow.
constexpr const char* kServeContainer = "--serve-container";

/// Variables of a row of the current alarm table.
constexpr std::size_t kAlarmColumns = 12;

/// The OID of the current alarm table.
ObjectId alarmTable();

/// An agent with the current alarm table, started by this object and ended with it.
class AlarmAgent {
public:
    /// talvik-agentd with the state in `folder`/state, idle and as yet unasked.
    static AlarmAgent talvik(const std::string& folder) { return {folder, freePort()}; }

    /// A net-snmp agent with the rows in `rowsFile`.
    static AlarmAgent container(const std::string& folder, const std::string& rowsFile)
    {
        return {folder, rowsFile, freePort()};
    }

    unsigned port() const { return port_; }
    const AgentProcess& process() const { return process_; }

    /// The number of variables that a walk with the lean manager sees.
    std::size_t walk() const;

    /// What a walk shows. Throws `std::runtime_error` unless these are `count` whole rows with
    /// texts.
    TableRows rows(std::size_t count) const;

private:
    AlarmAgent(const std::string& folder, unsigned port);
    AlarmAgent(const std::string& folder, const std::string& rowsFile, unsigned port);

    unsigned port_;
    AgentProcess process_;
    SnmpManager manager_;
};

/// Walks the table of the agent on `port` with the stock snmpbulkwalk, its output to /dev/null.
void walkWithStockManager(unsigned port);

}  // namespace talvik::bench
