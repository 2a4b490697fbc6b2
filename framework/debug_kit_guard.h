#pragma once

#include <string>

class CKELDebugKit;

/// Scoped log writer of one traced call: a line on entry, leveled lines while it lives, a line with
/// the outcome on exit, also when an exception passes. Lives on the stack of the traced function;
/// not shared between threads.
class CKELDebugKitGuard {
public:
    /// Looks up the kit of `moduleId` and traces "enter FUNCTION...".
    CKELDebugKitGuard(int moduleId, const std::string& functionName);

    /// Traces "leave FUNCTION: OK", or "NOK" once `setOutcome(false)` was called. Throws nothing.
    ~CKELDebugKitGuard();

    CKELDebugKitGuard(const CKELDebugKitGuard&) = delete;
    CKELDebugKitGuard& operator=(const CKELDebugKitGuard&) = delete;

    /// One line at the level named: the caller's number for the message, a label (often the step or
    /// the function), the source line and a printf-style text. All of it goes to the kit unchanged.
    void debug(unsigned long long messageId, const char* label, unsigned int line,
               const char* format, ...) __attribute__((format(printf, 5, 6)));
    void warn(unsigned long long messageId, const char* label, unsigned int line,
              const char* format, ...) __attribute__((format(printf, 5, 6)));
    void error(unsigned long long messageId, const char* label, unsigned int line,
               const char* format, ...) __attribute__((format(printf, 5, 6)));

    /// Chooses what the leave line reports.
    void setOutcome(bool ok) { m_iOutcome = ok ? 1 : 0; }

private:
    CKELDebugKit* m_pKit;
    std::string m_sFunctionName;
    int m_iOutcome;
};
