#include "host/snmp/trap_receiver.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace talvik {

namespace {

constexpr auto kTryEvery = std::chrono::milliseconds(250);

/// A message that met an unknown engine ID is sent once more, not for ever.
constexpr int kMaxAttempts = 2;

const std::string kOk = "ok";

bool sameWay(const ReceiverSettings& a, const ReceiverSettings& b)
{
    return std::tie(a.inform, a.timeout, a.retries, a.source) ==
           std::tie(b.inform, b.timeout, b.retries, b.source);
}

}  // namespace

TrapReceiver::TrapReceiver(tTrapDestInfo row, const TrapSettings& settings,
                           ReceiverServices& services)
    : services_(services),
      address_(row.address, row.port, services.names),
      queue_(services.queues),
      link_(services.users, [this] { services_.workDue = true; })
{
    status_.receiver = std::move(row);
    status_.state = kOk;
    configure(settings);
}

TrapReceiver::~TrapReceiver()
{
    dying_ = true;
    link_.close();
    addTo(services_.former);
}

void TrapReceiver::addTo(TrapTotals& totals) const
{
    totals.sent += status_.sent;
    totals.failed += status_.failed;
    totals.answered += status_.answered;
    totals.givenUp += status_.givenUp;
}

void TrapReceiver::configure(const TrapSettings& settings)
{
    const auto* entry = settings.find(row().address, row().port);
    auto refined = entry == nullptr ? ReceiverSettings{} : *entry;
    auto community = refined.community.value_or(settings.community);
    if (refined.inform && row().version == 1) {
        hostLog()->error("trap settings, {}.inform: {} has version 1, which has no informs; it "
                         "gets traps",
                         refined.place, title());
        refined.inform = false;
    }
    if (!sameWay(refined, settings_) || community != community_) {
        closeLink();
    }
    settings_ = std::move(refined);
    community_ = std::move(community);
    v1AgentAddress_ = settings.v1AgentAddress;
    status_.inform = settings_.inform;
}

void TrapReceiver::usersChanged(const std::set<std::string>& names)
{
    if (row().version == 3 && names.count(row().user) != 0) {
        closeLink();
    }
}

void TrapReceiver::takeOver(TrapReceiver& former)
{
    former.closeLink();
    queue_.takeOver(former.queue_);
    moved_ = true;  // its time begins anew
    services_.workDue = services_.workDue || !queue_.empty();
}

void TrapReceiver::send(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery,
                        Time now)
{
    if (queue_.empty() && link_.underWay() == 0) {
        progress_ = now;
    }
    queue_.push(trap, delivery, now);
    pump(now);
    makeRoom(now);
}

ReceiverStatus TrapReceiver::status() const
{
    auto status = status_;
    status.waiting = waiting();
    return status;
}

TrapReceiver::Time TrapReceiver::deadline() const
{
    const auto next = blocked_ && !queue_.empty() ? nextTry_ : Time::max();
    return queue_.size() > kMaxWaitingStuck ? std::min(next, progress_ + kMaxWait) : next;
}

void TrapReceiver::proceed(Time now)
{
    if (!link_.proceed(now)) {
        setState("does not answer: its engine ID is unknown and no inform can be sent");
    }
    pump(now);
    giveUpExpired(now);
    makeRoom(now);
}

/// Sends as much as can be sent now.
void TrapReceiver::pump(Time now)
{
    if (std::exchange(engineChanged_, false)) {
        closeLink();
        link_.forgetEngine();
    }
    blocked_ = false;
    while (sendFirst(now)) {
    }
    if (std::exchange(moved_, false)) {
        progress_ = now;
    }
    if (queue_.empty()) {
        overflowing_ = false;
    }
    nextTry_ = now + kTryEvery;
}

/// Sends the first of the queue or counts it as failed; false when there is none or it has to wait.
bool TrapReceiver::sendFirst(Time now)
{
    const auto* const next = queue_.next();
    if (next == nullptr) {
        return false;
    }
    if (row().version < 1 || row().version > 3) {
        return failed("its version code " + std::to_string(row().version) +
                      " is unknown; write 1, 2 or 3");
    }
    if (address_.update()) {
        closeLink();
        link_.forgetEngine();
        return true;  // the first may be another one now
    }
    if (!address_.known()) {
        return wait(address_.problem());
    }
    return settings_.inform ? sendInform(*next, now) : sendTrap(*next->trap, now);
}

/// As `sendFirst`.
bool TrapReceiver::sendTrap(OutgoingTrap& trap, Time now)
{
    std::string problem;
    TrapMessageKind kind;
    const auto* message = makeKind(kind, now, problem) ? trap.message(kind, problem) : nullptr;
    if (message == nullptr) {
        return failed(problem);
    }
    if (!services_.udp.send(*message, address_.to(), settings_.source, problem)) {
        problem = "cannot be sent to: " + problem;
        return mayPass(services_.udp.error()) ? wait(problem) : failed(problem);
    }
    ++status_.sent;
    queue_.dropNext();
    succeeded();
    return true;
}

bool TrapReceiver::makeKind(TrapMessageKind& kind, Time now, std::string& problem)
{
    kind.version = row().version;
    kind.name = kind.version == 3 ? row().user : community_;
    if (kind.version == 1) {
        kind.agentAddress = v1AgentAddress_
                                ? *v1AgentAddress_
                                : services_.udp.sourceOf(address_.to(), settings_.source, now);
    }
    return kind.version != 3 ||
           services_.users.makeReady(row().user, UsmUsers::ownEngineId(), problem);
}

