#include "tools/alarm_actions.h"
#include "tools/alarm_client.h"
#include "tools/command_line.h"
#include "tools/progress.h"
#include "tools/receiver_actions.h"
#include "tools/socket_options.h"
#include "tools/watch_output.h"
#include "tools/watch_picture.h"
#include "tools/watcher.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <iostream>
#include <memory>
#include <vector>

namespace talvik::ctl {

namespace {

constexpr const char* kClearScreen = "\x1B[H\x1B[2J";
constexpr double kLeastInterval = 0.1;
constexpr double kMostInterval = 3600;
constexpr double kUsualInterval = 2;
constexpr std::uint32_t kMostLooks = 1000000000;

struct WatchOptions {
    SocketOptions socket;
    std::string what = "all";
    double interval = kUsualInterval;  // seconds
    std::uint32_t count = 0;           // 0 for no end
};

using Clock = std::chrono::steady_clock;

/// Ctrl-C and SIGTERM end the program with status 0, but never within a line. That the terminal has
/// another size is told while it waits.
class Signals {
public:
    Signals()
    {
        struct sigaction action {};
        action.sa_handler = [](int) { ::_exit(kExitGood); };
        for (const int number : {SIGINT, SIGTERM}) {
            ::sigaction(number, &action, nullptr);
            ::sigaddset(&set_, number);
        }
        ::sigaddset(&resized_, SIGWINCH);
        ::pthread_sigmask(SIG_BLOCK, &resized_, nullptr);
    }

    void hold() const { ::pthread_sigmask(SIG_BLOCK, &set_, nullptr); }
    void release() const { ::pthread_sigmask(SIG_UNBLOCK, &set_, nullptr); }

    /// Waits for `end`; true when the terminal has another size before it.
    bool resizedBefore(Clock::time_point end) const
    {
        using std::chrono::nanoseconds;
        using std::chrono::seconds;
        for (auto now = Clock::now(); now < end; now = Clock::now()) {
            const auto whole = std::chrono::duration_cast<seconds>(end - now);
            timespec left{};
            left.tv_sec = whole.count();
            left.tv_nsec = std::chrono::duration_cast<nanoseconds>(end - now - whole).count();
            if (::sigtimedwait(&resized_, nullptr, &left) == SIGWINCH) {
                return true;
            }
        }
        return false;
    }

private:
    sigset_t set_ = {};
    sigset_t resized_ = {};
};

template <typename Row, typename Ask>
void answerInto(Answered<Row>& answered, const Ask& ask)
{
    try {
        answered.rows = ask();
    } catch (const Failure& failure) {
        answered.failure = failure;
    }
}

/// Asks as often as it is told.
class Watching {
public:
    explicit Watching(const WatchOptions& options)
        : options_(options),
          alarms_(options.socket),
          receivers_(options.socket),
          surroundings_(surroundingsOfOutput()),
          pictures_(canRedraw(surroundings_) && !options.socket.output.json)
    {
    }

    /// Returns the exit status.
    int run()
    {
        for (std::uint32_t looks = 1;; ++looks) {
            const auto seen = look();
            const auto changes = watcher_.changesOf(seen);
            signals_.hold();
            show(seen, changes);
            if (!std::cout) {
                return kExitBad;
            }
            if (looks == options_.count) {
                return seen.isAnswered() ? kExitGood : kExitNoAnswer;
            }
            signals_.release();
            wait(seen, changes);
        }
    }

private:
    Look look()
    {
        Look seen;
        seen.time = static_cast<std::uint64_t>(std::time(nullptr));
        if (options_.what != "traps") {
            answerInto(seen.alarms, [this] { return alarms_.active(0, kAllAlarms); });
        }
        if (options_.what != "alarms") {
            answerInto(seen.receivers, [this] { return receiversOf(receivers_); });
        }
        return seen;
    }

    /// Until the next look is due; a picture is drawn anew when the window has another size.
    void wait(const Look& seen, const std::vector<Change>& changes) const
    {
        const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(options_.interval));
        while (signals_.resizedBefore(end)) {
            if (pictures_) {
                signals_.hold();
                show(seen, changes);
                signals_.release();
            }
        }
    }

    void show(const Look& seen, const std::vector<Change>& changes) const
    {
        const auto now = surroundingsOfOutput();  // the window may have another size
        const auto style = tableStyle(options_.socket.output, now);
        if (pictures_) {
            std::cout << kClearScreen << watchPicture(seen, changes, style, now.rows);
        } else {
            for (const auto& change : changes) {
                std::cout << (options_.socket.output.json ? changeJson(change, seen.time)
                                                          : changeText(change, seen.time, style));
            }
        }
        std::cout.flush();
    }

    const WatchOptions& options_;
    AlarmClient alarms_;
    SocketClient receivers_;
    Surroundings surroundings_;
    bool pictures_;
    Signals signals_;
    Watcher watcher_;
};

int runWatch(const WatchOptions& options)
{
    Progress::ofThisProgram().allow(false);  // the picture tells enough
    return Watching(options).run();
}

}  // namespace

void addWatchCommand(CLI::App& talvikctl, Action& action)
{
    auto options = std::make_shared<WatchOptions>();
    auto* watch = talvikctl.add_subcommand(
        "watch", "Look at the active alarms and the trap receivers again and again");
    watch->add_option("WHAT", options->what, "What to look at")
        ->type_name("all|alarms|traps")
        ->check(oneOf({"all", "alarms", "traps"}))
        ->capture_default_str();
    watch->add_option("--interval", options->interval, "Seconds between two looks")
        ->type_name("SECONDS")
        ->check(CLI::Range(kLeastInterval, kMostInterval))
        ->capture_default_str();
    watch->add_option("--count", options->count, "End after so many looks")
        ->type_name("N")
        ->check(CLI::Range(std::uint32_t{1}, kMostLooks));
    addSocketOptions(*watch, options->socket);
    addOutputOptions(*watch, options->socket.output);
    addTableOptions(*watch, options->socket.output);
    setHelp(*watch,
            {"On a terminal it draws tables and what is new below the time; Ctrl-C ends it. In a\n"
             "pipe, and with --json, it prints what there is at first and then a line a change.\n"
             "It goes on when nobody answers, and says so. What is raised and cleared between two\n"
             "looks is not seen. The traps are shown as each receiver's counters: agent.sock has\n"
             "them, the socket of a back end of its own has the alarms alone.",
             "0 ended by Ctrl-C, or after the last look, 2 wrong usage or a file that cannot be\n"
             "used, 3 the last look had no answer.",
             {"talvikctl watch", "talvikctl watch alarms --interval 10",
              "talvikctl watch traps --count 1 --json"}});
    onCommand(*watch, action, options->socket.output, [options] { return runWatch(*options); });
}

}  // namespace talvik::ctl
