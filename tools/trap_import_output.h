#pragma once

#include "tools/text_table.h"
#include "tools/trap_import_run.h"

#include <json/value.h>

#include <string>
#include <vector>

namespace talvik::ctl {

/// A table for people with one row a change, "162 -> 10162" where a value changes; empty without
/// changes.
std::string trapImportTable(const std::vector<TrapChangeOutcome>& outcomes,
                            const TableStyle& style = {});

/// One line that counts what was done, or in a dry run what is to be; of a failed import, how far
/// it came.
std::string trapImportSummary(const TrapImportPlan& plan,
                              const std::vector<TrapChangeOutcome>& outcomes);

/// {"agent", "dryRun", "changes": [{"change": "add", "modify" or "remove", "result": "done",
/// "failed", "notTried" or "planned", "destination", "before" of a modify, "reason" and "advice" of
/// a failed one}], "unchanged", "others"}: a destination as `trapJson` has it, without "usable".
Json::Value trapImportJson(const std::string& agent, bool dryRun, const TrapImportPlan& plan,
                           const std::vector<TrapChangeOutcome>& outcomes);

}  // namespace talvik::ctl
