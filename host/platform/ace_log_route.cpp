#include "host/platform/ace_log_route.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <ace/Log_Msg.h>
#include <ace/Log_Msg_Backend.h>
#include <ace/Log_Record.h>

namespace talvik {

namespace {

spdlog::level::level_enum levelOf(unsigned long priority)
{
    if (priority >= LM_ERROR) {
        return spdlog::level::err;
    }
    return priority >= LM_WARNING ? spdlog::level::warn : spdlog::level::info;
}

/// A back end and not a callback: ACE keeps callbacks for each thread apart, back ends for all.
class Route : public ACE_Log_Msg_Backend {
public:
    int open(const char*) override { return 0; }
    int reset() override { return 0; }
    int close() override { return 0; }

    ssize_t log(ACE_Log_Record& record) override
    {
        const std::string text = record.msg_data();
        logger_->log(levelOf(record.type()), "{}", oneLine(text));
        return static_cast<ssize_t>(text.size());
    }

private:
    std::shared_ptr<spdlog::logger> logger_ = makeLogger("codec");
};

}  // namespace

void routeAceLog()
{
    // Never destroyed: ACE may log until the very end of the process.
    static auto* const route = new Route;
    ACE_Log_Msg::msg_backend(route);
    ACE_Log_Msg* log = ACE_Log_Msg::instance();
    log->set_flags(ACE_Log_Msg::CUSTOM);
    log->clr_flags(ACE_Log_Msg::STDERR);
}

}  // namespace talvik
