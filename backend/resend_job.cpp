#include "backend/resend_job.h"

#include "backend/backend_log.h"

namespace talvik::backend {

std::uint32_t ResendJob::start()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto count = store_.countActive();
    lastSerial_ = store_.lastSerial();
    sentSerial_ = 0;
    running_ = count != 0;
    return count;
}

ResendJob::Time ResendJob::deadline() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return running_ ? due_ : Time::max();
}

void ResendJob::proceed(Time now)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!running_ || now < due_) {
        return;
    }
    running_ = false;  // also when the step throws
    const auto step = store_.resend(sentSerial_, lastSerial_, kStepAlarms);
    due_ = now + kStepPause;
    if (step.code != result::kSuccess) {
        backendLog()->error("active alarms with serial numbers above {} are not sent again, since "
                            "the outbox does not take them; ask for it once more later",
                            sentSerial_);
        return;
    }
    running_ = step.count == kStepAlarms;
    sentSerial_ = step.lastSerial;
}

}  // namespace talvik::backend
