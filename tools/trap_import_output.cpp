#include "tools/trap_import_output.h"

#include "tools/safe_text.h"
#include "tools/trap_names.h"
#include "tools/trap_output.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

using Kind = TrapChange::Kind;
using Result = TrapChangeOutcome::Result;
using Outcomes = std::vector<TrapChangeOutcome>;

const Columns kCuttable = {{2}, {6}};  // address, user

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Add:
        return "add";
    case Kind::Modify:
        return "modify";
    case Kind::Remove:
        break;
    }
    return "remove";
}

const char* jsonNameOf(Result result)
{
    switch (result) {
    case Result::Done:
        return "done";
    case Result::Failed:
        return "failed";
    case Result::NotTried:
        return "notTried";
    case Result::Planned:
        break;
    }
    return "planned";
}

TableCell cellOf(Result result)
{
    switch (result) {
    case Result::Done:
        return {"done", Tone::Good};
    case Result::Failed:
        return {"failed", Tone::Bad};
    case Result::NotTried:
        return {"not tried", Tone::Warning};
    case Result::Planned:
        break;
    }
    return {"to do", Tone::Notice};
}

/// The row that a change is about: as it is to be, or as it is when it goes.
const TrapDestination& rowOf(const TrapChange& change)
{
    return change.kind == Kind::Remove ? change.before : change.after;
}

template <typename Show>
std::string shown(const TrapChange& change, const Show& show)
{
    const auto now = show(rowOf(change));
    const auto before = change.kind == Kind::Modify ? show(change.before) : now;
    return before == now ? now : before + " -> " + now;
}

TableLine lineOf(const TrapChangeOutcome& outcome)
{
    using Row = TrapDestination;
    const auto& change = outcome.change;
    return {nameOf(change.kind),
            shown(change, [](const Row& row) { return std::to_string(row.index); }),
            shown(change, [](const Row& row) { return printable(*row.address); }),
            shown(change, [](const Row& row) { return std::to_string(*row.port); }),
            shown(change, [](const Row& row) { return trapVersionName(*row.version); }),
            shown(change, [](const Row& row) { return trapTypeName(*row.type); }),
            shown(change, [](const Row& row) { return printable(*row.user); }),
            cellOf(outcome.result)};
}

std::string countOf(const Outcomes& outcomes, Kind kind)
{
    return std::to_string(std::count_if(outcomes.begin(), outcomes.end(),
                                        [&](const auto& one) { return one.change.kind == kind; }));
}

std::string rest(const TrapImportPlan& plan)
{
    auto text = std::to_string(plan.unchanged) + " unchanged";
    if (plan.others != 0) {
        text += ", " + std::to_string(plan.others) + " not in the list";
    }
    return text;
}

Json::Value jsonOf(const TrapDestination& row)
{
    auto value = trapJson(row);
    value.removeMember("usable");
    return value;
}

Json::Value jsonOf(const TrapChangeOutcome& outcome)
{
    Json::Value value;
    if (outcome.failure) {
        value = failureJson(*outcome.failure);
    }
    value["change"] = nameOf(outcome.change.kind);
    value["result"] = jsonNameOf(outcome.result);
    value["destination"] = jsonOf(rowOf(outcome.change));
    if (outcome.change.kind == Kind::Modify) {
        value["before"] = jsonOf(outcome.change.before);
    }
    return value;
}

}  // namespace

std::string trapImportTable(const Outcomes& outcomes, const TableStyle& style)
{
    if (outcomes.empty()) {
        return {};
    }
    std::vector<TableLine> lines = {
        {"CHANGE", "INDEX", "ADDRESS", "PORT", "VERSION", "TYPE", "USER", "RESULT"}};
    for (const auto& outcome : outcomes) {
        lines.push_back(lineOf(outcome));
    }
    return alignedTable(lines, style, kCuttable);
}

std::string trapImportSummary(const TrapImportPlan& plan, const Outcomes& outcomes)
{
    if (outcomes.empty()) {
        return "nothing to do: " + rest(plan) + "\n";
    }
    const auto done = std::count_if(outcomes.begin(), outcomes.end(),
                                    [](const auto& one) { return one.result == Result::Done; });
    if (failureOf(outcomes) != nullptr) {
        return "stopped after " + std::to_string(done) + " of " + std::to_string(outcomes.size()) +
               (outcomes.size() == 1 ? " change" : " changes") +
               "; run the command again to do the rest\n";
    }
    const bool planned = outcomes.front().result == Result::Planned;
    const auto counted = [&](Kind kind, const char* toDo, const char* didIt) {
        return countOf(outcomes, kind) + (planned ? toDo : didIt);
    };
    return std::string(planned ? "nothing was changed: " : "done: ") +
           counted(Kind::Add, " to add, ", " added, ") +
           counted(Kind::Modify, " to modify, ", " modified, ") +
           counted(Kind::Remove, " to remove, ", " removed, ") + rest(plan) + "\n";
}

Json::Value trapImportJson(const std::string& agent, bool dryRun, const TrapImportPlan& plan,
                           const Outcomes& outcomes)
{
    Json::Value root;
    root["agent"] = validUtf8(agent);
    root["dryRun"] = dryRun;
    root["changes"] = Json::Value(Json::arrayValue);
    for (const auto& outcome : outcomes) {
        root["changes"].append(jsonOf(outcome));
    }
    root["unchanged"] = static_cast<Json::UInt64>(plan.unchanged);
    root["others"] = static_cast<Json::UInt64>(plan.others);
    return root;
}

}  // namespace talvik::ctl
