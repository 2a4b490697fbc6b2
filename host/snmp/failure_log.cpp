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
    if (logged_ != reason) {
        if (write(spdlog::level::err, oneLine(reason) + "; requests for it are answered genErr")) {
            logged_ = reason;
        }
    } else if (failures_ % kRepeatEvery == 0) {
        write(spdlog::level::err, oneLine(reason) + "; " + std::to_string(failures_) + " failures");
    }
}

void FailureLog::succeeded()
{
    if (logged_ && !write(spdlog::level::info,
                          "works again after " + std::to_string(failures_) + " failures")) {
        return;
    }
    logged_.reset();
    failures_ = 0;
}

void FailureLog::once(const std::string& problem)
{
    if (reported_.size() < kMaxReported && reported_.insert(problem).second) {
        hostLog()->warn("{}: {} (reported once)", subject_, oneLine(problem));
    }
}

bool FailureLog::write(spdlog::level::level_enum level, const std::string& text)
{
    const auto leftOut = budget_.take();
    if (leftOut) {
        const auto note =
            *leftOut == 0 ? "" : " (" + std::to_string(*leftOut) + " further reports left out)";
        hostLog()->log(level, "{}: {}{}", subject_, text, note);
    }
    return leftOut.has_value();
}

}  // namespace talvik
