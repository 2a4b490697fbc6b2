#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace talvik::bench {

/// A folder of its own that is gone at the end. It lies in the working directory, so that files in
/// it are on a disk and not in memory.
class WorkFolder {
public:
    WorkFolder();
    ~WorkFolder();

    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// A UDP port of the loopback that nobody had a moment ago.
unsigned freePort();

/// The running program.
std::string ownProgram();

/// The program `name` in the running one's folder.
std::string programBeside(const std::string& name);

/// A child process that serves SNMP; ended with this object.
class AgentProcess {
public:
    /// Runs `program` with `arguments`, its output in `logFile`.
    AgentProcess(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& logFile);

    ~AgentProcess();

    AgentProcess(const AgentProcess&) = delete;
    AgentProcess& operator=(const AgentProcess&) = delete;

    /// Returns when `answers` is true. Throws `std::runtime_error` with the log when the
    /// process ends or half a minute has passed.
    void waitUntil(const std::function<bool()>& answers) const;

    /// Returns when the process has used no processor for a moment. Throws as `waitUntil`.
    void waitUntilIdle() const;

    /// What its threads have used of processors so far.
    std::chrono::nanoseconds processorTime() const;

private:
    pid_t pid_ = -1;
    std::string logFile_;
};

}  // namespace talvik::bench
