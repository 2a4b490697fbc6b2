#pragma once

#include <string>

namespace talvik::ctl {

/// Throws `StartupError` for what is no regular file, or larger than 64 MiB: a pipe would hold the
/// command up until somebody writes to it, a device may have no end. A missing file is none of it.
void requireOrdinaryFile(const std::string& path);

/// All of a file. Throws `StartupError` when it is no ordinary one or cannot be read.
std::string readOrdinaryFile(const std::string& path);

}  // namespace talvik::ctl
