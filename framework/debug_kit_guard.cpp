#include "framework/debug_kit_guard.h"

#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"

#include <ace/Singleton.h>
#include <ace/Thread_Mutex.h>

#include <cstdarg>
#include <new>

// Contract: both singletons are carried and exported, so that host and module agree on one manager
// a process whichever of them instantiates it first.
template class __attribute__((visibility("default")))
ACE_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;
template class __attribute__((visibility("default")))
ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;

namespace {

CKELDebugKit* kitOf(int moduleId)
{
    auto* manager = ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>::instance();
    if (manager == nullptr) {  // the singleton answers so when memory is out
        throw std::bad_alloc();
    }
    return manager->find(static_cast<unsigned int>(moduleId));
}

}  // namespace

CKELDebugKitGuard::CKELDebugKitGuard(int moduleId, const std::string& functionName)
    : m_pKit(kitOf(moduleId)),
      m_sFunctionName(functionName),
      m_iOutcome(1)
{
    m_pKit->trace("enter " + m_sFunctionName + "...");
}

CKELDebugKitGuard::~CKELDebugKitGuard()
{
    try {
        m_pKit->trace("leave " + m_sFunctionName + ": " + (m_iOutcome != 0 ? "OK" : "NOK"));
    } catch (...) {
        // Nothing may leave a destructor that also runs while an exception passes; the line is
        // lost.
    }
}

void CKELDebugKitGuard::debug(unsigned long long messageId, const char* label, unsigned int line,
                              const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_pKit->debug(messageId, label, line, format, args);
    va_end(args);
}

void CKELDebugKitGuard::warn(unsigned long long messageId, const char* label, unsigned int line,
                             const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_pKit->warn(messageId, label, line, format, args);
    va_end(args);
}

void CKELDebugKitGuard::error(unsigned long long messageId, const char* label, unsigned int line,
                              const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_pKit->error(messageId, label, line, format, args);
    va_end(args);
}
