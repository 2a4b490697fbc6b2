#pragma once

#include <ace/Log_Msg.h>

namespace talvik::fuzz {

/// The codec still composes and logs its lines; they only go nowhere.
inline void silenceCodecLog()
{
    ACE_Log_Msg::instance()->clr_flags(ACE_Log_Msg::STDERR);
}

}  // namespace talvik::fuzz
