#include "host/platform/ace_log_route.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

#include <ace/Log_Msg.h>
#include <ace/Log_Msg_Callback.h>
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

class Route : public ACE_Log_Msg_Callback {
public:
    void log(ACE_Log_Record& record) override
    {
        logger_->log(levelOf(record.type()), "{}", oneLine(record.msg_data()));
    }

private:
    std::shared_ptr<spdlog::logger> logger_ = makeLogger("codec");
};

}  // namespace

void routeAceLog()
{
    static Route route;
    ACE_Log_Msg* log = ACE_Log_Msg::instance();
    log->msg_callback(&route);
    log->set_flags(ACE_Log_Msg::MSG_CALLBACK);
    log->clr_flags(ACE_Log_Msg::STDERR);
}

}  // namespace talvik