/// As `sendFirst`.
bool TrapReceiver::sendInform(const QueuedTrap& next, Time now)
{
    if (link_.underWay() >= kMaxUnderWay) {
        return false;
    }
    std::string problem;
    const auto way = link_.open(sessionSettings(), now, problem);
    if (way == InformLink::Way::None) {
        return noWay(problem);
    }
    if (way == InformLink::Way::Waiting) {
        blocked_ = true;
        return false;
    }
    auto item = next;
    ++item.attempts;
    const auto ended = [this, item](InformEnd end, const std::string& detail) {
        informEnded(item, end, detail);
    };
    if (!link_.session()->send(item.trap->content(), ended, problem)) {
        problem = "cannot be sent to: " + problem;
        return mayPass(link_.session()->error()) ? wait(problem) : failed(problem);
    }
    status_.sent += item.attempts == 1 ? 1 : 0;
    queue_.takeNext();
    return true;
}

/// As `sendFirst`: a user is unknown until somebody adds it, anything else may pass.
bool TrapReceiver::noWay(const std::string& why)
{
    std::string ignored;  // `why` says it
    const bool userKnown = row().version != 3 ||
                           services_.users.makeReady(row().user, UsmUsers::ownEngineId(), ignored);
    return userKnown ? wait(why) : failed(why);
}

/// Called from the library's loop, or while the session is closed.
void TrapReceiver::informEnded(QueuedTrap item, InformEnd end, const std::string& detail)
{
    services_.workDue = true;
    queue_.ended(item);
    if (end == InformEnd::Answered) {
        ++status_.answered;
        succeeded();
        return;
    }
    const auto attempts = static_cast<int>(item.attempts);
    const bool again = end == InformEnd::Closed ||
                       (end == InformEnd::UnknownEngine && attempts < kMaxAttempts) ||
                       (end == InformEnd::NotSent && attempts <= settings_.retries);
    engineChanged_ = engineChanged_ || end == InformEnd::UnknownEngine;
    moved_ = moved_ || end == InformEnd::Refused;
    if (end == InformEnd::NoAnswer) {
        setState("does not answer informs");
    } else if (end == InformEnd::NotSent) {
        setState("cannot be sent to: " + detail);
    } else if (end == InformEnd::Refused || (end == InformEnd::UnknownEngine && !again)) {
        setState("refuses informs: " + detail);
    }
    if (again && !dying_) {
        queue_.putBack(std::move(item));
    } else {
        ++status_.givenUp;
    }
}

/// What is under way goes back to where it was in the queue.
void TrapReceiver::closeLink()
{
    link_.close();
    services_.workDue = services_.workDue || !queue_.empty();
}

SessionSettings TrapReceiver::sessionSettings() const
{
    SessionSettings session;
    session.address = address_.numeric();
    session.port = row().port;
    session.source = settings_.source;
    session.timeout = settings_.timeout;
    session.retries = settings_.retries;
    session.version3 = row().version == 3;
    session.community = community_;
    session.user = session.version3 ? row().user : "";
    return session;
}

/// What has waited too long for a way to the receiver.
void TrapReceiver::giveUpExpired(Time now)
{
    using std::chrono::milliseconds;
    const auto limit =
        std::max<milliseconds>(kMaxWait, settings_.timeout * (1 + settings_.retries));
    while (blocked_ && !queue_.empty() && now - queue_.oldest().since >= limit) {
        ++status_.failed;
        queue_.dropOldest();
    }
}

/// Gives up the oldest of what nothing says will ever arrive, and of what no memory is left for.
void TrapReceiver::makeRoom(Time now)
{
    const auto limit = now - progress_ >= kMaxWait ? kMaxWaitingStuck : kMaxWaiting;
    while (queue_.size() > limit) {
        giveUpOldest();
    }
    while (services_.queues.isTooMuch() && queue_.size() > services_.queues.share()) {
        giveUpOldest();
    }
}

void TrapReceiver::giveUpOldest()
{
    if (!overflowing_ && services_.lines.take()) {
        hostLog()->warn("{}: {} notifications wait for it already, the oldest are given up",
                        title(), queue_.size() - 1);
        overflowing_ = true;
    }
    ++status_.givenUp;
    queue_.dropOldest();
}

/// The first of the queue does: returns false.
bool TrapReceiver::wait(const std::string& why)
{
    setState(why + "; notifications wait " + std::to_string(kMaxWait.count()) + " s for it");
    blocked_ = true;
    return false;
}

/// The first of the queue did: returns true, the next one is due.
bool TrapReceiver::failed(const std::string& why)
{
    ++status_.failed;
    queue_.dropNext();
    setState(why);
    return true;
}

void TrapReceiver::succeeded()
{
    moved_ = true;
    setState(address_.isStale() ? address_.problem() + "; " + address_.numeric() +
                                      ", the last known address, is used"
                                : kOk);
}

/// One line a change, as far as the budget goes.
void TrapReceiver::setState(const std::string& state)
{
    if (state == status_.state) {
        return;
    }
    status_.state = state;
    if (const auto leftOut = services_.lines.take()) {
        const auto note =
            *leftOut == 0 ? "" : " (" + std::to_string(*leftOut) + " further reports left out)";
        if (state == kOk) {
            hostLog()->info("{}: works again{}", title(), note);
        } else {
            hostLog()->warn("{}: {}{}", title(), oneLine(state), note);
        }
    }
}

std::string TrapReceiver::title() const
{
    return "trap receiver " + oneLine(row().index) + " (" + oneLine(row().address) + " port " +
           std::to_string(row().port) + ")";
}

}  // namespace talvik
