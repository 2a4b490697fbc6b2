// Loading of the catalogue: where the two files are, and how they are read.

#include "alarmconfig/alarm_config_parser.h"
#include "alarmconfig/definition_texts.h"
#include "alarmconfig/str_spliter.h"
#include "framework/debug_kit_guard.h"
#include "framework/kel_exception.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "platform/device_config.h"
#include "platform/installation_root.h"
#include "platform/memcpy_s.h"

#include <json/reader.h>
#include <json/value.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace {

namespace code = talvik::log_code;

using Key = talvik::DefinitionTexts::Key;

const std::string kMissingText = "None";
const std::string kSection = "SNMP_CONF";

std::string configuredPath(const char* item, CKELDebugKitGuard& guard, const char* label)
{
    std::string path;
    CKELXmlConfig::instance()->getDeviceItem(kSection, item, path);
    if (!path.empty()) {
        guard.debug(code::kDebugLine, label, __LINE__, "file path : %s", path.c_str());
    }
    return path;
}

// Contract: nothing is trimmed, so a configured path that begins with "/" gives a double slash;
// messages of deployed hosts show it.
std::string fullPath(const std::string& relative)
{
    return KEL_Utility::getKELRootEnv() + "/" + relative;
}

/// All of `file`, which is at `path`. Read at once, as a stream that grows copies it several times.
std::string contentsOf(std::ifstream& file, const std::string& path)
{
    constexpr std::size_t step = 65536;
    std::string text;
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    text.reserve(step + (unknown ? 0 : static_cast<std::size_t>(size)));
    while (file) {
        const auto done = text.size();
        text.resize(done + step);
        file.read(text.data() + done, static_cast<std::streamsize>(step));
        text.resize(done + static_cast<std::size_t>(file.gcount()));
    }
    return text;
}

/// The document in `path`. `openFailure` begins the message when it cannot be opened.
Json::Value readDocument(const std::string& path, const char* openFailure)
{
    std::ifstream file(path);
    if (!file.is_open()) {
        throw CKEL_Exception(openFailure + ("(" + path) + ") failed.");
    }
    const auto text = contentsOf(file, path);
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value document;
    std::string ignored;
    bool parsed = false;
    try {
        parsed = reader->parse(text.data(), text.data() + text.size(), &document, &ignored);
    } catch (const Json::Exception&) {
        parsed = false;  // nested too deep
    }
    if (!parsed) {
        throw CKEL_Exception("parse root element failed!");
    }
    return document;
}

/// The member `key` of `value`, or null when it is no object or has none.
Json::Value* memberOf(Json::Value* value, std::string_view key)
{
    if (value == nullptr || !value->isObject()) {
        return nullptr;
    }
    return value->isMember(key.data(), key.data() + key.size()) ? &(*value)[key.data()] : nullptr;
}

/// The text of the member `key` up to its first NUL, null when that is missing or null. Throws
/// JsonCpp's exception when it is no text, or `value` neither object nor null.
const char* nullableText(const Json::Value& value, std::string_view key)
{
    const auto* member = value.find(key.data(), key.data() + key.size());
    return member == nullptr || member->isNull() ? nullptr : member->asCString();
}

/// Where `id` is in `items` or belongs; at once where files define alarms by ascending id.
template <typename Items>
auto placeOf(unsigned long long id, Items& items)
{
    const bool last = items.empty() || items.rbegin()->first < id;
    return last ? items.end() : items.lower_bound(id);
}

/// Hands each element over to `store`, the document being of no more use afterwards. False, with an
/// error line, when a value of the wrong JSON type ended that.
// Contract: what was stored before stays, all behind is lost, and the text says "mib file" of
// either file; hosts start with the definitions that could be read, log filters match on the text.
template <typename Store>
bool storeElements(Json::Value& elements, const std::string& path, CKELDebugKitGuard& guard,
                   const char* label, Store store)
{
    try {
        if (elements.isObject() && !elements.empty()) {
            elements[Json::ArrayIndex{0}];  // throws
        }
        for (auto& element : elements) {
            store(std::move(element));
        }
    } catch (const Json::Exception& error) {
        guard.error(code::kAlarmConfig, label, __LINE__, "parse mib file %s failed, %s.",
                    path.c_str(), error.what());
        return false;
    }
    return true;
}

}  // namespace

void CAlarmConfigParser::init()
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    std::string path;
    getAlarmFilePath(path);
    parse(path);
    getAlarmParamEnumFilePath(path);
    parseAlarmParamEnumDesc(path);
}

void CAlarmConfigParser::getAlarmFilePath(std::string& path)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    path = configuredPath("ALARM_INI_PATH", guard, "getAlarmFilePath");
}

void CAlarmConfigParser::getAlarmParamEnumFilePath(std::string& path)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    path = configuredPath("ALARM_PARAM_ENUM_PATH", guard, "getAlarmParamEnumFilePath");
}

