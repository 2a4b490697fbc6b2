#pragma once

#include <string>

namespace talvik::bench {

/// The least that a host can be: logs go nowhere, and the alarm catalogue lies in the folder set
/// here.
void setCatalogueFolder(const std::string& folder);

}  // namespace talvik::bench
