#pragma once

class CKELDebugKit;

/// The host's registry of debug kits, one a module id.
///
/// Host and module share the one instance of the process,
/// `ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>::instance()`, which constructs it on
/// first use under the singleton's mutex and never destroys it. Size and constructor are therefore
/// binary contract.
class __attribute__((visibility("default"))) CKELDebugKitMgr {
public:
    CKELDebugKitMgr();
    ~CKELDebugKitMgr();

    /// The kit of a module id. Callers use the result without a null test, so it is never null,
    /// also for an id that was not seen before; it lives as long as the manager. Callable from any
    /// thread.
    CKELDebugKit* find(unsigned int moduleId);

private:
    CKELDebugKitMgr(const CKELDebugKitMgr&) = delete;
    CKELDebugKitMgr& operator=(const CKELDebugKitMgr&) = delete;

    class Registry;
    Registry* m_pRegistry;
};
