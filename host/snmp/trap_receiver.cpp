#include "host/snmp/trap_receiver.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace talvik {

namespace {

constexpr auto kTryEvery = std::chrono::milliseconds(250);

/// A message that met an unknown engine ID is sent once more, not for ever.
constexpr unsigned kMaxAttempts = 2;

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

void TrapReceiver::send(const std::shared_ptr<OutgoingTrap>& trap, const Delivery& delivery,
                        Time now)
{
    waiting_.push_back({nextNumber_++, trap, delivery, now});
    pump(now);
    while (waiting_.size() > kMaxWaiting) {
        giveUpOldest();
    }
}

ReceiverStatus TrapReceiver::status() const
{
    auto status = status_;
    status.waiting = waiting_.size() + returned_.size() + link_.underWay();
    return status;
}

TrapReceiver::Time TrapReceiver::deadline() const
{
    return blocked_ && !waiting_.empty() ? nextTry_ : Time::max();
}

void TrapReceiver::proceed(Time now)
{
    if (!link_.proceed(now)) {
        setState("does not answer: its engine ID is unknown and no inform can be sent");
    }
    if (engineChanged_) {
        engineChanged_ = false;
        closeLink();
        link_.forgetEngine();
    }
    pump(now);
    giveUpExpired(now);
}

/// Sends as much as can be sent now.
void TrapReceiver::pump(Time now)
{
    blocked_ = false;
    while (!waiting_.empty() && sendFirst(now)) {
    }
    if (waiting_.empty()) {
        overflowing_ = false;
    }
    nextTry_ = now + kTryEvery;
}

/// Sends the first of the queue or counts it as failed; false when it has to wait.
bool TrapReceiver::sendFirst(Time now)
{
    if (row().version < 1 || row().version > 3) {
        failed("its version code " + std::to_string(row().version) +
               " is unknown; write 1, 2 or 3");
        return true;
    }
    if (address_.update()) {
        closeLink();
        link_.forgetEngine();
    }
    if (!address_.known()) {
        setState(address_.problem() + "; notifications wait " + std::to_string(kMaxWait.count()) +
                 " s for it");
        blocked_ = true;
        return false;
    }
    if (settings_.inform) {
        return sendInform(now);
    }
    sendTrap(*waiting_.front().trap, now);
    return true;
}

void TrapReceiver::sendTrap(OutgoingTrap& trap, Time now)
{
    std::string problem;
    TrapMessageKind kind;
    const auto* message = makeKind(kind, now, problem) ? trap.message(kind, problem) : nullptr;
    if (message == nullptr) {
        failed(problem);
    } else if (!services_.udp.send(*message, address_.to(), settings_.source, problem)) {
        failed("cannot be sent to: " + problem);
    } else {
        ++status_.sent;
        waiting_.pop_front();
        succeeded();
    }
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
bool TrapReceiver::sendInform(Time now)
{
    if (link_.underWay() >= kMaxUnderWay) {
        return false;
    }
    std::string problem;
    const auto way = link_.open(sessionSettings(), now, problem);
    if (way == InformLink::Way::Waiting) {
        blocked_ = true;
        return false;
    }
    auto item = waiting_.front();
    ++item.attempts;
    const auto ended = [this, item](InformEnd end, const std::string& detail) {
        informEnded(item, end, detail);
    };
    if (way == InformLink::Way::None ||
        !link_.session()->send(item.trap->content(), ended, problem)) {
        failed(problem);
        return true;
    }
    status_.sent += item.attempts == 1 ? 1 : 0;
    waiting_.pop_front();
    return true;
}

/// Called from the library's loop, or while the session is closed.
void TrapReceiver::informEnded(Item item, InformEnd end, const std::string& detail)
{
    services_.workDue = true;
    if (end == InformEnd::Answered) {
        ++status_.answered;
        succeeded();
        return;
    }
    const bool again = end == InformEnd::Closed ||
                       (end == InformEnd::UnknownEngine && item.attempts < kMaxAttempts);
    engineChanged_ = engineChanged_ || end == InformEnd::UnknownEngine;
    if (again && !dying_) {
        returned_.push_back(std::move(item));
        return;
    }
    ++status_.givenUp;
    if (end == InformEnd::NoAnswer) {
        setState("does not answer informs");
    } else if (end == InformEnd::NotSent) {
        setState("cannot be sent to: " + detail);
    } else if (end != InformEnd::Closed) {
        setState("refuses informs: " + detail);
    }
}

/// What is under way goes back to where it was in the queue.
void TrapReceiver::closeLink()
{
    link_.close();
    std::sort(returned_.begin(), returned_.end(),
              [](const Item& a, const Item& b) { return a.number < b.number; });
    waiting_.insert(waiting_.begin(), std::make_move_iterator(returned_.begin()),
                    std::make_move_iterator(returned_.end()));
    returned_.clear();
    services_.workDue = services_.workDue || !waiting_.empty();
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
    while (blocked_ && !waiting_.empty() && now - waiting_.front().since >= limit) {
        ++status_.failed;
        waiting_.pop_front();
    }
}

void TrapReceiver::giveUpOldest()
{
    ++status_.givenUp;
    waiting_.pop_front();
    if (!overflowing_ && services_.lines.take()) {
        hostLog()->warn("{}: {} notifications wait for it already, the oldest are given up",
                        title(), kMaxWaiting);
        overflowing_ = true;
    }
}

/// The first of the queue did.
void TrapReceiver::failed(const std::string& why)
{
    ++status_.failed;
    waiting_.pop_front();
    setState(why);
}

void TrapReceiver::succeeded()
{
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
