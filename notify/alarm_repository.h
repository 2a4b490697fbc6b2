#pragma once

#include <ace/Thread_Mutex.h>

#include <atomic>
#include <list>

#include <sys/types.h>

/// Serial numbers of alarms, in the order in which the alarms were raised.
using SERIALNO_LIST = std::list<u_int>;

/// The serial numbers of the alarms that are raised at present, each once and none of them 0. One
/// for the process, made at its first use and freed with the image that holds it, at the unload or
/// at the end of the process; nothing limits its size.
///
/// Any thread may call any operation. All but the size are serialised by `m_oMutex`; when it cannot
/// be taken, they work without it. An allocation failure passes and leaves the list as it was.
// Contract: every member is public; hosts that were compiled elsewhere reach them all.
class CAlarmRepository_Singleton {
public:
    /// The repository; never null.
    static CAlarmRepository_Singleton* getAlarmRepository();

    /// Appends `uiSerialNo`: 0, or -1 with the list unchanged when it is 0 or there already.
    int addAlarm(u_int uiSerialNo);

    /// Removes `uiSerialNo`: 0, or -1 when it is not there.
    int deleteAlarm(u_int uiSerialNo);

    /// Replaces what `oItems` holds by all serial numbers: 0, or -1 with `oItems` untouched when
    /// there are none.
    int getAllAlarmItems(SERIALNO_LIST& oItems);

    /// Removes every serial number; returns 0.
    int clearAllAlarmItems();

    /// The number of serial numbers. A thread that calls it while another one changes the list may
    /// get a number that is no longer true.
    u_int getAlarmRepositorySize();

    SERIALNO_LIST m_oSerialNos;  ///< under `m_oMutex`, but for the reading of its size

    /// Written under `m_oMutex`.
    // Contract: read without it first; notifications ask for the repository one by one.
    static std::atomic<CAlarmRepository_Singleton*> m_AlarmRep;
    static ACE_Thread_Mutex m_oMutex;
};
