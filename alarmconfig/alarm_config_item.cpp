#include "alarmconfig/alarm_config_item.h"

CAlarmConfigItem::CAlarmConfigItem(unsigned long long ullId, unsigned int uiId, const char* pName,
                                   const char* pReason, const char* pSuggestion,
                                   const char* pDetail, const char* pLocation,
                                   const char* pAlarmOid)
    : eventId(ullId),
      eventIdLow32(uiId),
      name(pName),
      reason(pReason),
      suggestion(pSuggestion),
      detail(pDetail),
      location(pLocation),
      alarmOid(pAlarmOid)
{
}
