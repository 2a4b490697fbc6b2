#include "alarmconfig/alarm_config_parser.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/alarm_text.h"
#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"

#include <ace/Guard_T.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace {

using Lock = ACE_Guard<ACE_Thread_Mutex>;  // unlocks only what it could lock
using Items = std::map<unsigned long long, CAlarmConfigItem*>;

namespace code = talvik::log_code;

/// The definition of `alarmId`, or null after a line that says why there is none.
const CAlarmConfigItem* itemOf(const Items& items, unsigned long long alarmId,
                               CKELDebugKitGuard& guard, const char* label)
{
    if (items.empty()) {
        guard.error(code::kAlarmNothingThere, label, __LINE__, "alarm config info is empty.");
        return nullptr;
    }
    // Contract: 0 is refused although a definition without an id is stored under it; hosts use 0
    // for "no alarm".
    if (alarmId == 0) {
        guard.error(code::kAlarmId, label, __LINE__, "invalid alarm id %llu", alarmId);
        return nullptr;
    }
    const auto item = items.find(alarmId);
    if (item == items.end()) {
        // Contract: the misspelt "desn't" is what log filters match on.
        guard.warn(code::kAlarmUnknown, label, __LINE__, "alarm %llu desn't need to be parsed.",
                   alarmId);
        return nullptr;
    }
    return item->second;
}

/// The fields of `params`, none of them empty.
std::vector<std::string> fieldsOf(CAlarmConfigParser& parser, const std::string& params)
{
    std::vector<std::string> fields;
    parser.parseAlarmParamList(params, fields);
    for (auto& field : fields) {
        if (field.empty()) {
            field = "--";
        }
    }
    return fields;
}

}  // namespace

const std::string CAlarmConfigParser::COMMA = ",";
const std::string CAlarmConfigParser::ESC_COMMA = "&#44;";
const std::string CAlarmConfigParser::AMPERSAND = "&";
const std::string CAlarmConfigParser::ECS_AMPERSAND = "&#38;";

std::atomic<CAlarmConfigParser*> CAlarmConfigParser::_pInstance{nullptr};
ACE_Thread_Mutex CAlarmConfigParser::_oSingletonMutex;

namespace {

/// Takes the catalogue along when this image is unloaded or the process ends. It stands behind the
/// mutex and the texts, so that they are still there then.
struct LastUse {
    ~LastUse() { CAlarmConfigParser::destroy(); }
};

const LastUse lastUse;

}  // namespace

CAlarmConfigParser* CAlarmConfigParser::instance()
{
    auto* existing = _pInstance.load(std::memory_order_acquire);
    if (existing != nullptr) {
        return existing;
    }
    const Lock lock(_oSingletonMutex);
    existing = _pInstance.load(std::memory_order_relaxed);
    if (existing == nullptr) {
        std::unique_ptr<CAlarmConfigParser> parser(new CAlarmConfigParser);
        parser->init();
        existing = parser.release();
        _pInstance.store(existing, std::memory_order_release);
    }
    return existing;
}

void CAlarmConfigParser::destroy()
{
    const Lock lock(_oSingletonMutex);
    delete _pInstance.exchange(nullptr);
}

CAlarmConfigParser::CAlarmConfigParser() = default;

CAlarmConfigParser::~CAlarmConfigParser()
{
    const Lock lock(itemMutex);
    for (const auto& [id, item] : alarmItems) {
        delete item;
    }
    alarmItems.clear();
    enumLiterals.clear();
}

int CAlarmConfigParser::getAlarmOidInfo(unsigned long long alarmId, std::string& oid)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const Lock lock(itemMutex);
    const auto* item = itemOf(alarmItems, alarmId, guard, "getAlarmOidInfo");
    if (item == nullptr) {
        return talvik::result_code::kFailed;
    }
    oid = item->alarmOid;
    return talvik::result_code::kSuccess;
}

int CAlarmConfigParser::getAlarmInfo(unsigned long long alarmId, const std::string& params,
                                     std::string& location, std::string& detail, u_int& alarmId32,
                                     std::string& name, std::string& suggestion)
{
    constexpr const char* label = "getAlarmInfo";
    static const std::string signature = __PRETTY_FUNCTION__;  // made once: this runs for each row
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    const Lock lock(itemMutex);
    const auto* item = itemOf(alarmItems, alarmId, guard, label);
    if (item == nullptr) {
        return talvik::result_code::kFailed;
    }
    auto fields = fieldsOf(*this, params);
    if (!item->paramEnumPositions.empty()) {
        replaceAlarmParamEnumValueDesc(alarmId, fields, item->paramEnumPositions);
    }
    alarmId32 = item->eventIdLow32;

    ValuePairs pairs;
    parserParmeterByDetail(fields, pairs, item->detail);
    // Contract: value maps go from the detail only; in the other texts managers see them as
    // written.
    auto cleanDetail = item->detail;
    replaceBraceWithEmptyString(cleanDetail);

    std::string spare;
    spare.reserve(talvik::roomFor(
        std::max({item->location.size(), cleanDetail.size(), item->suggestion.size()})));
    int result = talvik::fillText(item->location, location, pairs, spare);
    if (result != talvik::result_code::kSuccess) {
        guard.error(code::kAlarmConfig, label, __LINE__,
                    "parse alarm location %s using parameter %s failed. parsed location is %s.",
                    item->location.c_str(), params.c_str(), location.c_str());
        return result;
    }
    result = talvik::fillText(cleanDetail, detail, pairs, spare);
    if (result != talvik::result_code::kSuccess) {
        guard.error(code::kAlarmConfig, label, __LINE__,
                    "parse alarm detail %s using parameter %s failed, parsed detail is %s.",
                    item->detail.c_str(), params.c_str(), detail.c_str());
        return result;
    }
    result = talvik::fillText(item->suggestion, suggestion, pairs, spare);
    if (result != talvik::result_code::kSuccess) {
        // Contract: "parsed detail" in the suggestion's line too; log filters match on it.
        guard.error(code::kAlarmConfig, label, __LINE__,
                    "parse alarm suggestion %s using parameter %s failed, parsed detail is %s.",
                    item->suggestion.c_str(), params.c_str(), suggestion.c_str());
        return result;
    }
    name = item->name;
    return talvik::result_code::kSuccess;
}

// Contract: 16 bits, whatever the upper ones hold; notification handlers number traps by them.
void CAlarmConfigParser::resolveAlarmId(unsigned long long alarmId, unsigned int& out)
{
    out = static_cast<unsigned int>(alarmId & 0xFFFF);
}

// Contract: 4 for every level without a severity of its own; the management system expects it.
int CAlarmConfigParser::converToQ7400AlarmLevel(int level)
{
    constexpr int lowest = 2;
    constexpr std::array severities{5, 4, 3, 2, 1, 1};
    constexpr int unknown = 4;

    const auto index = static_cast<unsigned int>(level) - static_cast<unsigned int>(lowest);
    return index < severities.size() ? severities[index] : unknown;
}
