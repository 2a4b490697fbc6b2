#pragma once

#include <cstdarg>
#include <string>

/// The host's log of one module id. The module reaches it through `CKELDebugKitMgr::find`, never
/// makes one, and keeps the pointer for the length of one traced call.
///
/// All operations may be called from any thread and must not throw for want of a log file: a log
/// that cannot be written is the host's to report.
class CKELDebugKit {
public:
    /// The kit of one module id; the manager makes it.
    explicit CKELDebugKit(unsigned int moduleId);
    ~CKELDebugKit();

    /// Writes one trace line, the text as it stands.
    void trace(const std::string& text);

    /// Formats `format` with `args` in the manner of printf and writes one line at the level named,
    /// tagged with the message identifier, label and source line. `args` is consumed (the caller
    /// ends it).
    void debug(unsigned long long messageId, const char* label, unsigned int line,
               const char* format, va_list args) __attribute__((format(printf, 5, 0)));
    void warn(unsigned long long messageId, const char* label, unsigned int line,
              const char* format, va_list args) __attribute__((format(printf, 5, 0)));
    void error(unsigned long long messageId, const char* label, unsigned int line,
               const char* format, va_list args) __attribute__((format(printf, 5, 0)));

private:
    CKELDebugKit(const CKELDebugKit&) = delete;
    CKELDebugKit& operator=(const CKELDebugKit&) = delete;

    class Sink;
    Sink* m_pSink;
};
