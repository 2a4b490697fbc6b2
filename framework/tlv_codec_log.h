#pragma once

#include <ace/Log_Msg.h>

namespace talvik {

// Contract: the codec names this unit in its lines, wherever it is built; deployed log filters
// match on it.
inline constexpr char kCodecSource[] = "om/snmpagent/common/include/kelpub/kel_message_package";

/// Logs one line through ACE at error priority, recording `line` as its place. `format` is ACE's
/// (%D, %M, %t and the printf conversions), its arguments follow.
void logCodecError(int line, const char* format, ...);

/// Logs "date priority (thread) at File=SOURCE,Line=LINE" and, right behind it, what `format` and
/// its arguments make the way printf does. Allocates nothing of its own; a text beyond 1023
/// characters is cut.
[[gnu::format(printf, 2, 3)]] void logCodecText(int line, const char* format, ...);

}  // namespace talvik
