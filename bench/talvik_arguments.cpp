#include "bench/talvik_arguments.h"

#include <fstream>

namespace talvik::bench {

std::vector<std::string> talvikArguments(const std::string& folder, unsigned port)
{
    const auto config = folder + "/talvik-agentd.conf";
    std::ofstream(config) << "rwcommunity " << kCommunity << " 127.0.0.1\n";
    const std::string sources = TALVIK_SOURCE_DIR;
    return {"--config",    config,
            "--state-dir", folder + "/state",
            "--listen",    "udp:127.0.0.1:" + std::to_string(port),
            "--device",    sources + "/etc/talvik-device.xml",
            "--mib-dir",   sources + "/mibs",
            "--module",    TALVIK_MODULE_FILE};
}

}  // namespace talvik::bench
