#include "tests/support/fake_host.h"

#include "platform/basic_info.h"
#include "platform/configuration_channel.h"
#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"
#include "platform/device_config.h"
#include "platform/memcpy_s.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace talvik::test {

namespace {

std::mutex recordingMutex;  // of all that the host's calls add to

}  // namespace

std::ostream& operator<<(std::ostream& os, const LogLine& line)
{
    return os << line.level << " 0x" << std::hex << line.messageId << std::dec << " [" << line.label
              << ':' << line.line << "] " << line.text;
}

void FakeHost::reset()
{
    *this = FakeHost();
}

void FakeHost::enter(const char* call)
{
    if (recording) {
        const std::lock_guard<std::mutex> lock(recordingMutex);
        calls.emplace_back(call);
    }
    act(call);
}

void FakeHost::act(const char* call) const
{
    const auto action = actions_.find(call);
    if (action != actions_.end()) {
        action->second();
    }
}

void FakeHost::keep(LogLine line)
{
    const std::lock_guard<std::mutex> lock(recordingMutex);
    log.push_back(std::move(line));
}

void FakeHost::keep(Command command)
{
    const std::lock_guard<std::mutex> lock(recordingMutex);
    commands.push_back(std::move(command));
}

void FakeHost::keepItemRead(const std::string& section, const std::string& key)
{
    const std::lock_guard<std::mutex> lock(recordingMutex);
    itemsRead.emplace_back(section, key);
}

void FakeHost::onCall(const std::string& call, std::function<void()> action)
{
    actions_[call] = std::move(action);
}

std::size_t FakeHost::count(const std::string& call) const
{
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
}

std::vector<std::string> FakeHost::texts(const std::string& level) const
{
    std::vector<std::string> found;
    for (const auto& line : log) {
        if (line.level == level) {
            found.push_back(line.text);
        }
    }
    return found;
}

FakeHost& fakeHost()
{
    static FakeHost host;
    return host;
}

namespace {

std::string formatted(const char* format, va_list args)
{
    char text[4096];
    std::vsnprintf(text, sizeof text, format, args);
    return text;
}

void record(const char* level, unsigned moduleId, unsigned long long messageId, const char* label,
            unsigned line, const char* format, va_list args)
{
    fakeHost().enter(level);
    if (fakeHost().recording) {
        fakeHost().keep(LogLine{level, moduleId, messageId, label, line, formatted(format, args)});
    }
}

}  // namespace

}  // namespace talvik::test

using talvik::test::fakeHost;

class CKELDebugKit::Sink {
public:
    unsigned moduleId = 0;
};

CKELDebugKit::CKELDebugKit(unsigned int moduleId) : m_pSink(new Sink{moduleId}) {}

CKELDebugKit::~CKELDebugKit()
{
    delete m_pSink;
}

void CKELDebugKit::trace(const std::string& text)
{
    fakeHost().enter("trace");
    if (fakeHost().recording) {
        fakeHost().keep(talvik::test::LogLine{"trace", m_pSink->moduleId, 0, "", 0, text});
    }
}

void CKELDebugKit::debug(unsigned long long messageId, const char* label, unsigned int line,
                         const char* format, va_list args)
{
    talvik::test::record("debug", m_pSink->moduleId, messageId, label, line, format, args);
}

void CKELDebugKit::warn(unsigned long long messageId, const char* label, unsigned int line,
                        const char* format, va_list args)
{
    talvik::test::record("warn", m_pSink->moduleId, messageId, label, line, format, args);
}

void CKELDebugKit::error(unsigned long long messageId, const char* label, unsigned int line,
                         const char* format, va_list args)
{
    talvik::test::record("error", m_pSink->moduleId, messageId, label, line, format, args);
}

class CKELDebugKitMgr::Registry {
public:
    std::mutex mutex;
    std::map<unsigned, CKELDebugKit> kits;  // under mutex
};

CKELDebugKitMgr::CKELDebugKitMgr() : m_pRegistry(new Registry) {}

CKELDebugKitMgr::~CKELDebugKitMgr()
{
    delete m_pRegistry;
}

CKELDebugKit* CKELDebugKitMgr::find(unsigned int moduleId)
{
    fakeHost().enter("find");
    const std::lock_guard<std::mutex> lock(m_pRegistry->mutex);
    return &m_pRegistry->kits.try_emplace(moduleId, moduleId).first->second;
}

CKELXmlConfig::CKELXmlConfig() = default;
CKELXmlConfig::~CKELXmlConfig() = default;

CKELXmlConfig* CKELXmlConfig::instance()
{
    static CKELXmlConfig config;
    return &config;
}

int CKELXmlConfig::getDeviceItem(const std::string& section, const std::string& key,
                                 std::string& value)
{
    fakeHost().enter("getDeviceItem");
    if (fakeHost().recording) {
        fakeHost().keepItemRead(section, key);
    }
    const auto item = fakeHost().deviceItems.find({section, key});
    value = item == fakeHost().deviceItems.end() ? "" : item->second;
    return item == fakeHost().deviceItems.end() ? -1 : 0;
}

CSNMP_Configuration::CSNMP_Configuration() = default;
CSNMP_Configuration::~CSNMP_Configuration() = default;

CSNMP_Configuration* CSNMP_Configuration::instance()
{
    static CSNMP_Configuration channel;
    return &channel;
}

int CSNMP_Configuration::configure(CTLVPackageV3<TLVMsgHeadV3>& request,
                                   CTLVPackageV3<TLVMsgHeadV3>& answer, bool bAsync,
                                   bool bBroadcast)
{
    auto& host = fakeHost();
    host.enter("configure");
    if (host.recording) {
        unsigned char* bytes = nullptr;
        const u_int size = request.encode(bytes);
        host.keep(talvik::test::Command{{bytes, bytes + size}, bAsync, bBroadcast});
        delete[] bytes;
    }
    if (host.fillAnswer) {
        host.fillAnswer(answer);
    }
    return host.configureResult;
}

const char* CSNMPBasicImpl::getNodeCode()
{
    fakeHost().enter("getNodeCode");
    return fakeHost().nodeCode ? fakeHost().nodeCode->c_str() : nullptr;
}

unsigned int CSNMPBasicImpl::getNodeType()
{
    fakeHost().enter("getNodeType");
    return fakeHost().nodeType;
}

extern "C" int memcpy_s(void* dest, std::size_t destSize, const void* src, std::size_t count)
{
    if (fakeHost().memcpyResult != 0) {
        return fakeHost().memcpyResult;
    }
    if (dest == nullptr || src == nullptr || count > destSize) {
        return EINVAL;
    }
    std::memcpy(dest, src, count);
    return 0;
}
