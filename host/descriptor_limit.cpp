#include "host/descriptor_limit.h"

#include "host/platform/host_log.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace talvik {

void allowManyDescriptors()
{
    constexpr rlim_t kEnough = 16384;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= kEnough) {
        return;
    }
    const auto before = std::exchange(limit.rlim_cur, std::min(limit.rlim_max, kEnough));
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) {
        hostLog()->warn("the limit of open files stays at {}: {}", before,
                        std::generic_category().message(errno));
    }
}

}  // namespace talvik
