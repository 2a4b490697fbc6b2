// The linker sends calls of these operations here first (see wrapped_calls.cmake): they are
// recorded, fail when the test says so, and otherwise go on to the real ones.

#include "framework/tlv_cell.h"
#include "framework/tlv_record.h"
#include "notify/alarm_repository.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_notify_host.h"

extern "C" {

int __real__ZN8CTLVCell5set_iENS_8ETLVTypeEtPKvm(CTLVCell* self, CTLVCell::ETLVType type,
                                                 unsigned short tag, const void* data,
                                                 unsigned long len);
int __real__ZN8CTLVCell7setCellEtPKcm(CTLVCell* self, unsigned short tagWord, const char* data,
                                      unsigned long len);
void __real__ZN12CTLVRecordV36appendEPK8CTLVCell(CTLVRecordV3* self, const CTLVCell* cell);
void __real__ZN12CTLVRecordV35clearEv(CTLVRecordV3* self);
CAlarmRepository_Singleton* __real__ZN26CAlarmRepository_Singleton18getAlarmRepositoryEv();

int __wrap__ZN8CTLVCell5set_iENS_8ETLVTypeEtPKvm(CTLVCell* self, CTLVCell::ETLVType type,
                                                 unsigned short tag, const void* data,
                                                 unsigned long len)
{
    talvik::test::fakeHost().enter("set_i");
    return __real__ZN8CTLVCell5set_iENS_8ETLVTypeEtPKvm(self, type, tag, data, len);
}

int __wrap__ZN8CTLVCell7setCellEtPKcm(CTLVCell* self, unsigned short tagWord, const char* data,
                                      unsigned long len)
{
    talvik::test::fakeHost().enter("setCell");
    return __real__ZN8CTLVCell7setCellEtPKcm(self, tagWord, data, len);
}

void __wrap__ZN12CTLVRecordV36appendEPK8CTLVCell(CTLVRecordV3* self, const CTLVCell* cell)
{
    talvik::test::fakeHost().enter("append");
    __real__ZN12CTLVRecordV36appendEPK8CTLVCell(self, cell);
}

// Not recorded: every record's destruction comes here, also where allocations are counted.
void __wrap__ZN12CTLVRecordV35clearEv(CTLVRecordV3* self)
{
    talvik::test::fakeHost().act("clear");
    __real__ZN12CTLVRecordV35clearEv(self);
}

CAlarmRepository_Singleton* __wrap__ZN26CAlarmRepository_Singleton18getAlarmRepositoryEv()
{
    return talvik::test::fakeNotifyHost().withoutRepository
               ? nullptr
               : __real__ZN26CAlarmRepository_Singleton18getAlarmRepositoryEv();
}

}  // extern "C"
