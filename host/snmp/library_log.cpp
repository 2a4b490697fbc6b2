#include "host/snmp/library_log.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"

#include <syslog.h>

#include <utility>

namespace talvik {

namespace {

LibraryLog::Level levelOf(int priority)
{
    if (priority <= LOG_ERR) {
        return LibraryLog::Level::Error;
    }
    if (priority == LOG_WARNING) {
        return LibraryLog::Level::Warning;
    }
    return priority == LOG_DEBUG ? LibraryLog::Level::Debug : LibraryLog::Level::Info;
}

/// The one instance. The library would free a callback's argument when it shuts down, so it gets
/// none.
LibraryLog* current = nullptr;

std::shared_ptr<spdlog::logger> libraryLogger()
{
    return makeLogger("net-snmp");
}

spdlog::level::level_enum logLevel(LibraryLog::Level level)
{
    switch (level) {
    case LibraryLog::Level::Error:
        return spdlog::level::err;
    case LibraryLog::Level::Warning:
        return spdlog::level::warn;
    case LibraryLog::Level::Info:
        return spdlog::level::info;
    case LibraryLog::Level::Debug:
        break;
    }
    return spdlog::level::debug;
}

void writeLine(LibraryLog::Level level, const std::string& text)
{
    libraryLogger()->log(logLevel(level), "{}", oneLine(text));
}

/// True for what the agent says itself, and differently: it looks for its AgentX master by itself.
bool isSaidElsewhere(const std::string& text)
{
    return text.compare(0, 7, "AgentX ") == 0 && text.find("not reconnecting") != std::string::npos;
}

std::string leftOutText(std::uint64_t lines)
{
    return std::to_string(lines) + " more lines of net-snmp were left out";
}

}  // namespace

LibraryLog::LibraryLog(LineBudget budget) : budget_(std::move(budget))
{
    current = this;
    snmp_disable_log();
    snmp_enable_calllog();
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &LibraryLog::onMessage,
                           nullptr);
}

LibraryLog::~LibraryLog()
{
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &LibraryLog::onMessage,
                             nullptr, 0);
    snmp_disable_log();
    current = nullptr;
    if (budget_.leftOut() != 0) {
        writeLine(Level::Warning, leftOutText(budget_.leftOut()));
    }
}

void LibraryLog::startKeeping()
{
    kept_.clear();
    keeping_ = true;
}

std::vector<LibraryLog::Line> LibraryLog::stopKeeping()
{
    keeping_ = false;
    return std::exchange(kept_, {});
}

int LibraryLog::onMessage(int, int, void* message, void*)
{
    const auto* entry = static_cast<const snmp_log_message*>(message);
    return guardCallback("net-snmp's log", SNMPERR_GENERR, [&] {
        current->add(entry->priority, entry->msg);
        return SNMPERR_SUCCESS;
    });
}

void LibraryLog::add(int priority, const char* text)
{
    for (; *text != '\0'; ++text) {
        if (*text == '\n') {
            finishLine(levelOf(priority));
        } else {
            partial_ += *text;
        }
    }
}

void LibraryLog::finishLine(Level level)
{
    const auto text = std::exchange(partial_, {});
    if (text.empty() || isSaidElsewhere(text)) {
        return;
    }
    if (!keeping_) {
        writeWithinBudget(level, text);
    } else if (level == Level::Error || level == Level::Warning) {
        kept_.push_back({level, text});
    } else {
        writeLine(level, text);
    }
}

void LibraryLog::writeWithinBudget(Level level, const std::string& text)
{
    if (!libraryLogger()->should_log(logLevel(level))) {
        return;
    }
    if (const auto leftOut = budget_.take()) {
        writeLine(level, *leftOut == 0 ? text : text + " (" + leftOutText(*leftOut) + ")");
    }
}

}  // namespace talvik
