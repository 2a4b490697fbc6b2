#include "tools/watcher.h"

#include <tuple>

namespace talvik::ctl {

namespace {

using Kind = Change::Kind;

Change changeOf(Kind kind, const ActiveAlarm& alarm)
{
    Change change;
    change.kind = kind;
    change.alarm = alarm;
    return change;
}

Change changeOf(Kind kind, const ReceiverStatus& receiver)
{
    Change change;
    change.kind = kind;
    change.ofAlarms = false;
    change.receiver = receiver;
    return change;
}

/// Counters begin at 0 again when the agent restarts or the row is changed.
std::uint64_t countedSince(std::uint64_t before, std::uint64_t now)
{
    return now >= before ? now - before : now;
}

auto contentOf(const ReceiverStatus& one)
{
    return std::tie(one.address, one.port, one.version, one.type, one.user, one.inform, one.state,
                    one.sent, one.failed, one.answered, one.givenUp, one.waiting);
}

/// Notes whether there was an answer; returns the rows if so.
template <typename Row>
const std::vector<Row>* answerIn(const Answered<Row>& answered, bool ofAlarms, bool& away,
                                 std::vector<Change>& changes)
{
    const bool wasAway = away;
    if (answered.failure) {
        away = true;
        if (!wasAway) {
            Change change;
            change.kind = Kind::Away;
            change.ofAlarms = ofAlarms;
            change.failure = answered.failure;
            changes.push_back(change);
        }
        return nullptr;
    }
    if (!answered.rows) {
        return nullptr;
    }
    away = false;
    if (wasAway) {
        Change change;
        change.kind = Kind::Back;
        change.ofAlarms = ofAlarms;
        changes.push_back(change);
    }
    return &*answered.rows;
}

}  // namespace

std::vector<Change> Watcher::changesOf(const Look& look)
{
    std::vector<Change> changes;
    if (const auto* rows = answerIn(look.alarms, true, alarmsAway_, changes)) {
        compareAlarms(*rows, changes);
    }
    if (const auto* rows = answerIn(look.receivers, false, receiversAway_, changes)) {
        compareReceivers(*rows, changes);
    }
    return changes;
}

void Watcher::compareAlarms(const std::vector<ActiveAlarm>& rows, std::vector<Change>& changes)
{
    Known<ActiveAlarm> now;
    for (const auto& row : rows) {
        now.emplace(row.serial, row);
        if (!alarms_ || alarms_->count(row.serial) == 0) {
            changes.push_back(changeOf(alarms_ ? Kind::Raised : Kind::Active, row));
        }
    }
    for (const auto& [serial, row] : alarms_.value_or(Known<ActiveAlarm>())) {
        if (now.count(serial) == 0) {
            changes.push_back(changeOf(Kind::Cleared, row));
        }
    }
    alarms_ = std::move(now);
}

void Watcher::compareReceivers(const std::vector<ReceiverStatus>& rows,
                               std::vector<Change>& changes)
{
    Known<ReceiverStatus> now;
    for (const auto& row : rows) {
        now.emplace(row.index, row);
        if (!receivers_) {
            changes.push_back(changeOf(Kind::Receiver, row));
            continue;
        }
        const auto before = receivers_->find(row.index);
        if (before == receivers_->end()) {
            changes.push_back(changeOf(Kind::ReceiverAdded, row));
        } else if (contentOf(before->second) != contentOf(row)) {
            auto change = changeOf(Kind::ReceiverChanged, row);
            change.counted = {countedSince(before->second.sent, row.sent),
                              countedSince(before->second.failed, row.failed),
                              countedSince(before->second.answered, row.answered),
                              countedSince(before->second.givenUp, row.givenUp)};
            changes.push_back(change);
        }
    }
    for (const auto& [index, row] : receivers_.value_or(Known<ReceiverStatus>())) {
        if (now.count(index) == 0) {
            changes.push_back(changeOf(Kind::ReceiverRemoved, row));
        }
    }
    receivers_ = std::move(now);
}

}  // namespace talvik::ctl
