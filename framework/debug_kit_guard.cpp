#include "framework/debug_kit_guard.h"

#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"

#include <ace/Singleton.h>
#include <ace/Thread_Mutex.h>

#include <cstdarg>
#include <cstddef>
#include <new>
#include <string_view>

// Contract: both singletons are carried and exported, so that host and module agree on one manager
// a process whichever of them instantiates it first.
template class __attribute__((visibility("default")))
ACE_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;
template class __attribute__((visibility("default")))
ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;

namespace {

constexpr std::string_view kEnter = "enter ";
constexpr std::string_view kEnterEnd = "...";
constexpr std::string_view kLeave = "leave ";
constexpr std::string_view kLeaveOk = ": OK";
constexpr std::string_view kLeaveNotOk = ": NOK";
constexpr std::size_t kLongestFrame = kLeave.size() + kLeaveNotOk.size();
static_assert(kEnter.size() + kEnterEnd.size() <= kLongestFrame);

CKELDebugKit* kitOf(int moduleId)
{
    auto* manager = ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>::instance();
    if (manager == nullptr) {  // the singleton answers so when memory is out
        throw std::bad_alloc();
    }
    return manager->find(static_cast<unsigned int>(moduleId));
}

}  // namespace

// Guards open for each row and each definition. Both lines are therefore made around the name, in
// room that is taken once.
CKELDebugKitGuard::CKELDebugKitGuard(int moduleId, const std::string& functionName)
    : m_pKit(kitOf(moduleId)),
      m_iOutcome(1)
{
    m_sFunctionName.reserve(functionName.size() + kLongestFrame);
    m_sFunctionName.append(kEnter).append(functionName).append(kEnterEnd);
    m_pKit->trace(m_sFunctionName);
    m_sFunctionName.erase(0, kEnter.size()).resize(functionName.size());
}

CKELDebugKitGuard::~CKELDebugKitGuard()
{
    try {
        m_sFunctionName.insert(0, kLeave).append(m_iOutcome != 0 ? kLeaveOk : kLeaveNotOk);
        m_pKit->trace(m_sFunctionName);
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
