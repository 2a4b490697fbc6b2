#pragma once

#include "tools/failure.h"
#include "tools/trap_import_plan.h"
#include "tools/trap_table.h"

#include <optional>
#include <vector>

namespace talvik::ctl {

/// A change, and what came of it.
struct TrapChangeOutcome {
    enum class Result { Planned, Done, Failed, NotTried };

    TrapChange change;
    Result result = Result::Planned;
    std::optional<Failure> failure;  ///< of Failed
};

/// The changes of `plan`, none of them made.
std::vector<TrapChangeOutcome> plannedOnly(const TrapImportPlan& plan);

/// Makes the changes of `plan` in order, up to the first that fails.
std::vector<TrapChangeOutcome> carryOut(TrapTable& table, const TrapImportPlan& plan);

/// Why not all was done; null if it was.
const Failure* failureOf(const std::vector<TrapChangeOutcome>& outcomes);

}  // namespace talvik::ctl
