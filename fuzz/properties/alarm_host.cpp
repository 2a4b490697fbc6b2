#include "fuzz/properties/alarm_host.h"

#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"
#include "platform/device_config.h"
#include "platform/installation_root.h"
#include "platform/memcpy_s.h"
#include "platform/number_text.h"
#include "platform/snmp_util.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace talvik::fuzz {

namespace {

[[noreturn]] void giveUp(const char* action)
{
    std::fprintf(stderr, "cannot %s the file of a catalogue in memory: %s\n", action,
                 std::strerror(errno));
    std::abort();
}

}  // namespace

MemoryFile::MemoryFile(const char* name) : file_(memfd_create(name, MFD_CLOEXEC))
{
    if (file_ < 0) {
        giveUp("make");
    }
}

MemoryFile::~MemoryFile()
{
    close(file_);
}

void MemoryFile::write(const std::string& text)
{
    if (ftruncate(file_, 0) != 0 ||
        pwrite(file_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        giveUp("write");
    }
}

AlarmHost& alarmHost()
{
    static AlarmHost host;
    return host;
}

namespace {

__attribute__((format(printf, 3, 0))) void keep(const char* level, unsigned long long code,
                                                const char* format, va_list args)
{
    va_list again;
    va_copy(again, args);
    std::string text(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, format, again)) + 1, '\0');
    va_end(again);
    std::vsnprintf(text.data(), text.size(), format, args);
    text.pop_back();
    alarmHost().lines.push_back({level, code, text});
}

}  // namespace

}  // namespace talvik::fuzz

using talvik::fuzz::alarmHost;

class CKELDebugKit::Sink {};

CKELDebugKit::CKELDebugKit(unsigned int) : m_pSink(new Sink) {}

CKELDebugKit::~CKELDebugKit()
{
    delete m_pSink;
}

void CKELDebugKit::trace(const std::string& text)
{
    alarmHost().guards += text.rfind("enter ", 0) == 0 ? 1 : -1;
}

void CKELDebugKit::debug(unsigned long long messageId, const char*, unsigned int,
                         const char* format, va_list args)
{
    talvik::fuzz::keep("debug", messageId, format, args);
}

void CKELDebugKit::warn(unsigned long long messageId, const char*, unsigned int, const char* format,
                        va_list args)
{
    talvik::fuzz::keep("warn", messageId, format, args);
}

void CKELDebugKit::error(unsigned long long messageId, const char*, unsigned int,
                         const char* format, va_list args)
{
    talvik::fuzz::keep("error", messageId, format, args);
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

CKELXmlConfig::CKELXmlConfig() = default;
CKELXmlConfig::~CKELXmlConfig() = default;

CKELXmlConfig* CKELXmlConfig::instance()
{
    static CKELXmlConfig config;
    return &config;
}

int CKELXmlConfig::getDeviceItem(const std::string&, const std::string& key, std::string& value)
{
    value = (key == "ALARM_INI_PATH" ? alarmHost().definitions : alarmHost().literals).name();
    return 0;
}

std::string KEL_Utility::getKELRootEnv()
{
    return "/proc/self/fd";
}

unsigned int KelUtility::StrToUint(std::string text)
{
    return static_cast<unsigned>(
        std::strtoul(text.substr(0, text.find_first_not_of("0123456789")).c_str(), nullptr, 10));
}

void SnmpUtil::SplitToStr(std::string text, char separator, std::vector<std::string>& fields)
{
    for (auto end = text.find(separator); end != std::string::npos; end = text.find(separator)) {
        fields.push_back(text.substr(0, end));
        text.erase(0, end + 1);
    }
    fields.push_back(text);
}

extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    if (dest == nullptr || src == nullptr || count > destSize) {
        return EINVAL;
    }
    std::memcpy(dest, src, count);
    return 0;
}
