#include "bench/peak_memory.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

namespace talvik::bench {

long peakMemoryOf(const std::function<void()>& work)
{
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("cannot start a process to measure memory in");
    }
    if (child == 0) {
        try {
            work();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            _exit(EXIT_FAILURE);
        }
        _exit(EXIT_SUCCESS);
    }
    int status = 0;
    rusage used = {};
    if (wait4(child, &status, 0, &used) != child || status != 0) {
        throw std::runtime_error("the work whose memory is measured failed");
    }
    return used.ru_maxrss;
}

}  // namespace talvik::bench
