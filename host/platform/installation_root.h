#pragma once

#include <string>

namespace talvik {

/// Makes `root`, an absolute path without a trailing slash, what `KEL_Utility::getKELRootEnv`
/// answers; empty before. Call it before the module is loaded and before the host's threads start:
/// readers do not lock.
void installInstallationRoot(std::string root);

}  // namespace talvik
