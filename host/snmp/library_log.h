#pragma once

#include "host/snmp/line_budget.h"

#include <string>
#include <vector>

namespace talvik {

/// Takes net-snmp's log lines into the host's log while it lives, and keeps those of warning level
/// and worse for whoever has to tell why the library refused something. Anybody who can send a
/// datagram can make net-snmp write a line, so only as many as `LineBudget` allows reach the log,
/// with the number of those left out. One instance at a time, on the agent's thread.
class LibraryLog {
public:
    enum class Level { Error, Warning, Info, Debug };

    struct Line {
        Level level;
        std::string text;
    };

    explicit LibraryLog(LineBudget budget = LineBudget());
    ~LibraryLog();

    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    /// From now on warnings and errors are kept instead of logged, however many; the rest is logged
    /// without a limit.
    void startKeeping();

    /// Ends that and returns them.
    std::vector<Line> stopKeeping();

private:
    static int onMessage(int majorId, int minorId, void* message, void* unused);
    void add(int priority, const char* text);
    void finishLine(Level level);
    void writeWithinBudget(Level level, const std::string& text);

    LineBudget budget_;

    std::string partial_;  ///< messages may come in pieces
    bool keeping_ = false;
    std::vector<Line> kept_;
};

}  // namespace talvik
