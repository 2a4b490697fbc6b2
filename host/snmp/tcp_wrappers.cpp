#include "host/snmp/tcp_wrappers.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace talvik {

namespace {

using HostsCtl = int (*)(char*, char*, char*, char*);

HostsCtl originalHostsCtl()
{
    static const auto found = reinterpret_cast<HostsCtl>(dlsym(RTLD_NEXT, "hosts_ctl"));
    return found;
}

/// All that the wrappers are told of a manager, as one text.
std::string nameOf(const char* daemon, const char* client, const char* address, const char* user)
{
    std::string name;
    for (const auto* part : {daemon, client, address, user}) {
        name.append(part == nullptr ? "" : part).append(1, '\n');
    }
    return name;
}

AdmittedManagers& admitted()
{
    static AdmittedManagers managers;
    return managers;
}

}  // namespace

AdmittedManagers::AdmittedManagers(Clock clock) : clock_(std::move(clock)) {}

bool AdmittedManagers::admit(const std::string& manager, const std::function<bool()>& ask)
{
    const auto now = clock_();
    const auto found = until_.find(manager);
    if (found != until_.end() && now < found->second) {
        return true;
    }
    if (!ask()) {
        return false;
    }
    if (until_.size() >= kMostManagers) {
        until_.clear();
    }
    until_[manager] = now + kLifetime;
    return true;
}

void rememberAdmittedManagers()
{
    static_cast<void>(originalHostsCtl());
}

}  // namespace talvik

extern "C" __attribute__((visibility("default"))) int hosts_ctl(char* daemon, char* client,
                                                                char* address, char* user)
{
    const auto original = talvik::originalHostsCtl();
    if (original == nullptr) {
        std::fputs("the TCP wrappers' library is not loaded: the request is refused\n", stderr);
        return 0;
    }
    const auto ask = [&] { return original(daemon, client, address, user) != 0; };
    try {
        return talvik::admitted().admit(talvik::nameOf(daemon, client, address, user), ask) ? 1 : 0;
    } catch (...) {  // no memory to remember the manager with: the wrappers need none
        return ask() ? 1 : 0;
    }
}
