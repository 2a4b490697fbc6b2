#pragma once

#include "framework/tlv_package.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// One line that reached a debug kit.
struct LogLine {
    std::string level;  ///< "trace", "debug", "warn" or "error"
    unsigned moduleId = 0;
    unsigned long long messageId = 0;
    std::string label;
    unsigned line = 0;
    std::string text;
};

std::ostream& operator<<(std::ostream& os, const LogLine& line);

/// One command that went out through the configuration channel.
struct Command {
    std::vector<unsigned char> bytes;  ///< the request package, encoded
    bool first = true;                 ///< the two flags of `configure`
    bool second = true;
};

/// Everything that a host supplies, under a test's control: it records calls and log lines, answers
/// what the test set and fails where the test says so. One for the process; `FakeHostTest` resets
/// it before each test. Several threads may call it at once while the test changes and reads
/// nothing here.
class FakeHost {
public:
    /// Back to no calls, no lines, no items, no failures, and the defaults below.
    void reset();

    /// Recorded at the start of every host call: runs the failure set for `call`, which may throw.
    void enter(const char* call);

    /// As `enter` without recording, for calls that tests make while they count allocations.
    void act(const char* call) const;

    /// Records one thing that came in; whoever calls these looks at `recording` first.
    void keep(LogLine line);
    void keep(Command command);
    void keepItemRead(const std::string& section, const std::string& key);

    /// Makes every further call of `call` run `action` first (throw from it to fail). Names are the
    /// operations' own, as in "configure", "getDeviceItem", "trace", "set_i".
    void onCall(const std::string& call, std::function<void()> action);

    /// How often `call` was entered since the reset.
    std::size_t count(const std::string& call) const;

    /// The texts of the lines of one level, in order.
    std::vector<std::string> texts(const std::string& level) const;

    /// False while a test makes allocations fail: calls, lines, commands and items are then not
    /// recorded, failures still happen.
    bool recording = true;

    std::vector<LogLine> log;
    std::vector<std::string> calls;
    std::vector<Command> commands;
    std::vector<std::pair<std::string, std::string>> itemsRead;  ///< section and key, in order

    std::map<std::pair<std::string, std::string>, std::string> deviceItems;
    std::optional<std::string> nodeCode = "NODE-1";
    unsigned nodeType = 7;
    int configureResult = 0;
    std::function<void(CTLVPackageV3<TLVMsgHeadV3>& answer)> fillAnswer;
    int memcpyResult = 0;  ///< other than 0: `memcpy_s` copies nothing and answers this

private:
    std::map<std::string, std::function<void()>> actions_;
};

FakeHost& fakeHost();

}  // namespace talvik::test
