#include "notify/alarm_repository.h"

#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"

#include <ace/Guard_T.h>

#include <algorithm>
#include <string>

namespace {

using Lock = ACE_Guard<ACE_Thread_Mutex>;  // unlocks only what it could lock

namespace code = talvik::log_code;
namespace result = talvik::result_code;

constexpr u_int kNoSerial = 0;

}  // namespace

std::atomic<CAlarmRepository_Singleton*> CAlarmRepository_Singleton::m_AlarmRep{nullptr};
ACE_Thread_Mutex CAlarmRepository_Singleton::m_oMutex;

namespace {

/// Takes the repository along when this image is unloaded or the process ends. It stands behind the
/// mutex, so that the list never outlives what guards it.
struct LastUse {
    ~LastUse() { delete CAlarmRepository_Singleton::m_AlarmRep.exchange(nullptr); }
};

const LastUse lastUse;

}  // namespace

CAlarmRepository_Singleton* CAlarmRepository_Singleton::getAlarmRepository()
{
    static const std::string signature = __PRETTY_FUNCTION__;
    const CKELDebugKitGuard guard(talvik::kLogModule, signature);
    if (m_AlarmRep.load(std::memory_order_acquire) == nullptr) {
        const Lock lock(m_oMutex);
        if (m_AlarmRep.load(std::memory_order_relaxed) == nullptr) {
            m_AlarmRep.store(new CAlarmRepository_Singleton, std::memory_order_release);
        }
    }
    return m_AlarmRep.load(std::memory_order_acquire);
}

int CAlarmRepository_Singleton::addAlarm(u_int uiSerialNo)
{
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    const Lock lock(m_oMutex);
    if (uiSerialNo == kNoSerial) {
        // Contract: refused in silence, unlike a duplicate; back ends report alarms without one.
        return result::kFailed;
    }
    if (std::find(m_oSerialNos.begin(), m_oSerialNos.end(), uiSerialNo) != m_oSerialNos.end()) {
        // Contract: "has existed" here and "not existed" below; log filters match on both.
        guard.warn(code::kRepository, "addAlarm", __LINE__, "alarm with serial num %u has existed.",
                   uiSerialNo);
        return result::kFailed;
    }
    m_oSerialNos.push_back(uiSerialNo);
    return result::kSuccess;
}

int CAlarmRepository_Singleton::deleteAlarm(u_int uiSerialNo)
{
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    const Lock lock(m_oMutex);
    const auto place = std::find(m_oSerialNos.begin(), m_oSerialNos.end(), uiSerialNo);
    if (place == m_oSerialNos.end()) {
        guard.error(code::kRepository, "deleteAlarm", __LINE__,
                    "alarm with serial num %u not existed.", uiSerialNo);
        return result::kFailed;
    }
    m_oSerialNos.erase(place);
    return result::kSuccess;
}

int CAlarmRepository_Singleton::getAllAlarmItems(SERIALNO_LIST& oItems)
{
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    const Lock lock(m_oMutex);
    if (getAlarmRepositorySize() == 0) {
        guard.error(code::kRepository, "getAllAlarmItems", __LINE__, "alarm repository is empty.");
        return result::kFailed;
    }
    oItems.clear();
    oItems.insert(oItems.end(), m_oSerialNos.begin(), m_oSerialNos.end());
    return result::kSuccess;
}

int CAlarmRepository_Singleton::clearAllAlarmItems()
{
    static const std::string signature = __PRETTY_FUNCTION__;
    const CKELDebugKitGuard guard(talvik::kLogModule, signature);
    const Lock lock(m_oMutex);
    m_oSerialNos.clear();
    return result::kSuccess;
}

// Contract: without the mutex, which is not recursive; getAllAlarmItems calls this while it holds
// it, and hosts ask for the size from threads that must not wait.
u_int CAlarmRepository_Singleton::getAlarmRepositorySize()
{
    static const std::string signature = __PRETTY_FUNCTION__;
    const CKELDebugKitGuard guard(talvik::kLogModule, signature);
    return static_cast<u_int>(m_oSerialNos.size());
}
