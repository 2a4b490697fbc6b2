#include "tests/support/fake_notify_host.h"

#include "framework/notify_msg_handler.h"
#include "platform/basic_info.h"
#include "platform/notify_handler.h"
#include "platform/time_conversion.h"
#include "tests/support/fake_host.h"

#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

namespace talvik::test {

void FakeNotifyHost::reset()
{
    auto& handlers = CNotifyHandler::instance()->handlers();
    for (const auto* handler : handlers) {
        delete handler;
    }
    handlers.clear();
    CSNMPBasicImpl::device_type = 812;
    CSNMPBasicImpl::product_sn = "SN-21023";
    *this = FakeNotifyHost();
}

FakeNotifyHost& fakeNotifyHost()
{
    static FakeNotifyHost host;
    return host;
}

std::string octetsOfTime(long seconds)
{
    std::string octets = "\x07\xEA";
    for (int shift = 56; shift >= 0; shift -= 8) {
        octets += static_cast<char>(seconds >> shift);
    }
    return octets;
}

std::string textOfTime(long seconds)
{
    return "second " + std::to_string(seconds);
}

}  // namespace talvik::test

CNotifyHandler::CNotifyHandler() = default;
CNotifyHandler::~CNotifyHandler() = default;

CNotifyHandler* CNotifyHandler::instance()
{
    static CNotifyHandler dispatcher;
    return &dispatcher;
}

int CSNMPBasicImpl::device_type = 812;
std::string CSNMPBasicImpl::product_sn = "SN-21023";

void CSnmpUtil::convertTime2DateTime(Snmp_pp::OctetStr& octets, long seconds)
{
    talvik::test::fakeHost().enter("convertTime2DateTime");
    const std::string made = talvik::test::octetsOfTime(seconds);
    octets.set_data(reinterpret_cast<const unsigned char*>(made.data()),
                    static_cast<unsigned>(made.size()));
}

void CSnmpUtil::convertTime2DateTimeStr(Snmp_pp::OctetStr& octets, long seconds)
{
    talvik::test::fakeHost().enter("convertTime2DateTimeStr");
    octets = talvik::test::textOfTime(seconds).c_str();
}
