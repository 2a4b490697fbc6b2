#include "host/snmp/trap_sender.h"

#include "host/platform/host_log.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/trap_receiver.h"
#include "host/snmp/trap_settings_file.h"
#include "host/snmp/trap_size.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

namespace talvik {

namespace {

bool sameRow(const tTrapDestInfo& a, const tTrapDestInfo& b)
{
    return a.index == b.index && a.address == b.address && a.port == b.port &&
           a.version == b.version && a.type == b.type && a.user == b.user;
}

}  // namespace

class TrapSender::Outgoing {
public:
    explicit Outgoing(const Settings& settings) : mib_(settings.mib), file_(settings.receiversFile)
    {
        services_.names = settings.names;
        settings_ = file_.load();
        services_.users.replace(settings_.users);
    }

    void send(Trap trap, const Delivery& delivery, Time now);
    void setReceivers(const std::vector<tTrapDestInfo>& rows);
    std::vector<ReceiverStatus> status() const;
    TrapTotals totals() const;
    Time deadline() const;
    void proceed(Time now);
    void readSettingsAgain(Time now) { use(file_.readAgain(now)); }

private:
    TrapReceiver* find(const tTrapDestInfo& row);
    std::unique_ptr<TrapReceiver> receiverFor(const tTrapDestInfo& row,
                                              std::unique_ptr<TrapReceiver>& former);
    void lookAtFile(Time now) { use(file_.changed(now)); }
    void use(std::optional<TrapSettings> changed);
    void reportCuts(const TrapContent& trap, const std::vector<TextCut>& cuts);
    std::string nameOf(const ObjectId& id) const;

