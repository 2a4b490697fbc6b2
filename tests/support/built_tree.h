#pragma once

#include <string>
#include <vector>

namespace talvik::test {

/// A file of the source tree by its path there, for example "etc/talvik-device.xml".
std::string sourceFile(const std::string& path);

/// The words that run a built program, by its file's name. What was built for another machine is
/// run by an emulator, so the first word may be one to be looked up in PATH.
std::vector<std::string> commandOf(const std::string& program);

}  // namespace talvik::test
