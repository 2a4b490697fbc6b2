#pragma once

#include "fuzz/properties/trap_list.h"

#include <ostream>
#include <string>
#include <vector>

namespace talvik::fuzz {

/// One line above trace level, without its source line.
struct LogLine {
    unsigned long long code;
    std::string label;
    std::string text;

    bool operator==(const LogLine& other) const
    {
        return code == other.code && label == other.label && text == other.text;
    }
};

/// What the handler under test works on: the platform's calls, defined in trap_host.cpp, end here.
struct TrapHost {
    TrapList list;
    bool listReadable = true;
    std::vector<LogLine> lines;
    long guards = 0;  ///< entered and not left
};

TrapHost& trapHost();

}  // namespace talvik::fuzz
