#pragma once

#include <cstdint>
#include <string>

namespace talvik::ctl {

/// An alarm that was not cleared yet, as the back end shows it.
struct ActiveAlarm {
    std::uint32_t serial = 0;
    std::uint64_t id = 0;
    std::uint32_t severity = 0;  ///< as the back end counts
    std::uint64_t time = 0;      ///< seconds since 1970
    std::string parameters;      ///< joined by commas
};

}  // namespace talvik::ctl
