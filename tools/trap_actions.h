#pragma once

#include "tools/output_options.h"
#include "tools/snmp_settings.h"
#include "tools/trap_destination.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace talvik::ctl {

class TrapTable;

/// What a `talvikctl trap` command was asked.
struct TrapOptions {
    SnmpSettings snmp;
    TrapDestination destination;         ///< of add and modify
    std::vector<std::uint32_t> indexes;  ///< of remove
    OutputOptions output;
};

/// Runs `work` on the trap destinations of the agent. A `Failure` is printed. Returns the exit
/// status. Throws `StartupError` when the SNMP settings cannot be used.
int onTrapTable(const SnmpSettings& snmp, const OutputOptions& output,
                const std::function<void(TrapTable&)>& work);

/// Each carries its command out, prints what came of it and returns the exit status. They throw
/// `StartupError` when the SNMP settings cannot be used.
int runTrapList(const TrapOptions& options);
int runTrapAdd(const TrapOptions& options);
int runTrapModify(const TrapOptions& options);
int runTrapRemove(const TrapOptions& options);

}  // namespace talvik::ctl
