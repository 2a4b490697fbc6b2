#pragma once

namespace talvik {

/// Sends what the calling thread logs through ACE, as the package codec does, to the logger "codec"
/// instead of standard error. For the rest of the thread's life; ACE keeps this for each thread
/// apart.
void routeAceLog();

}  // namespace talvik
