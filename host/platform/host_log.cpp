#include "host/platform/host_log.h"

#include "host/startup_error.h"

#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <array>
#include <mutex>
#include <vector>

namespace talvik {

namespace {

constexpr std::array<const char*, 5> kLevels = {"trace", "debug", "info", "warn", "error"};
constexpr const char* kPattern = "%Y-%m-%dT%H:%M:%S.%e%z %l %n %v";

using DistSink = spdlog::sinks::dist_sink_mt;

/// The one sink that every logger of the process writes to; its targets are exchanged by
/// `configureLog`.
const std::shared_ptr<DistSink>& sharedSink()
{
    static const auto sink = [] {
        auto dist = std::make_shared<DistSink>();
        dist->add_sink(std::make_shared<spdlog::sinks::stderr_sink_mt>());
        spdlog::set_pattern(kPattern);  // of the loggers to come, and so of this sink
        return dist;
    }();
    return sink;
}

spdlog::level::level_enum levelOf(const std::string& name)
{
    for (const char* known : kLevels) {
        if (name == known) {
            return spdlog::level::from_str(name);
        }
    }
    throw StartupError("unknown log level \"" + name +
                       "\": use one of trace, debug, info, warn, error");
}

std::vector<spdlog::sink_ptr> sinksOf(const LogSettings& settings)
{
    std::vector<spdlog::sink_ptr> sinks;
    if (settings.toStderr) {
        sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    }
    if (!settings.file.empty()) {
        sinks.push_back(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
            settings.file, settings.maxFileBytes, settings.maxFiles));
    }
    for (const auto& sink : sinks) {  // before any thread writes to it
        sink->set_pattern(kPattern);
    }
    return sinks;
}

}  // namespace

std::shared_ptr<spdlog::logger> makeLogger(const std::string& name)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (auto known = spdlog::get(name)) {
        return known;
    }
    auto logger = std::make_shared<spdlog::logger>(name, sharedSink());
    logger->flush_on(spdlog::level::warn);
    spdlog::initialize_logger(logger);
    return logger;
}

void configureLog(const LogSettings& settings)
{
    const auto level = levelOf(settings.level);
    try {
        sharedSink()->set_sinks(sinksOf(settings));
    } catch (const spdlog::spdlog_ex& error) {
        throw StartupError("cannot open the log file " + settings.file + ": " + error.what());
    }
    spdlog::set_level(level);
    // A log that grows only in the buffer is of no use to who follows it.
    spdlog::flush_on(settings.file.empty() ? spdlog::level::warn : spdlog::level::info);
}

std::shared_ptr<spdlog::logger> hostLog()
{
    static const auto logger = makeLogger("host");
    return logger;
}

}  // namespace talvik