    const MibDescription* mib_;
    TrapSettingsFile file_;
    TrapSettings settings_;
    ReceiverServices services_;  // outlives the receivers
    LineBudget lines_;           ///< of what is wrong with notifications
    std::vector<std::unique_ptr<TrapReceiver>> receivers_;
    std::unordered_map<std::string, TrapReceiver*> byIndex_;
};

void TrapSender::Outgoing::send(Trap trap, const Delivery& delivery, Time now)
{
    lookAtFile(now);
    TrapContent content{std::move(trap.id), netsnmp_get_agent_uptime(), std::move(trap.bindings)};
    const auto cuts = fitTexts(content.id, content.bindings);
    if (cuts && !cuts->empty()) {
        reportCuts(content, *cuts);
    }
    if (!cuts && lines_.take()) {
        hostLog()->error("trap {}: takes more than {} octets even without its texts; not sent",
                         toText(content.id), kMaxTrapMessage);
    }
    const auto outgoing = std::make_shared<OutgoingTrap>(std::move(content));
    for (const auto& row : trap.receivers) {
        auto* receiver = find(row);
        if (receiver == nullptr) {
            continue;
        }
        if (cuts) {
            receiver->send(outgoing, delivery, now);
        } else {
            receiver->fail();
        }
    }
    outgoing->endTurn();
}

/// Null, with a line in the log, for a row that is gone.
TrapReceiver* TrapSender::Outgoing::find(const tTrapDestInfo& row)
{
    const auto known = byIndex_.find(row.index);
    if (known != byIndex_.end() && sameRow(known->second->row(), row)) {
        return known->second;
    }
    if (lines_.take()) {
        hostLog()->warn("trap receiver {} is not in the table any more; it gets nothing",
                        row.index);
    }
    return nullptr;
}

void TrapSender::Outgoing::setReceivers(const std::vector<tTrapDestInfo>& rows)
{
    std::unordered_map<std::string, std::unique_ptr<TrapReceiver>> former;
    for (auto& receiver : receivers_) {
        const auto index = receiver->row().index;
        former.emplace(index, std::move(receiver));
    }
    receivers_.clear();
    byIndex_.clear();
    for (const auto& row : rows) {
        receivers_.push_back(receiverFor(row, former[row.index]));
        byIndex_.emplace(row.index, receivers_.back().get());
    }
}

/// `former` itself, if the row is the same, or a new one that goes on with what it owes.
std::unique_ptr<TrapReceiver>
TrapSender::Outgoing::receiverFor(const tTrapDestInfo& row, std::unique_ptr<TrapReceiver>& former)
{
    if (former && sameRow(former->row(), row)) {
        return std::move(former);
    }
    auto receiver = std::make_unique<TrapReceiver>(row, settings_, services_);
    if (former) {
        receiver->takeOver(*former);
    }
    return receiver;
}

std::vector<ReceiverStatus> TrapSender::Outgoing::status() const
{
    std::vector<ReceiverStatus> all;
    for (const auto& receiver : receivers_) {
        all.push_back(receiver->status());
    }
    return all;
}

TrapTotals TrapSender::Outgoing::totals() const
{
    auto totals = services_.former;
    for (const auto& receiver : receivers_) {
        receiver->addTo(totals);
        totals.waiting += receiver->waiting();
    }
    return totals;
}

TrapSender::Time TrapSender::Outgoing::deadline() const
{
    if (services_.workDue) {
        return Time();  // long past, and far enough from `Time::min()` to reckon with
    }
    auto earliest = Time::max();
    if (services_.queues.queues == 0) {
        return earliest;  // asked in every round of the loop, for thousands of receivers
    }
    for (const auto& receiver : receivers_) {
        earliest = std::min(earliest, receiver->deadline());
    }
    return earliest;
}

void TrapSender::Outgoing::proceed(Time now)
{
    lookAtFile(now);
    const bool all = std::exchange(services_.workDue, false);
    for (const auto& receiver : receivers_) {
        if (all || receiver->deadline() <= now) {
            receiver->proceed(now);
        }
    }
}

/// From now on, if there are any.
void TrapSender::Outgoing::use(std::optional<TrapSettings> changed)
{
    if (!changed) {
        return;
    }
    settings_ = std::move(*changed);
    const auto users = services_.users.replace(settings_.users);
    for (const auto& receiver : receivers_) {
        receiver->usersChanged(users);
        receiver->configure(settings_);
    }
}

void TrapSender::Outgoing::reportCuts(const TrapContent& trap, const std::vector<TextCut>& cuts)
{
    if (!lines_.take()) {
        return;
    }
    std::string list;
    for (const auto& cut : cuts) {
        list += (list.empty() ? "" : ", ") + nameOf(trap.bindings[cut.binding].name) + " from " +
                std::to_string(cut.before) + " to " + std::to_string(cut.after);
    }
    hostLog()->warn("trap {}: texts cut to fit {} octets: {}", toText(trap.id), kMaxTrapMessage,
                    list);
}

/// With the object's name in front, if the MIB description has one.
std::string TrapSender::Outgoing::nameOf(const ObjectId& id) const
{
    const auto* scalar = mib_ == nullptr || id.empty()
                             ? nullptr
                             : mib_->scalar(ObjectId(id.begin(), std::prev(id.end())));
    return (scalar == nullptr ? "" : scalar->name + " ") + toText(id);
}

TrapSender::TrapSender(const Settings& settings) : outgoing_(std::make_unique<Outgoing>(settings))
{
}

TrapSender::~TrapSender() = default;

void TrapSender::send(Trap trap, const Delivery& delivery)
{
    outgoing_->send(std::move(trap), delivery, std::chrono::steady_clock::now());
}

void TrapSender::setReceivers(const std::vector<tTrapDestInfo>& receivers)
{
    outgoing_->setReceivers(receivers);
}

std::vector<ReceiverStatus> TrapSender::status() const
{
    return outgoing_->status();
}

TrapTotals TrapSender::totals() const
{
    return outgoing_->totals();
}

void TrapSender::readSettingsAgain()
{
    outgoing_->readSettingsAgain(std::chrono::steady_clock::now());
}

TrapSender::Time TrapSender::deadline() const
{
    return outgoing_->deadline();
}

void TrapSender::proceed(Time now)
{
    outgoing_->proceed(now);
}

}  // namespace talvik
