#pragma once

#include "alarmconfig/alarm_config_item.h"

#include <ace/Thread_Mutex.h>

#include <atomic>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace Json {
class Value;
}

/// The alarm catalogue of the process: alarm definitions and the literals of enumerated parameters,
/// read from two JSON files when it is first asked for and unchanged afterwards. It goes with the
/// image that holds it, at the unload or at the end of the process.
///
/// `instance` and `destroy` are serialised with each other; the look-ups `getAlarmOidInfo` and
/// `getAlarmInfo` with each other. Look-ups may come from any thread, but not while `destroy` runs.
/// The other operations are the steps of loading and of a look-up; they lock nothing.
class CAlarmConfigParser {
public:
    using ValuePairs = std::vector<std::pair<unsigned int, std::string>>;

    /// The parser, made and loaded at the first call. Throws `CKEL_Exception` when a file cannot be
    /// opened or is not of the expected form; the next call then tries again.
    static CAlarmConfigParser* instance();

    /// Deletes the parser; the next `instance` loads the files anew.
    static void destroy();

    ~CAlarmConfigParser();

    CAlarmConfigParser(const CAlarmConfigParser&) = delete;
    CAlarmConfigParser& operator=(const CAlarmConfigParser&) = delete;

    /// Loads both files. Throws as `instance` does.
    void init();

    /// Each assigns to `path` the configured location relative to the installation root; empty when
    /// it is not configured.
    void getAlarmFilePath(std::string& path);
    void getAlarmParamEnumFilePath(std::string& path);

    /// Loads the definition file at `path`, which becomes the full path. Throws `CKEL_Exception`. A
    /// value of the wrong JSON type ends the loading of the rest with an error line.
    void parse(std::string& path);

    /// Stores one definition: 0, or -1 for a null element or a repeated id. Throws JsonCpp's
    /// exceptions for values of the wrong type.
    int parseAlarmItem(Json::Value item);

    /// Appends the (position, enumeration type) pairs of a "paramDesc" text, of the form
    /// 1=TypeA,3=TypeB, to `out`; returns 0. Throws `CKEL_Exception` for a null text.
    int parseAlarmParamEnumDescPair(const char* paramDesc,
                                    std::vector<std::pair<unsigned int, std::string>>& out);

    /// Loads the enumeration file at `path`, which becomes the full path: 0, or -1 when a value of
    /// the wrong JSON type ended the loading. Throws `CKEL_Exception`.
    int parseAlarmParamEnumDesc(std::string& path);

    /// Stores the literals of one enumeration type: 0, or -1 for a null or missing element or name.
    /// Members without value or name are skipped. Throws JsonCpp's exceptions for values of any
    /// other wrong type; members before it stay.
    int parseAlarmParamEnumType(Json::Value type);

    /// Copies the trap OID of the alarm: 0, or -1 with `oid` untouched.
    int getAlarmOidInfo(unsigned long long alarmId, std::string& oid);

    /// The texts of an alarm with `params`, the back end's comma-separated values, filled in.
    /// Returns 0; -1 with all outputs untouched when the alarm is not available; 0x100400F for a
    /// text with a placeholder that has no position, with `alarmId32` and the outputs before it
    /// set.
    int getAlarmInfo(unsigned long long alarmId, const std::string& params, std::string& location,
                     std::string& detail, u_int& alarmId32, std::string& name,
                     std::string& suggestion);

    /// Appends the unescaped fields of `params` to `list`.
    void parseAlarmParamList(std::string params, std::vector<std::string>& list);

    /// Replaces enumerated fields of `list` by their literals.
    void replaceAlarmParamEnumValueDesc(
        const unsigned long long& alarmId, std::vector<std::string>& list,
        const std::vector<std::pair<unsigned int, std::string>>& enumPositions);

    /// `text` with its placeholders filled from `pairs`, into `out`: 0, or 0x100400F with `out`
    /// untouched. What bounds the work is in alarm_text.h.
    int replaceAlarmParamInfo(std::string text, std::string& out, const ValuePairs& pairs);

    /// The low 16 bits of the id.
    static void resolveAlarmId(unsigned long long alarmId, unsigned int& out);

    /// The management system's severity for the back end's `level`.
    static int converToQ7400AlarmLevel(int level);

    static const std::string COMMA;
    static const std::string ESC_COMMA;
    static const std::string AMPERSAND;
    // Contract: ECS, not ESC; hosts refer to the member by this name.
    static const std::string ECS_AMPERSAND;

private:
    CAlarmConfigParser();

    ACE_Thread_Mutex itemMutex;                                  // of both maps in look-ups
    std::map<unsigned long long, CAlarmConfigItem*> alarmItems;  // owned
    std::map<std::string, std::string> enumLiterals;  // enumeration type, "_" and value: literal

    // Written under _oSingletonMutex.
    // Contract: read without it first; hosts call `instance` for each row that they show.
    static std::atomic<CAlarmConfigParser*> _pInstance;
    static ACE_Thread_Mutex _oSingletonMutex;
};
