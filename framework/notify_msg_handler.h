#pragma once

#include <list>
#include <map>
#include <string>

class CTLVRecordV3;
struct tTrapDestInfo;

namespace Agentpp {
class Oidx;
class Vbx;
}  // namespace Agentpp

/// Turns one alarm record of the back end into the content of one trap. The host's dispatcher owns
/// the handlers and calls each for one record at a time. The order of the virtual operations is
/// binary contract.
class INotifyMsgHandler {
public:
    virtual ~INotifyMsgHandler() = default;

    /// Builds the bindings for `record`. On 0 `vbs` is a new array of `getTrapVbLen()` elements
    /// that the caller frees with array `delete`; any other result means that this handler sends no
    /// trap for the record.
    virtual int constructAlarmTrapVb(const CTLVRecordV3& record, Agentpp::Vbx*& vbs) = 0;

    /// The trap's OID; the reference holds until the next call on the same handler.
    virtual Agentpp::Oidx& getTrapOid(unsigned long long alarmId, unsigned short arg) = 0;

    /// The OID that the bindings hang under; lives as long as the process.
    virtual Agentpp::Oidx& getBaseOid() = 0;

    /// True if times go out as DateAndTime octets, false if as display text.
    virtual bool useDateAndTime() { return true; }

    /// Number of bindings that `constructAlarmTrapVb` makes.
    virtual int getTrapVbLen() = 0;

    /// Appends to `chosen` a copy of each destination that receives this handler's traps, in the
    /// map's key order.
    virtual void filterTrapMap(const std::map<std::string, tTrapDestInfo>& all,
                               std::list<tTrapDestInfo>& chosen) = 0;

protected:
    INotifyMsgHandler() = default;
    INotifyMsgHandler(const INotifyMsgHandler&) = default;
    INotifyMsgHandler& operator=(const INotifyMsgHandler&) = default;
};
