#include "host/link/backend_probe.h"

#include "host/link/exchange.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace talvik {

namespace {

constexpr std::uint32_t kNumber = 1;  // of the one exchange on a connection

Deadline withoutWaiting()
{
    return Deadline(std::chrono::milliseconds(0));
}

}  // namespace

BackendProbe::BackendProbe(std::string path, std::uint64_t command, SilentSince silentSince,
                           std::function<void()> answered)
    : path_(std::move(path)),
      command_(command),
      silentSince_(std::move(silentSince)),
      answered_(std::move(answered))
{
}

LoopWatcher::Time BackendProbe::deadline() const
{
    const auto since = silentSince_();
    if (asked_) {
        return since ? Time::max() : Time::min();  // only the answer counts, as long as one is due
    }
    return since ? std::max(next_, *since + kPause) : Time::max();
}

/// Why an attempt fails is what the link's log has said of the command already.
void BackendProbe::proceed(bool ready, Time now)
{
    try {
        if (!silentSince_()) {
            giveUp();
        } else if (asked_ && ready) {
            takeAnswer();
        } else if (!asked_ && now >= deadline()) {
            ask();
        }
    } catch (const LinkFailure&) {
        giveUp();
        next_ = now + kPause;
    } catch (const backend::ProtocolError&) {
        giveUp();
        next_ = now + kPause;
    }
}

void BackendProbe::ask()
{
    Package request;
    auto record = std::make_unique<CTLVRecordV3>(command_);
    request.oRecords.push_back(record.get());
    static_cast<void>(record.release());
    const auto wire = requestBytes(request, kNumber);
    connection_.open(path_, withoutWaiting());
    if (!connection_.sendAll(wire, withoutWaiting())) {
        throw LinkFailure(BackendLink::kUnreachable, "it closed the connection");
    }
    asked_ = true;
}

void BackendProbe::takeAnswer()
{
    auto wire = connection_.receive(withoutWaiting());
    Package answer;
    takeReply(wire, kNumber, answer);
    giveUp();
    answered_();
}

void BackendProbe::giveUp()
{
    connection_.close();
    asked_ = false;
}

}  // namespace talvik
