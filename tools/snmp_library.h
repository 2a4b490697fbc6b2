#pragma once

#include <string>

namespace talvik::ctl {

/// Starts net-snmp's client library, once a process: reads snmp.conf as the stock tools do and then
/// `credentialsFile` unless it is empty. It loads no MIB, writes no file and prints nothing; errors
/// in the configuration go to standard error. Throws `StartupError` when the credentials file
/// cannot be used.
void startSnmpLibrary(const std::string& credentialsFile);

/// The error lines that the library logged since the last call, joined; empty for none.
std::string takeLibraryErrors();

}  // namespace talvik::ctl
