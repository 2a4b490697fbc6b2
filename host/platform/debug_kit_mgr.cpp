#include "platform/debug_kit_mgr.h"

#include "host/platform/debug_kits.h"
#include "platform/debug_kit.h"

#include <ace/Singleton.h>
#include <ace/Thread_Mutex.h>

#include <map>
#include <mutex>

// The process's one manager, for every module that the host loads: the dynamic linker prefers the
// program's instance to a module's own.
template class __attribute__((visibility("default")))
ACE_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;
template class __attribute__((visibility("default")))
ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;

class CKELDebugKitMgr::Registry {
public:
    CKELDebugKit* find(unsigned int moduleId)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return &kits_.try_emplace(moduleId, moduleId).first->second;
    }

private:
    std::mutex mutex_;
    std::map<unsigned int, CKELDebugKit> kits_;  // guarded by mutex_
};

CKELDebugKitMgr::CKELDebugKitMgr() : m_pRegistry(new Registry) {}

CKELDebugKitMgr::~CKELDebugKitMgr()
{
    delete m_pRegistry;
}

CKELDebugKit* CKELDebugKitMgr::find(unsigned int moduleId)
{
    return m_pRegistry->find(moduleId);
}

void talvik::makeDebugKits()
{
    ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>::instance();
}
