#pragma once

#include "tests/support/plain_alarm_texts.h"

#include <string>

namespace talvik::fuzz {

/// A file without a folder, which is gone with the process whatever becomes of it.
class MemoryFile {
public:
    explicit MemoryFile(const char* name);
    ~MemoryFile();

    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Replaces what the file holds.
    void write(const std::string& text);

    /// Under the host's installation root.
    std::string name() const { return std::to_string(file_); }

private:
    int file_;
};

/// What the alarm catalogue works on: the platform's calls, defined in alarm_host.cpp, end here.
struct AlarmHost {
    MemoryFile definitions{"alarms"};
    MemoryFile literals{"enums"};
    test::plain::Lines lines;  ///< above trace level
    long guards = 0;           ///< entered and not left
};

AlarmHost& alarmHost();

}  // namespace talvik::fuzz
