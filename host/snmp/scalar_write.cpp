#include "host/snmp/scalar_write.h"

#include "host/link/command_result.h"
#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/requester.h"
#include "host/snmp/value_check.h"

#include <utility>

namespace talvik {

namespace {

const ObjectId kInstance = {0};

/// The order of the checks is that of RFC 3416, 4.2.5.
std::optional<SetError> checkWrite(const MibColumn& cell, const WrittenVariable& variable)
{
    if (cell.access != Access::ReadWrite) {
        return SetError::NotWritable;
    }
    if (!variable.value || !haveOneType(variable.value->syntax, cell.syntax)) {
        return SetError::WrongType;
    }
    if (const auto error = checkValue(*variable.value, cell)) {
        return error;
    }
    return variable.suffix == kInstance ? std::nullopt : std::optional(SetError::NoCreation);
}

const char* reasonOf(SetError error)
{
    switch (error) {
    case SetError::NotWritable:
        return "it cannot be written";
    case SetError::WrongType:
        return "the value is of another type";
    case SetError::WrongLength:
        return "the value is too short or too long";
    case SetError::WrongValue:
        return "the value is not one of those allowed";
    case SetError::NoCreation:
        return "it has no such instance";
    default:
        return "the request names it twice";
    }
}

std::string textOf(const WrittenVariable& variable)
{
    if (!variable.value) {
        return "a value of an unknown type";
    }
    const auto& value = *variable.value;
    return value.syntax == Syntax::OctetString ? '"' + oneLine(value.octets) + '"'
                                               : std::to_string(value.number);
}

SetError errorOf(const HandlerAnswer& answer)
{
    if (answer.failure) {
        return SetError::GenErr;
    }
    switch (outcomeOf(answer.result)) {
    case CommandOutcome::NoSuchAlarm:
        return SetError::InconsistentValue;
    case CommandOutcome::BadRequest:
        return SetError::WrongValue;
    case CommandOutcome::Unavailable:
        return SetError::ResourceUnavailable;
    default:
        return SetError::CommitFailed;
    }
}

}  // namespace

ScalarWrite::ScalarWrite(ScalarSource& source, CKEL_SnmpContext context,
                         std::vector<WrittenVariable> variables,
                         const std::function<void()>& changed)
    : source_(source),
      context_(std::move(context)),
      variables_(std::move(variables)),
      changed_(changed)
{
}

SetOutcome ScalarWrite::check()
{
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        if (const auto error = checkWrite(source_.scalar().cell, variables_[i])) {
            return refuse(*error, i);
        }
    }
    return std::nullopt;
}

SetOutcome ScalarWrite::prepare()
{
    // All that passed `check` name the one instance.
    return variables_.size() == 1 ? std::nullopt : refuse(SetError::InconsistentValue, 1);
}

SetOutcome ScalarWrite::act()
{
    auto value = *variables_.front().value;
    value.syntax = source_.scalar().cell.syntax;
    const auto text = textOf(variables_.front());
    const auto answer = source_.write(context_, value);
    told_ = true;
    if (!answer.succeeded()) {
        hostLog()->warn("{}cannot set {}: {}", describe(), text,
                        answer.failure ? oneLine(*answer.failure) : reasonOf(answer.result));
        return SetFault{errorOf(answer), 0};
    }
    done_ = true;
    hostLog()->info("{}done: {}", describe(), text);
    if (changed_) {
        changed_();
    }
    return std::nullopt;
}

SetOutcome ScalarWrite::undo()
{
    if (!done_) {
        abandon();
        return std::nullopt;
    }
    done_ = false;
    hostLog()->error(
        "{}another part of the request failed, but {} was done and cannot be taken back",
        describe(), textOf(variables_.front()));
    return SetFault{SetError::UndoFailed, 0};
}

void ScalarWrite::abandon()
{
    if (!told_) {
        told_ = true;
        hostLog()->warn("{}cannot set {}: another part of the request failed", describe(),
                        textOf(variables_.front()));
    }
}

SetOutcome ScalarWrite::refuse(SetError error, std::size_t position)
{
    told_ = true;
    hostLog()->warn("{}cannot set {}: {}", describe(), textOf(variables_[position]),
                    reasonOf(error));
    return SetFault{error, position};
}

std::string ScalarWrite::describe() const
{
    return "scalar " + source_.scalar().name + ", SET by " + requesterOf(context_) + ", ";
}

}  // namespace talvik
