#pragma once

namespace talvik {

/// Sends what any thread of the process logs through ACE, as the package codec does, to the logger
/// "codec" instead of standard error. Holds until the process ends; calling it again changes
/// nothing. Call it before the first thread starts.
void routeAceLog();

}  // namespace talvik
