#pragma once

#include "host/link/backend_link.h"

#include <memory>

namespace talvik {

/// Makes `link` what `CSNMP_Configuration::configure` sends its commands through; null takes it
/// away again (then `configure` answers `BackendLink::kUnreachable`). Not while a command is under
/// way.
void installBackendLink(std::unique_ptr<BackendLink> link);

}  // namespace talvik
