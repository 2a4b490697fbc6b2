#pragma once

#include "host/platform/host_log.h"
#include "host/snmp/line_budget.h"

#include <spdlog/sinks/ostream_sink.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace talvik::test {

/// Keeps what a logger writes while it lives, one text a line.
class LoggerCapture {
public:
    explicit LoggerCapture(const std::string& logger)
        : logger_(makeLogger(logger)),
          sink_(std::make_shared<spdlog::sinks::ostream_sink_mt>(text_))
    {
        sink_->set_pattern("%v");
        logger_->sinks().push_back(sink_);
    }

    ~LoggerCapture()
    {
        auto& sinks = logger_->sinks();
        sinks.erase(std::remove(sinks.begin(), sinks.end(), spdlog::sink_ptr(sink_)), sinks.end());
    }

    LoggerCapture(const LoggerCapture&) = delete;
    LoggerCapture& operator=(const LoggerCapture&) = delete;

    std::vector<std::string> lines() const
    {
        std::istringstream text(text_.str());
        std::vector<std::string> all;
        for (std::string line; std::getline(text, line);) {
            all.push_back(line);
        }
        return all;
    }

private:
    std::shared_ptr<spdlog::logger> logger_;
    std::ostringstream text_;
    std::shared_ptr<spdlog::sinks::ostream_sink_mt> sink_;
};

/// A budget on a clock that only a test moves.
class ManualClock {
public:
    LineBudget budget()
    {
        return LineBudget([this] { return now_; });
    }

    void advance(std::chrono::milliseconds time) { now_ += time; }

private:
    std::chrono::steady_clock::time_point now_;
};

}  // namespace talvik::test
