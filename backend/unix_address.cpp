#include "backend/unix_address.h"

#include <algorithm>

namespace talvik::backend {

std::optional<sockaddr_un> unixAddress(const std::string& path)
{
    if (path.empty() || path.size() > kMaxSocketPath || path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    return address;
}

std::string unixAddressRefusal(const std::string& path)
{
    if (path.size() > kMaxSocketPath) {
        return "the socket path " + path + " has " + std::to_string(path.size()) +
               " bytes, the system takes at most " + std::to_string(kMaxSocketPath) +
               ": choose a shorter one";
    }
    return "the socket path is empty or holds a zero byte: name a file";
}

}  // namespace talvik::backend
