#include "tools/trap_import_run.h"

#include "tools/progress.h"

#include <string>

namespace talvik::ctl {

namespace {

using Result = TrapChangeOutcome::Result;

void make(TrapTable& table, const TrapChange& change)
{
    switch (change.kind) {
    case TrapChange::Kind::Add:
        table.add(change.after);
        break;
    case TrapChange::Kind::Modify:
        table.modify(changedValues(change));
        break;
    case TrapChange::Kind::Remove:
        table.remove(change.before.index);
        break;
    }
}

}  // namespace

std::vector<TrapChangeOutcome> plannedOnly(const TrapImportPlan& plan)
{
    std::vector<TrapChangeOutcome> outcomes;
    for (const auto& change : plan.changes) {
        outcomes.push_back({change, Result::Planned, std::nullopt});
    }
    return outcomes;
}

std::vector<TrapChangeOutcome> carryOut(TrapTable& table, const TrapImportPlan& plan)
{
    auto outcomes = plannedOnly(plan);
    bool failed = false;
    std::size_t number = 0;
    for (auto& outcome : outcomes) {
        if (failed) {
            outcome.result = Result::NotTried;
            continue;
        }
        Progress::ofThisProgram().tell("change " + std::to_string(++number) + " of " +
                                       std::to_string(outcomes.size()));
        try {
            make(table, outcome.change);
            outcome.result = Result::Done;
        } catch (const Failure& failure) {
            outcome.result = Result::Failed;
            outcome.failure = failure;
            failed = true;
        }
    }
    return outcomes;
}

const Failure* failureOf(const std::vector<TrapChangeOutcome>& outcomes)
{
    for (const auto& outcome : outcomes) {
        if (outcome.failure) {
            return &*outcome.failure;
        }
    }
    return nullptr;
}

}  // namespace talvik::ctl
