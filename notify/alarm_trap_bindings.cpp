#include "notify/alarm_trap_bindings.h"

#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "notify/talvik_notify_msg_handler.h"
#include "platform/basic_info.h"

#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace {

using talvik::Binding;
using talvik::kBindingCount;

// Contract: managers tell events from the rest by FaultType, which has one number for faults and
// clears; FaultCategory tells all three apart.
constexpr std::int32_t kFaultOrClear = 2;
constexpr std::int32_t kEvent = 3;

constexpr std::size_t kLabelLength = 32;

/// What stands before each binding's value in the log, in the order of the bindings.
constexpr std::string_view kLabels[] = {
    "ReportingAlarmNodeCode      --- ", "ReportingAlarmLocationInfo  --- ",
    "ReportingAlarmRestoreAdvice --- ", "ReportingAlarmFaultTitle    --- ",
    "ReportingAlarmFaultType     --- ", "ReportingAlarmFaultLevel    --- ",
    "ReportingAlarmAlarmID       --- ", "ReportingAlarmFaultTime     --- ",
    "ReportingAlarmSerialNo      --- ", "ReportingAlarmAdditionInfo  --- ",
    "ReportingAlarmFaultCategory --- ", "ReportingAlarmLocationAlmID --- ",
    "ReportingAlarmProductModel  --- ", "ReportingAlarmProductSN     --- ",
};

constexpr bool labelsAreAligned()
{
    for (const auto label : kLabels) {
        if (label.size() != kLabelLength) {
            return false;
        }
    }
    return true;
}

static_assert(std::size(kLabels) == kBindingCount && labelsAreAligned());

constexpr unsigned indexOf(Binding binding)
{
    return static_cast<unsigned>(binding) - 1;
}

static_assert(indexOf(Binding::ProductSn) == kBindingCount - 1);

Snmp_pp::OctetStr octetsOf(const std::string& text)
{
    return {reinterpret_cast<const unsigned char*>(text.data()),
            static_cast<std::uint32_t>(text.size())};
}

/// Sets bindings below one base OID; the OID of binding N is the base, N and 0.
class BindingWriter {
public:
    BindingWriter(Agentpp::Vbx* vbs, const char** summary, const Snmp_pp::Oid& base)
        : vbs_(vbs),
          summary_(summary),
          oid_(base)
    {
        oid_ += Snmp_pp::SmiUINT32{0};
        oid_ += Snmp_pp::SmiUINT32{0};
    }

    /// Sets the binding and has its summary slot show the value.
    template <typename Value>
    void set(Binding binding, Value&& value)
    {
        const Agentpp::Vbx& vb = setValue(binding, std::forward<Value>(value));
        summary_[indexOf(binding)] = vb.get_printable_value();
    }

    /// Sets the binding and has its summary slot show `text`.
    void set(Binding binding, const Snmp_pp::OctetStr& value, const char* text)
    {
        setValue(binding, value);
        summary_[indexOf(binding)] = text;
    }

private:
    template <typename Value>
    Agentpp::Vbx& setValue(Binding binding, Value&& value)
    {
        Agentpp::Vbx& vb = vbs_[indexOf(binding)];
        oid_[oid_.len() - 2] = static_cast<unsigned>(binding);
        vb.set_oid(oid_);
        vb.set_value(std::forward<Value>(value));
        return vb;
    }

    Agentpp::Vbx* vbs_;
    const char** summary_;
    Snmp_pp::Oid oid_;
};

}  // namespace

void CTalvikNotifyMsgHandler::fileAlarmTrapVbNodecode(Agentpp::Vbx*& vbs, const char** summary,
                                                      Snmp_pp::Oid& base, std::string& location,
                                                      std::string& suggestion)
{
    BindingWriter bindings(vbs, summary, base);
    bindings.set(Binding::NodeCode, Snmp_pp::OctetStr(CSNMPBasicImpl::getNodeCode()));
    bindings.set(Binding::LocationInfo, octetsOf(location));
    bindings.set(Binding::RestoreAdvice, octetsOf(suggestion));
}

