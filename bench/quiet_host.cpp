#include "bench/quiet_host.h"

#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"
#include "platform/device_config.h"
#include "platform/installation_root.h"
#include "platform/memcpy_s.h"
#include "platform/number_text.h"
#include "platform/snmp_util.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

namespace {

std::string& folder()
{
    static std::string path;
    return path;
}

}  // namespace

void talvik::bench::setCatalogueFolder(const std::string& path)
{
    folder() = path;
}

class CKELDebugKit::Sink {};

CKELDebugKit::CKELDebugKit(unsigned int) : m_pSink(nullptr) {}
CKELDebugKit::~CKELDebugKit() = default;
void CKELDebugKit::trace(const std::string&) {}
void CKELDebugKit::debug(unsigned long long, const char*, unsigned int, const char*, va_list) {}
void CKELDebugKit::warn(unsigned long long, const char*, unsigned int, const char*, va_list) {}
void CKELDebugKit::error(unsigned long long, const char*, unsigned int, const char*, va_list) {}

class CKELDebugKitMgr::Registry {};

CKELDebugKitMgr::CKELDebugKitMgr() : m_pRegistry(nullptr) {}
CKELDebugKitMgr::~CKELDebugKitMgr() = default;

CKELDebugKit* CKELDebugKitMgr::find(unsigned int moduleId)
{
    static CKELDebugKit kit(moduleId);
    return &kit;
}

CKELXmlConfig::CKELXmlConfig() = default;
CKELXmlConfig::~CKELXmlConfig() = default;

CKELXmlConfig* CKELXmlConfig::instance()
{
    static CKELXmlConfig config;
    return &config;
}

int CKELXmlConfig::getDeviceItem(const std::string&, const std::string& key, std::string& value)
{
    value = key == "ALARM_INI_PATH" ? "definitions.json" : "enumerations.json";
    return 0;
}

std::string KEL_Utility::getKELRootEnv()
{
    return folder();
}

unsigned int KelUtility::StrToUint(std::string text)
{
    unsigned int number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    return end.ec == std::errc::result_out_of_range ? std::numeric_limits<unsigned int>::max()
                                                    : number;
}

void SnmpUtil::SplitToStr(std::string text, char separator, std::vector<std::string>& fields)
{
    std::size_t start = 0;
    for (auto at = text.find(separator); at != std::string::npos;
         at = text.find(separator, start)) {
        fields.push_back(text.substr(start, at - start));
        start = at + 1;
    }
    fields.push_back(text.substr(start));
}

extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    if (dest == nullptr || src == nullptr || count > destSize) {
        return EINVAL;
    }
    std::memcpy(dest, src, count);
    return 0;
}
