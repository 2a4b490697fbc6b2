#pragma once

namespace talvik {

/// Makes the process's debug kit manager. Call it before the first thread starts: the singleton's
/// double check finds an object that is there, but does not order one that is being made.
void makeDebugKits();

}  // namespace talvik
