#include "backend/backend_log.h"

#include "host/platform/host_log.h"

namespace talvik::backend {

std::shared_ptr<spdlog::logger> backendLog()
{
    static const auto logger = makeLogger("backend");
    return logger;
}

}  // namespace talvik::backend