void CAlarmConfigParser::parse(std::string& path)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    path = fullPath(path);
    auto document = readDocument(path, "open config file");
    auto* root = memberOf(&document, "root");
    if (root == nullptr) {
        throw CKEL_Exception("root element is invalid, should be (root).");
    }
    auto* param = memberOf(memberOf(root, "eventDefinition"), "param");
    if (param == nullptr) {
        throw CKEL_Exception("parse eventDefinition element failed!");
    }
    storeElements(*param, path, guard, "parse",
                  [this](Json::Value&& item) { parseAlarmItem(std::move(item)); });
}

int CAlarmConfigParser::parseAlarmItem(Json::Value item)
{
    static const std::string signature =
        __PRETTY_FUNCTION__;  // made once: this runs for each alarm
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    if (item.isNull()) {
        return talvik::result_code::kFailed;
    }
    const talvik::DefinitionTexts texts(item);
    // Contract: read as signed, kept as unsigned, and 0 when it is missing; back ends number their
    // alarms so.
    const auto id =
        static_cast<unsigned long long>(std::strtoll(texts.textOr(Key::EventId, "0"), nullptr, 10));
    const auto place = placeOf(id, alarmItems);
    if (place != alarmItems.end() && place->first == id) {
        // Contract: the first definition of an id wins; deployed files append corrections for
        // other hosts.
        guard.warn(code::kAlarmId, "parseAlarmItem", __LINE__, "repeated alarm %llu, so ignore it.",
                   id);
        return talvik::result_code::kFailed;
    }
    const char* missing = kMissingText.c_str();
    const char* name = texts.textOr(Key::Name, missing);
    const char* reason = texts.textOr(Key::Reason, missing);
    const char* suggestion = texts.textOr(Key::Suggestion, missing);
    const char* detail = texts.textOr(Key::Detail, missing);
    const char* location = texts.textOr(Key::Location, missing);
    const char* alarmOid = texts.textOr(Key::AlarmOid, missing);
    const char* paramDesc = texts.textOr(Key::ParamDesc, missing);

    auto definition = std::make_unique<CAlarmConfigItem>(
        id, static_cast<unsigned int>(id), name, reason, suggestion, detail, location, alarmOid);
    parseAlarmParamEnumDescPair(paramDesc, definition->paramEnumPositions);
    alarmItems.emplace_hint(place, id, definition.get());
    definition.release();
    return talvik::result_code::kSuccess;
}

int CAlarmConfigParser::parseAlarmParamEnumDescPair(
    const char* paramDesc, std::vector<std::pair<unsigned int, std::string>>& out)
{
    static const std::string signature =
        __PRETTY_FUNCTION__;  // made once: this runs for each alarm
    CKELDebugKitGuard guard(talvik::kLogModule, signature);
    if (paramDesc == nullptr) {
        throw CKEL_Exception("Null pointer.");
    }
    const auto length = std::strlen(paramDesc);
    std::vector<char> text(length + 1, '\0');
    const int copyResult = memcpy_s(text.data(), text.size(), paramDesc, length);
    if (copyResult != 0) {
        guard.warn(code::kAlarmCopyFailed, "parseAlarmParamEnumDescPair", __LINE__,
                   "memcpy_s is fail, code=%d!", copyResult);
    }
    CStrSpliter items(text.data(), ",");
    while (const char* item = items.next()) {
        const char* equals = std::strchr(item, '=');
        if (equals != nullptr) {
            // Contract: no digits give position 0; deployed files are read that way.
            out.emplace_back(static_cast<unsigned int>(std::strtol(item, nullptr, 10)), equals + 1);
        }
    }
    return talvik::result_code::kSuccess;
}

int CAlarmConfigParser::parseAlarmParamEnumDesc(std::string& path)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    path = fullPath(path);
    auto document = readDocument(path, "open alarm config file");
    auto* alarm = memberOf(&document, "alarm");
    if (alarm == nullptr) {
        throw CKEL_Exception("root element is invalid, should be (alarm).");
    }
    auto* types = memberOf(alarm, "param_enum");
    if (types == nullptr) {
        throw CKEL_Exception("parse param_enum element failed!");
    }
    const bool all =
        storeElements(*types, path, guard, "parseAlarmParamEnumDesc",
                      [this](Json::Value&& type) { parseAlarmParamEnumType(std::move(type)); });
    return all ? talvik::result_code::kSuccess : talvik::result_code::kFailed;
}

int CAlarmConfigParser::parseAlarmParamEnumType(Json::Value type)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const char* typeName = type.isNull() ? nullptr : nullableText(type, "name");
    if (typeName == nullptr) {
        return talvik::result_code::kFailed;
    }
    const auto& members = std::as_const(type)["enum_member"];
    // By index: of an object that makes JsonCpp throw.
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (Json::ArrayIndex i = 0; i < members.size(); ++i) {
        const auto& member = members[i];
        const char* value = nullableText(member, "value");
        const char* name = nullableText(member, "name");
        if (value == nullptr || name == nullptr) {
            continue;
        }
        const auto key = std::string(typeName) + "_" + value;
        guard.debug(code::kDebugLine, "parseAlarmParamEnumType", __LINE__, "EnumDescKey is (%s)",
                    key.c_str());
        enumLiterals.emplace(key, name);  // Contract: the first literal of a key wins, in silence;
                                          // files for several products rely on it.
    }
    return talvik::result_code::kSuccess;
}