void CTalvikNotifyMsgHandler::fileAlarmTrapVbTitle(Agentpp::Vbx*& vbs, const char** summary,
                                                   Snmp_pp::Oid& base, std::string& title,
                                                   unsigned int level)
{
    BindingWriter bindings(vbs, summary, base);
    bindings.set(Binding::FaultTitle, octetsOf(title));
    bindings.set(Binding::FaultLevel, Snmp_pp::SnmpInt32(static_cast<std::int32_t>(level)));
}

void CTalvikNotifyMsgHandler::fileAlarmTrapVbAlarmId(Agentpp::Vbx*& vbs, const char** summary,
                                                     Snmp_pp::Oid& base, unsigned int alarmId32)
{
    BindingWriter bindings(vbs, summary, base);
    bindings.set(Binding::AlarmId, Snmp_pp::Gauge32(alarmId32));
}

void CTalvikNotifyMsgHandler::fileAlarmTrapVbTime(Agentpp::Vbx*& vbs, const char** summary,
                                                  Snmp_pp::Oid& base, Snmp_pp::OctetStr& value,
                                                  Snmp_pp::OctetStr& text)
{
    BindingWriter bindings(vbs, summary, base);
    // Contract: the log shows readable time whatever the binding carries; log viewers read it.
    bindings.set(Binding::FaultTime, value, text.get_printable());
}

void CTalvikNotifyMsgHandler::fileAlarmTrapVbAddition(Agentpp::Vbx*& vbs, const char** summary,
                                                      Snmp_pp::Oid& base, unsigned int serial,
                                                      std::string& detail)
{
    BindingWriter bindings(vbs, summary, base);
    bindings.set(Binding::SerialNo, Snmp_pp::Gauge32(serial));
    bindings.set(Binding::AdditionInfo, octetsOf(detail));
}

void CTalvikNotifyMsgHandler::fileAlarmTrapVbAlarmCate(Agentpp::Vbx*& vbs, const char** summary,
                                                       Snmp_pp::Oid& base, unsigned int category,
                                                       unsigned long long alarmId)
{
    const auto high = static_cast<std::uint32_t>(alarmId >> 32U);
    const auto low = static_cast<std::uint32_t>(alarmId);
    const bool isEvent = category == talvik::alarm_category::kEvent;

    BindingWriter bindings(vbs, summary, base);
    bindings.set(Binding::FaultCategory, Snmp_pp::SnmpInt32(static_cast<std::int32_t>(category)));
    bindings.set(Binding::FaultType, Snmp_pp::SnmpInt32(isEvent ? kEvent : kFaultOrClear));
    bindings.set(Binding::LocationAlmId, Snmp_pp::Counter64(high, low));
    bindings.set(Binding::ProductModel, Snmp_pp::SnmpInt32(CSNMPBasicImpl::device_type));
    bindings.set(Binding::ProductSn, octetsOf(CSNMPBasicImpl::product_sn));
}

void CTalvikNotifyMsgHandler::dump_alarm_info(const char** summary)
{
    static const std::string signature = __PRETTY_FUNCTION__;
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    constexpr std::string_view kTitle = "the content of alarm is \n";
    std::string_view values[kBindingCount];
    std::size_t size = kTitle.size();
    for (unsigned i = 0; i < kBindingCount; ++i) {
        if (summary[i] == nullptr) {
            summary[i] = "Unknown";
        }
        values[i] = summary[i];
        size += kLabelLength + values[i].size() + 1;
    }
    std::string text;
    text.reserve(size);
    text += kTitle;
    for (unsigned i = 0; i < kBindingCount; ++i) {
        text.append(kLabels[i]).append(values[i]) += '\n';
    }
    // Contract: a warning, though nothing is wrong; hosts keep their record of sent alarms by it.
    guard.warn(talvik::log_code::kHandler, "dump_alarm_info", __LINE__, "%s", text.c_str());
}
