#include "host/snmp/trap_receiver.h"

#include "host/platform/destination_address.h"
#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/platform/name_cache.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace talvik {

namespace {

constexpr auto kTryEvery = std::chrono::milliseconds(250);
constexpr auto kFirstPause = std::chrono::milliseconds(1000);
constexpr auto kLongestPause = std::chrono::milliseconds(60000);

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
    : row_(std::move(row)),
      services_(services)
{
    status_.receiver = row_;
    status_.state = kOk;
    isName_ = destinationKind(row_.address) == DestinationKind::Name;
    if (isName_ && services_.names != nullptr) {
        services_.names->retain(row_.address);
    }
    if (!isName_) {
        useAddress(row_.address);
    }
    configure(settings);
}

TrapReceiver::~TrapReceiver()
{
    dying_ = true;
    session_.reset();
    if (isName_ && services_.names != nullptr) {
        services_.names->release(row_.address);
    }
}

void TrapReceiver::configure(const TrapSettings& settings)
{
    const auto* entry = settings.find(row_.address, row_.port);
    auto refined = entry == nullptr ? ReceiverSettings{} : *entry;
    auto community = refined.community.value_or(settings.community);
    if (refined.inform && row_.version == 1) {
        hostLog()->error("trap settings, {}.inform: {} has version 1, which has no informs; it "
                         "gets traps",
                         refined.place, title());
        refined.inform = false;
    }
    if (!sameWay(refined, settings_) || community != community_) {
        closeSession();
        discovery_.reset();
        discoverAt_ = Time::min();
    }
    settings_ = std::move(refined);
    community_ = std::move(community);
    v1AgentAddress_ = settings.v1AgentAddress;
    status_.inform = settings_.inform;
    services_.workDue = services_.workDue || !waiting_.empty();
}

void TrapReceiver::usersChanged(const std::set<std::string>& names)
{
    if (row_.version == 3 && names.count(row_.user) != 0) {
        closeSession();
        services_.workDue = services_.workDue || !waiting_.empty();
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
    status.waiting =
        waiting_.size() + returned_.size() + (session_ == nullptr ? 0 : session_->underWay());
    return status;
}

TrapReceiver::Time TrapReceiver::deadline() const
{
    return blocked_ && !waiting_.empty() ? nextTry_ : Time::max();
}

void TrapReceiver::proceed(Time now)
{
    takeDiscovery(now);
    if (engineChanged_) {
        engineChanged_ = false;
        engineId_.clear();
        closeSession();
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

/// False when it has to wait.
bool TrapReceiver::sendFirst(Time now)
{
    if (row_.version < 1 || row_.version > 3) {
        failFirst("its version code " + std::to_string(row_.version) +
                  " is unknown; write 1, 2 or 3");
        return true;
    }
    if (!findAddress()) {
        blocked_ = true;
        return false;
    }
    if (!settings_.inform) {
        sendTrap(*waiting_.front().trap, now);
        waiting_.pop_front();
        return true;
    }
    std::string problem;
    if (row_.version == 3 &&
        !services_.users.makeReady(row_.user, UsmUsers::ownEngineId(), problem)) {
        failFirst(problem);
        return true;
    }
    if (row_.version == 3 && !findEngine(now)) {
        blocked_ = true;
        return false;
    }
    if (session_ != nullptr && session_->underWay() >= kMaxUnderWay) {
        return false;
    }
    if (!session_ && !openSession(now)) {
        return true;
    }
    return sendInform(waiting_.front());
}

/// Sends the first of the queue, or counts it as failed.
bool TrapReceiver::sendTrap(OutgoingTrap& trap, Time now)
{
    std::string problem;
    const auto kind = messageKind(now, problem);
    const auto* message = kind ? trap.message(*kind, problem) : nullptr;
    if (message == nullptr) {
        ++status_.failed;
        setState(problem);
        return false;
    }
    if (!services_.udp.send(*message, *to_, settings_.source, problem)) {
        ++status_.failed;
        setState("cannot be sent to: " + problem);
        return false;
    }
    ++status_.sent;
    setState(okState());
    return true;
}

std::optional<TrapMessageKind> TrapReceiver::messageKind(Time now, std::string& problem)
{
    TrapMessageKind kind;
    kind.version = row_.version;
    kind.name = row_.version == 3 ? row_.user : community_;
    if (row_.version == 3 &&
        !services_.users.makeReady(row_.user, UsmUsers::ownEngineId(), problem)) {
        return std::nullopt;
    }
    if (row_.version == 1) {
        kind.agentAddress = v1AgentAddress_ ? *v1AgentAddress_
                                            : services_.udp.sourceOf(*to_, settings_.source, now);
    }
    return kind;
}

bool TrapReceiver::sendInform(Item& item)
{
    auto copy = item;
    ++copy.attempts;
    std::string problem;
    const bool sent = session_->send(
        item.trap->content(),
        [this, copy](InformEnd end, const std::string& detail) { informEnded(copy, end, detail); },
        problem);
    if (!sent) {
        failFirst("cannot be sent to: " + problem);
        return true;
    }
    if (copy.attempts == 1) {
        ++status_.sent;
    }
    waiting_.pop_front();
    return true;
}

/// Called from the library's loop, or while the session is closed.
void TrapReceiver::informEnded(Item item, InformEnd end, const std::string& detail)
{
    services_.workDue = true;
    if (end == InformEnd::Answered) {
        ++status_.answered;
        setState(okState());
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
    if (end == InformEnd::Refused || end == InformEnd::UnknownEngine) {
        setState("refuses informs: " + detail);
    } else if (end == InformEnd::NotSent) {
        setState("cannot be sent to: " + detail);
    } else if (end == InformEnd::NoAnswer) {
        setState("does not answer informs");
    }
}

bool TrapReceiver::findAddress()
{
    if (!isName_) {
        if (!to_) {
            setState("its address is none; write another one");
        }
        return to_.has_value();
    }
    const auto addresses = services_.names == nullptr ? std::vector<std::string>()
                                                      : services_.names->addressesOf(row_.address);
    stale_ = addresses.empty();
    if (!addresses.empty() && addresses.front() != address_) {
        useAddress(addresses.front());
    }
    if (!to_) {
        setState("its name does not resolve; notifications wait " +
                 std::to_string(kMaxWait.count()) + " s for it");
    }
    return to_.has_value();
}

void TrapReceiver::useAddress(const std::string& address)
{
    closeSession();
    discovery_.reset();
    engineId_.clear();
    address_ = address;
    to_ = SocketAddress::parse(address, row_.port);
}

SessionSettings TrapReceiver::sessionSettings() const
{
    SessionSettings session;
    session.address = address_;
    session.port = row_.port;
    session.source = settings_.source;
    session.timeout = settings_.timeout;
    session.retries = settings_.retries;
    session.version3 = row_.version == 3;
    session.community = community_;
    session.user = session.version3 ? row_.user : "";
    session.engineId = engineId_;
    return session;
}

/// False, with the first of the queue counted as failed, when there can be none.
bool TrapReceiver::openSession(Time)
{
    std::string problem;
    if (row_.version != 3 || services_.users.makeReady(row_.user, engineId_, problem)) {
        session_ = InformSession::open(sessionSettings(), problem);
    }
    if (!session_) {
        failFirst(problem);
    }
    return session_ != nullptr;
}

/// True if the engine ID is known; otherwise it is on its way, or will be asked for again.
bool TrapReceiver::findEngine(Time now)
{
    if (!engineId_.empty()) {
        return true;
    }
    if (discovery_ || now < discoverAt_) {
        return false;
    }
    std::string problem;
    discovery_ = EngineDiscovery::start(
        sessionSettings(), [this] { services_.workDue = true; }, problem);
    if (!discovery_) {
        setState("cannot be sent to: " + problem);
        discoverAt_ = now + kFirstPause;
    }
    return false;
}

void TrapReceiver::takeDiscovery(Time now)
{
    if (!discovery_ || discovery_->running()) {
        return;
    }
    engineId_ = discovery_->engineId();
    discovery_.reset();
    if (!engineId_.empty()) {
        discoveryPause_ = std::chrono::milliseconds(0);
        return;
    }
    setState("does not answer: its engine ID is unknown and no inform can be sent");
    discoveryPause_ = std::clamp(2 * discoveryPause_, kFirstPause, kLongestPause);
    discoverAt_ = now + discoveryPause_;
}

/// What is under way goes back to where it was in the queue.
void TrapReceiver::closeSession()
{
    session_.reset();
    std::sort(returned_.begin(), returned_.end(),
              [](const Item& a, const Item& b) { return a.number < b.number; });
    waiting_.insert(waiting_.begin(), std::make_move_iterator(returned_.begin()),
                    std::make_move_iterator(returned_.end()));
    returned_.clear();
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

void TrapReceiver::failFirst(const std::string& why)
{
    ++status_.failed;
    waiting_.pop_front();
    setState(why);
}

std::string TrapReceiver::okState() const
{
    return stale_ ? "its name does not resolve; " + address_ + ", the last known address, is used"
                  : kOk;
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
    return "trap receiver " + oneLine(row_.index) + " (" + oneLine(row_.address) + " port " +
           std::to_string(row_.port) + ")";
}

}  // namespace talvik
