#pragma once

#include "alarmconfig/alarm_config_parser.h"
#include "tests/support/fake_alarm_host.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/temp_dir.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

using Pairs = std::vector<std::pair<unsigned, std::string>>;
using Fields = std::vector<std::string>;

/// What `getAlarmInfo` fills; every text starts as "untouched".
struct AlarmInfo {
    int result = -77;
    std::string location = "untouched";
    std::string detail = "untouched";
    unsigned id32 = 77;
    std::string name = "untouched";
    std::string suggestion = "untouched";
};

/// Base of the tests of the alarm catalogue: a folder with both files, which the fake host points
/// to, and no parser before and after each test.
class AlarmCatalogueTest : public FakeHostTest {
protected:
    AlarmCatalogueTest()
    {
        CAlarmConfigParser::destroy();
        fakeAlarmHost().installationRoot = folder.path();
        host.deviceItems[{"SNMP_CONF", "ALARM_INI_PATH"}] = "alarms.json";
        host.deviceItems[{"SNMP_CONF", "ALARM_PARAM_ENUM_PATH"}] = "enums.json";
        defineAlarms("");
        defineEnums("");
    }

    ~AlarmCatalogueTest() override
    {
        CAlarmConfigParser::destroy();
        fakeAlarmHost() = FakeAlarmHost();
    }

    /// Writes the definition file with these elements of "param".
    void defineAlarms(const std::string& elements)
    {
        folder.write("alarms.json", R"({"root":{"eventDefinition":{"param":[)" + elements + "]}}}");
    }

    /// Writes the enumeration file with these elements of "param_enum".
    void defineEnums(const std::string& elements)
    {
        folder.write("enums.json", R"({"alarm":{"param_enum":[)" + elements + "]}}");
    }

    /// One alarm with id 1 and these texts.
    void defineAlarm(const std::string& detail, const std::string& location = "here",
                     const std::string& suggestion = "wait", const std::string& paramDesc = "")
    {
        defineAlarms(R"({"eventID":"1","name":"Alarm ##00","detail":")" + detail +
                     R"(","location":")" + location + R"(","suggestion":")" + suggestion +
                     R"(","paramDesc":")" + paramDesc + R"("})");
    }

    static CAlarmConfigParser& parser() { return *CAlarmConfigParser::instance(); }

    static AlarmInfo infoOf(unsigned long long id, const std::string& params)
    {
        AlarmInfo info;
        info.result = parser().getAlarmInfo(id, params, info.location, info.detail, info.id32,
                                            info.name, info.suggestion);
        return info;
    }

    static std::string oidOf(unsigned long long id)
    {
        std::string oid = "untouched";
        parser().getAlarmOidInfo(id, oid);
        return oid;
    }

    /// Level, message identifier, label and text of every line but the trace lines.
    Fields lines() const
    {
        Fields found;
        for (const auto& line : host.log) {
            if (line.level != "trace") {
                std::ostringstream text;
                text << line.level << " 0x" << std::hex << line.messageId << ' ' << line.label
                     << ": " << line.text;
                found.push_back(text.str());
            }
        }
        return found;
    }

    /// As `lines`, of one level.
    Fields lines(const std::string& level) const
    {
        Fields found;
        for (auto& line : lines()) {
            if (line.rfind(level + " ", 0) == 0) {
                found.push_back(std::move(line));
            }
        }
        return found;
    }

    TempDir folder;
};

}  // namespace talvik::test
