#include "fuzz/properties/trap_host.h"

#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"
#include "platform/memcpy_s.h"
#include "platform/snmp_util.h"
#include "platform/trap_api.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace talvik::fuzz {

TrapHost& trapHost()
{
    static TrapHost host;
    return host;
}

namespace {

__attribute__((format(printf, 3, 0))) void keep(unsigned long long code, const char* label,
                                                const char* format, va_list args)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    trapHost().lines.push_back({code, label, text});
}

}  // namespace

}  // namespace talvik::fuzz

using talvik::fuzz::trapHost;

class CKELDebugKit::Sink {};

CKELDebugKit::CKELDebugKit(unsigned int) : m_pSink(new Sink) {}

CKELDebugKit::~CKELDebugKit()
{
    delete m_pSink;
}

void CKELDebugKit::trace(const std::string& text)
{
    trapHost().guards += text.rfind("enter ", 0) == 0 ? 1 : -1;
}

void CKELDebugKit::debug(unsigned long long messageId, const char* label, unsigned int,
                         const char* format, va_list args)
{
    talvik::fuzz::keep(messageId, label, format, args);
}

void CKELDebugKit::warn(unsigned long long messageId, const char* label, unsigned int,
                        const char* format, va_list args)
{
    talvik::fuzz::keep(messageId, label, format, args);
}

void CKELDebugKit::error(unsigned long long messageId, const char* label, unsigned int,
                         const char* format, va_list args)
{
    talvik::fuzz::keep(messageId, label, format, args);
}

class CKELDebugKitMgr::Registry {
public:
    CKELDebugKit kit{4};
};

CKELDebugKitMgr::CKELDebugKitMgr() : m_pRegistry(new Registry) {}

CKELDebugKitMgr::~CKELDebugKitMgr()
{
    delete m_pRegistry;
}

CKELDebugKit* CKELDebugKitMgr::find(unsigned int)
{
    return &m_pRegistry->kit;
}

int CSNMP_TrapApi::getAllTrapAddr(std::list<tTrapDestInfo>& destinations)
{
    const auto& rows = trapHost().list.rows;
    destinations.insert(destinations.end(), rows.begin(), rows.end());
    return trapHost().listReadable ? 0 : 1;
}

int CSNMP_TrapApi::createTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return trapHost().list.create(destination, uiWord3);
}

int CSNMP_TrapApi::modifyTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return trapHost().list.modify(destination, uiWord3);
}

int CSNMP_TrapApi::deleteTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return trapHost().list.remove(destination, uiWord3);
}

bool SnmpUtil::CheckIPAddrOK(std::string address)
{
    return talvik::fuzz::isAddressAccepted(address);
}

bool SnmpUtil::CheckTrapIndOK(tTrapDestInfo& destination)
{
    return talvik::fuzz::isIndexAccepted(destination.index);
}

bool SnmpUtil::CheckTrapPortOK(tTrapDestInfo& destination)
{
    return talvik::fuzz::isPortAccepted(destination.port);
}

bool SnmpUtil::CheckTrapVerOK(tTrapDestInfo& destination)
{
    return talvik::fuzz::isVersionAccepted(destination.version);
}

bool SnmpUtil::CheckTrapTypeOK(tTrapDestInfo& destination)
{
    return talvik::fuzz::isTypeAccepted(destination.type);
}

bool SnmpUtil::CheckTrapUserOK(tTrapDestInfo& destination)
{
    return talvik::fuzz::isUserAccepted(destination.user);
}

bool SnmpUtil::TestDomainConnectivity(const char* address)
{
    return talvik::fuzz::isReachable(address);
}

extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    if (dest == nullptr || src == nullptr || count > destSize) {
        return EINVAL;
    }
    std::memcpy(dest, src, count);
    return 0;
}
