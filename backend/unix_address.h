#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <optional>
#include <string>

namespace talvik::backend {

/// The longest path that a Unix-domain socket can have, in bytes.
constexpr std::size_t kMaxSocketPath = sizeof(sockaddr_un::sun_path) - 1;

/// The socket address of `path`, or none when the path is empty, too long or holds a NUL.
std::optional<sockaddr_un> unixAddress(const std::string& path);

/// Why `unixAddress` refuses `path`, for the user.
std::string unixAddressRefusal(const std::string& path);

/// `address` as the socket calls want it; valid as long as `address`.
inline const sockaddr* asSocketAddress(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

}  // namespace talvik::backend
