#include "tools/snmp_settings.h"

#include "host/installation_paths.h"

namespace talvik::ctl {

std::string usualAgent(const InstallationPaths& paths)
{
    const InstallationPaths ofTheSystem("/usr/bin");
    return paths.stateDirectory() == ofTheSystem.stateDirectory() ? "udp:127.0.0.1:161"
                                                                  : "udp:127.0.0.1:1161";
}

std::string usualAgent()
{
    return usualAgent(InstallationPaths::ofThisProgram());
}

}  // namespace talvik::ctl
