#pragma once

#include <optional>
#include <string>

namespace talvik {

/// Why the file at `path` cannot be a module for this machine, or nothing when it looks like one.
/// The loader of the C library maps a file as its headers say: one that was cut short would end the
/// process with SIGBUS.
std::optional<std::string> faultOfModuleFile(const std::string& path);

}  // namespace talvik
