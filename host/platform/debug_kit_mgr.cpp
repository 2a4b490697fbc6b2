#include "platform/debug_kit_mgr.h"

#include "platform/debug_kit.h"

#include <map>
#include <mutex>

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
