#include "tools/catalogue/module_log.h"

#include "framework/log_codes.h"
#include "host/platform/host_log.h"

#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>

#include <algorithm>
#include <utility>

namespace talvik::ctl {

namespace {

std::shared_ptr<spdlog::logger> moduleLogger()
{
    return makeLogger("module-" + std::to_string(kLogModule));
}

/// Without the message's number and source line, which mean nothing to an author.
std::string withoutOrigin(const std::string& line)
{
    const auto end = line.find("] ");
    return end == std::string::npos ? line : line.substr(end + 2);
}

}  // namespace

class ModuleLog::Sink : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
public:
    std::vector<Line> take() { return std::exchange(lines_, {}); }

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        if (message.level >= spdlog::level::warn) {
            lines_.push_back({message.level >= spdlog::level::err,
                              withoutOrigin({message.payload.data(), message.payload.size()})});
        }
    }

    void flush_() override {}

private:
    std::vector<Line> lines_;
};

ModuleLog::ModuleLog() : sink_(std::make_shared<Sink>())
{
    moduleLogger()->sinks().push_back(sink_);
}

ModuleLog::~ModuleLog()
{
    auto& sinks = moduleLogger()->sinks();
    sinks.erase(std::remove(sinks.begin(), sinks.end(), sink_), sinks.end());
}

std::vector<ModuleLog::Line> ModuleLog::take()
{
    return sink_->take();
}

}  // namespace talvik::ctl
