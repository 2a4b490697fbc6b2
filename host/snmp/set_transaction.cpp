#include "host/snmp/set_transaction.h"

#include "framework/result_codes.h"
#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/platform/trap_results.h"
#include "host/snmp/requester.h"

#include <utility>

namespace talvik {

namespace {

SetError errorOf(const HandlerAnswer& answer)
{
    if (answer.failure) {
        return SetError::GenErr;
    }
    switch (answer.result) {
    case result_code::kTrapRequestRefused:
    case trap_result::kIndexTaken:
    case trap_result::kIndexInvalid:
    case trap_result::kRefused:
        return SetError::InconsistentValue;
    case trap_result::kIndexUnknown:
        return SetError::InconsistentName;
    case trap_result::kListFull:
        return SetError::ResourceUnavailable;
    default:
        return SetError::CommitFailed;
    }
}

const char* verbOf(RowChange::Kind kind)
{
    switch (kind) {
    case RowChange::Kind::Create:
        return "create";
    case RowChange::Kind::Modify:
        return "change";
    default:
        return "delete";
    }
}

std::string textOf(const HandlerAnswer& answer)
{
    return answer.failure ? oneLine(*answer.failure)
                          : "the handler returned " + std::to_string(answer.result);
}

}  // namespace

SetTransaction::SetTransaction(TableSource& source, CKEL_SnmpContext context,
                               std::vector<WrittenVariable> variables)
    : source_(source),
      context_(std::move(context)),
      variables_(std::move(variables))
{
}

SetOutcome SetTransaction::check()
{
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        ColumnWrite write;
        if (const auto error = checkWrite(source_.table(), variables_[i], write)) {
            return SetFault{*error, i};
        }
        writes_.push_back(std::move(write));
    }
    return std::nullopt;
}

SetOutcome SetTransaction::prepare()
{
    const auto& table = source_.table();
    if (auto fault = planChange(table, writes_, change_)) {
        return fault;
    }
    // A create is told by the handler whether the index is free: it must stay fast in a long table.
    if (change_.kind == RowChange::Kind::Create) {
        return std::nullopt;
    }
    const auto rows = source_.queryAnew(context_);
    if (rows == nullptr) {
        return SetFault{SetError::GenErr, change_.blamed()};
    }
    const bool exists = hasRow(table, *rows, change_.row);
    if (auto fault = checkExistence(exists, change_)) {
        return fault;
    }
    if (change_.kind == RowChange::Kind::None) {
        return std::nullopt;
    }
    auto former = valuesOfRow(table, *rows, change_.row);
    if (!former) {
        hostLog()->error("{}: a column of the row cannot be read", describe("cannot"));
        return SetFault{SetError::GenErr, change_.blamed()};
    }
    former_ = std::move(*former);
    return std::nullopt;
}

SetOutcome SetTransaction::act()
{
    if (change_.kind == RowChange::Kind::None) {
        return std::nullopt;
    }
    const auto answer = apply();
    if (answer.succeeded()) {
        done_ = true;
        hostLog()->info("{}", describe("done:"));
        return std::nullopt;
    }
    hostLog()->warn("{}: {}", describe("cannot"), textOf(answer));
    return SetFault{errorOf(answer), change_.blamed()};
}

SetOutcome SetTransaction::undo()
{
    if (!done_) {
        return std::nullopt;
    }
    done_ = false;
    const auto answer = revert();
    if (answer.succeeded()) {
        hostLog()->info("{}", describe("taken back, another part of the request failed:"));
        return std::nullopt;
    }
    hostLog()->error("{}: {}; the row has to be set right by hand",
                     describe("another part of the request failed, but cannot take back:"),
                     textOf(answer));
    return SetFault{SetError::UndoFailed, change_.blamed()};
}

HandlerAnswer SetTransaction::apply() const
{
    switch (change_.kind) {
    case RowChange::Kind::Create:
        return source_.createRow(context_, change_.row, change_.named);
    case RowChange::Kind::Modify:
        return source_.modifyRow(context_, change_.row, mergeRow(change_.named, former_));
    default:
        return source_.deleteRow(context_, change_.row);
    }
}

HandlerAnswer SetTransaction::revert() const
{
    switch (change_.kind) {
    case RowChange::Kind::Create:
        return source_.deleteRow(context_, change_.row);
    case RowChange::Kind::Modify:
        return source_.modifyRow(context_, change_.row, former_);
    default:
        return source_.createRow(context_, change_.row, former_);
    }
}

std::string SetTransaction::describe(const std::string& what) const
{
    std::string columns;
    for (const auto& named : change_.named) {
        columns += (columns.empty() ? " with " : ", ") + named.column->name;
    }
    return "table " + source_.table().name + ", SET by " + requesterOf(context_) + ", " + what +
           " " + verbOf(change_.kind) + " row " + std::to_string(change_.row) + columns;
}

}  // namespace talvik
