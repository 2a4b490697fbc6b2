#pragma once

#include "tools/snmp_request.h"
#include "tools/trap_destination.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace talvik::ctl {

/// The agent's trap destinations, managed through SNMP. Every operation throws `Failure`.
class TrapTable {
public:
    /// `requester` must outlive the table.
    explicit TrapTable(SnmpRequester& requester) : requester_(requester) {}

    /// All of them, by index. Over SNMPv1 a table that is hidden looks like an empty one.
    std::vector<TrapDestination> list();

    /// Creates a row at `wanted.index`, or at the lowest free index if that is 0, and returns the
    /// index. Whoever takes the free index first has it: then the next free one is tried.
    std::uint32_t add(const TrapDestination& wanted);

    /// Changes what is present in `change` of the row that it names; never creates a row.
    void modify(const TrapDestination& change);

    void remove(std::uint32_t index);

private:
    enum class Creation { Done, Taken };

    Creation create(const TrapDestination& wanted);
    SnmpAnswer set(const std::vector<SnmpCell>& cells);
    bool exists(std::uint32_t index);
    std::optional<TrapDestination> read(std::uint32_t index);
    bool anyRowShown();
    std::uint32_t lowestFree();
    void requireTable();

    SnmpRequester& requester_;
};

}  // namespace talvik::ctl
