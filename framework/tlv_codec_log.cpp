#include "framework/tlv_codec_log.h"

#include <cstdarg>
#include <cstdio>

namespace talvik {

void logCodecError(int line, const char* format, ...)
{
    const int error = ACE_Log_Msg::last_error_adapter();
    ACE_Log_Msg* log = ACE_Log_Msg::instance();
    if (log == nullptr) {
        return;  // a thread's first line while memory is out: there is nowhere to say so
    }
    log->conditional_set(kCodecSource, line, 0, error);
    va_list args;
    va_start(args, format);
    log->log(format, LM_ERROR, args);
    va_end(args);
}

void logCodecText(int line, const char* format, ...)
{
    char text[1024];
    const int place = std::snprintf(text, sizeof text, "at File=%s,Line=%d", kCodecSource, line);
    const auto used = static_cast<std::size_t>(place);  // a few dozen characters
    va_list args;
    va_start(args, format);
    std::vsnprintf(text + used, sizeof text - used, format, args);
    va_end(args);
    logCodecError(line, "%D %M (%t) %s\n", text);
}

}  // namespace talvik
