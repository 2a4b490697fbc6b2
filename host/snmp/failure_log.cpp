#include "host/snmp/failure_log.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

namespace talvik {

namespace {

constexpr std::uint64_t kRepeatEvery = 1000;
constexpr std::size_t kMaxReported = 100;

}  // namespace

void FailureLog::failed(const std::string& reason)
{
    ++failures_;
    const bool changed = failures_ == 1 || reason != reason_;
    if (changed) {
        hostLog()->error("{}: {}; answered genErr", subject_, oneLine(reason));
        reason_ = reason;
    } else if (failures_ % kRepeatEvery == 0) {
        hostLog()->error("{}: {}; {} failures in a row", subject_, oneLine(reason), failures_);
    }
}

void FailureLog::succeeded()
{
    if (failures_ != 0) {
        hostLog()->info("{}: works again after {} failures", subject_, failures_);
    }
    failures_ = 0;
    reason_.clear();
}

void FailureLog::once(const std::string& problem)
{
    if (reported_.size() < kMaxReported && reported_.insert(problem).second) {
        hostLog()->warn("{}: {} (reported once)", subject_, oneLine(problem));
    }
}

}  // namespace talvik
