#include "platform/debug_kit.h"

#include "host/platform/host_log.h"
#include "host/platform/log_text.h"

class CKELDebugKit::Sink {
public:
    explicit Sink(unsigned int moduleId)
        : logger_(talvik::makeLogger("module-" + std::to_string(moduleId)))
    {
    }

    __attribute__((format(printf, 6, 0))) void write(spdlog::level::level_enum level,
                                                     unsigned long long messageId,
                                                     const char* label, unsigned int line,
                                                     const char* format, va_list args)
    {
        if (logger_->should_log(level)) {
            logger_->log(level, "0x{:X} [{}:{}] {}", messageId, label == nullptr ? "" : label, line,
                         talvik::oneLine(talvik::formatText(format, args)));
        }
    }

    void trace(const std::string& text)
    {
        if (logger_->should_log(spdlog::level::trace)) {
            logger_->trace("{}", talvik::oneLine(text));
        }
    }

private:
    std::shared_ptr<spdlog::logger> logger_;
};

CKELDebugKit::CKELDebugKit(unsigned int moduleId) : m_pSink(new Sink(moduleId)) {}

CKELDebugKit::~CKELDebugKit()
{
    delete m_pSink;
}

void CKELDebugKit::trace(const std::string& text)
{
    m_pSink->trace(text);
}

void CKELDebugKit::debug(unsigned long long messageId, const char* label, unsigned int line,
                         const char* format, va_list args)
{
    m_pSink->write(spdlog::level::debug, messageId, label, line, format, args);
}

void CKELDebugKit::warn(unsigned long long messageId, const char* label, unsigned int line,
                        const char* format, va_list args)
{
    m_pSink->write(spdlog::level::warn, messageId, label, line, format, args);
}

void CKELDebugKit::error(unsigned long long messageId, const char* label, unsigned int line,
                         const char* format, va_list args)
{
    m_pSink->write(spdlog::level::err, messageId, label, line, format, args);
}
