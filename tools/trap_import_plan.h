#pragma once

#include "tools/trap_destination.h"

#include <cstddef>
#include <string>
#include <vector>

namespace talvik::ctl {

/// One change of an agent's trap destinations.
struct TrapChange {
    enum class Kind { Add, Modify, Remove };

    Kind kind = Kind::Add;
    TrapDestination before;  ///< of Modify and Remove: the row as it is
    TrapDestination after;   ///< of Add and Modify: the row as it is to be, complete
};

/// What is to be done, in order: what is added, then what is changed, then what is removed. So
/// there are receivers all the time.
struct TrapImportPlan {
    std::vector<TrapChange> changes;
    std::size_t unchanged = 0;  ///< rows that are as the list has them
    std::size_t others = 0;     ///< rows that are not in the list, and stay
};

/// How to bring `rows`, the agent's, to `wanted`, a list as `parseTrapList` gives it.
///
/// A destination is the row of the same address and port; of several the one of its index, or else
/// the first that no other destination is. What the list leaves out of a row that is there stays as
/// it is; a new row gets what `talvikctl trap add` gives it. The index of the list is for new rows,
/// and only where it is free: without it, or where another row has it, a new row gets the lowest
/// free one. So a list takes no row away from another receiver.
///
/// With `replace` the rows that are not in the list are removed. One whose index a new row is to
/// have becomes that row, and so do as many as the table has no room for beside the new ones.
///
/// Throws `Failure` when `agent` shows less than all columns, or when the rows do not fit into its
/// table.
TrapImportPlan planTrapImport(const std::vector<TrapDestination>& wanted,
                              const std::vector<TrapDestination>& rows, bool replace,
                              const std::string& agent);

/// What of a Modify is to be set: the index, and the values that differ.
TrapDestination changedValues(const TrapChange& change);

}  // namespace talvik::ctl
