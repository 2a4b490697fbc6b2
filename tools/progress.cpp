#include "tools/progress.h"

#include "tools/safe_text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr const char* kErase = "\r\x1B[K";
constexpr std::size_t kUsualColumns = 80;

/// A longer line would wrap, and only its last part would be written over.
std::size_t columnsOfErrors()
{
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return (known ? size.ws_col : kUsualColumns) - 1;
}

}  // namespace

Progress& Progress::ofThisProgram()
{
    static Progress progress([](const std::string& text) { std::cerr << text << std::flush; },
                             Pace());
    return progress;
}

Progress::Progress(Write write, Pace pace) : write_(std::move(write)), pace_(pace) {}

Progress::~Progress()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    if (drawer_.joinable()) {
        drawer_.join();
    }
}

void Progress::allow(bool allowed)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    allowed_ = allowed;
}

void Progress::tell(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    text_ = text;
}

void Progress::around(const std::function<void()>& print)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    erase();
    print();
}

void Progress::finish()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    erase();
    finished_ = true;
}

void Progress::begin(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!allowed_ || ++depth_ > 1) {
        return;
    }
    text_ = text;
    finished_ = false;
    start_ = Clock::now();
    if (!drawer_.joinable()) {
        drawer_ = std::thread([this] { run(); });
    }
    changed_.notify_all();
}

void Progress::end()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (depth_ > 0 && --depth_ == 0) {
        erase();
    }
}

void Progress::run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ending_) {
        if (depth_ == 0 || finished_) {
            changed_.wait(lock);
            continue;
        }
        const auto due = start_ + pace_.patience;
        if (Clock::now() < due) {
            changed_.wait_until(lock, due);
            continue;
        }
        draw();
        changed_.wait_for(lock, pace_.redraw);
    }
}

void Progress::draw()
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start_);
    const auto line = printable(text_) + ", " + std::to_string(seconds.count()) + " s";
    write_(kErase + cutToWidth(line, columnsOfErrors()));
    drawn_ = true;
}

void Progress::erase()
{
    if (drawn_) {
        write_(kErase);
        drawn_ = false;
    }
}

Progress::Span::Span(const std::string& text, Progress& progress) : progress_(progress)
{
    progress_.begin(text);
}

Progress::Span::~Span()
{
    progress_.end();
}

}  // namespace talvik::ctl
