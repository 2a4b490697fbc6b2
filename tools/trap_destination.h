#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace talvik::ctl {

/// A trap destination, or what is to change of one. What is absent is not shown by the agent, or
/// stays as it is.
struct TrapDestination {
    std::uint32_t index = 0;
    std::optional<std::string> address;
    std::optional<std::uint32_t> port;
    std::optional<std::uint32_t> version;  ///< code; see trap_names.h
    std::optional<std::uint32_t> type;     ///< code; see trap_names.h
    std::optional<std::string> user;       ///< "--" stands for none
    std::optional<std::string> usable;     ///< read only: "0.0.0.0" while a name does not resolve
};

constexpr std::uint32_t kMaxTrapIndex = 2147483647;
constexpr const char* kUnresolved = "0.0.0.0";

}  // namespace talvik::ctl
