#include "host/snmp/event_loop.h"

#include "host/snmp/net_snmp.h"

#include <sys/select.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace talvik {

namespace {

/// A set of descriptors without select's limit of 1024.
class DescriptorSet {
public:
    DescriptorSet() { netsnmp_large_fd_set_init(&set_, FD_SETSIZE); }
    ~DescriptorSet() { netsnmp_large_fd_set_cleanup(&set_); }

    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    void clear() { NETSNMP_LARGE_FD_ZERO(&set_); }
    void add(int descriptor) { netsnmp_large_fd_setfd(descriptor, &set_); }
    bool contains(int descriptor) { return netsnmp_large_fd_is_set(descriptor, &set_) != 0; }
    netsnmp_large_fd_set* get() { return &set_; }

private:
    netsnmp_large_fd_set set_{};
};

}  // namespace

void serveUntilReadable(int stopFd)
{
    DescriptorSet ready;
    while (true) {
        ready.clear();
        ready.add(stopFd);
        int count = stopFd + 1;
        int block = 1;
        timeval timeout{};
        snmp_select_info2(&count, ready.get(), &timeout, &block);

        const int found =
            netsnmp_large_fd_set_select(std::max(count, stopFd + 1), ready.get(), nullptr, nullptr,
                                        block != 0 ? nullptr : &timeout);
        if (found < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::system_error(errno, std::generic_category(), "waiting for requests");
        }
        if (ready.contains(stopFd) && found > 0) {
            return;
        }
        if (found > 0) {
            snmp_read2(ready.get());
        }
        snmp_timeout();
        run_alarms();
        netsnmp_check_outstanding_agent_requests();
        snmp_store_if_needed();
    }
}

}  // namespace talvik
