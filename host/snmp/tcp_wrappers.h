#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>

namespace talvik {

/// Whom the TCP wrappers have let in a moment ago. They read /etc/hosts.allow and /etc/hosts.deny
/// for every request, which is a good part of what answering one takes. So a manager that they let
/// in is let in again for a second, and a change of the rules holds after a second at the latest. A
/// refusal is never remembered. On the agent's thread only.
class AdmittedManagers {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    static constexpr std::chrono::seconds kLifetime{1};
    static constexpr std::size_t kMostManagers = 1024;

    explicit AdmittedManagers(Clock clock = &std::chrono::steady_clock::now);

    /// True if `manager`, a text that tells it from others, was let in or `ask` lets it in now.
    bool admit(const std::string& manager, const std::function<bool()>& ask);

private:
    const Clock clock_;
    std::map<std::string, std::chrono::steady_clock::time_point> until_;
};

/// Makes the agent library ask through one `AdmittedManagers`. It has no hook for this: this unit
/// defines the function that it asks, `hosts_ctl`, in front of the original. Calling this function
/// makes sure that the unit is part of the program.
void rememberAdmittedManagers();

}  // namespace talvik
