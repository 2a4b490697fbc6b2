#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace talvik::ctl {

/// A line that says what a command is doing, for what takes longer than a second: written over
/// itself, gone at the end. A thread of its own draws it, so what is done may block.
class Progress {
public:
    using Write = std::function<void(const std::string&)>;

    /// How long nothing is shown, and how often the line is drawn anew.
    struct Pace {
        std::chrono::milliseconds patience{1000};
        std::chrono::milliseconds redraw{200};
    };

    /// That of this program, on standard error. Shows nothing until `allow`.
    static Progress& ofThisProgram();

    /// For tests: `write` gets what a terminal would, from several threads but never at once.
    Progress(Write write, Pace pace);
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Whether anything may be shown.
    void allow(bool allowed);

    /// Replaces what the line says.
    void tell(const std::string& text);

    /// Runs `print` while the line is out of its way.
    void around(const std::function<void()>& print);

    /// Takes the line away until the next outermost span: the last thing is about to be printed.
    void finish();

    /// Something that takes time, from construction to destruction. Of several within each other
    /// the outermost counts.
    class Span {
    public:
        explicit Span(const std::string& text, Progress& progress = ofThisProgram());
        ~Span();

        Span(const Span&) = delete;
        Span& operator=(const Span&) = delete;

    private:
        Progress& progress_;
    };

private:
    using Clock = std::chrono::steady_clock;

    void begin(const std::string& text);
    void end();
    void run();
    void draw();
    void erase();

    const Write write_;
    const Pace pace_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread drawer_;         // guarded by mutex_; runs as long as this object once started
    bool allowed_ = false;       // guarded by mutex_
    bool ending_ = false;        // guarded by mutex_
    bool finished_ = false;      // guarded by mutex_
    bool drawn_ = false;         // guarded by mutex_
    unsigned depth_ = 0;         // of spans; guarded by mutex_
    std::string text_;           // guarded by mutex_
    Clock::time_point start_{};  // of the outermost span; guarded by mutex_
};

}  // namespace talvik::ctl
