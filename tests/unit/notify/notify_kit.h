#pragma once

#include "notify/alarm_repository.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "tests/support/alarm_cells.h"
#include "tests/support/fake_notify_host.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace talvik::test {

constexpr unsigned long long kAlarmWithoutPosition = 3;
constexpr unsigned long long kUnknownAlarm = 4;
constexpr std::uint64_t kEventRecord = 0xD00C900B6;

/// What a binding carries: its OID, its syntax and the bytes or digits of its value.
struct BindingFacts {
    std::string oid;
    unsigned syntax = 0;
    std::string value;

    bool operator==(const BindingFacts& other) const
    {
        return oid == other.oid && syntax == other.syntax && value == other.value;
    }
};

inline std::ostream& operator<<(std::ostream& os, const BindingFacts& facts)
{
    return os << facts.oid << " (" << facts.syntax << ") " << testing::PrintToString(facts.value);
}

inline BindingFacts factsOf(const Agentpp::Vbx& vb)
{
    BindingFacts facts{vb.get_printable_oid(), vb.get_syntax(), ""};
    if (facts.syntax == sNMP_SYNTAX_OCTETS) {
        vb.get_value(facts.value);
    } else {
        facts.value = vb.get_printable_value();
    }
    return facts;
}

/// Bindings that a test owns, as the dispatcher does; starts as an array that is not its to free.
class Bindings {
public:
    Bindings() = default;
    ~Bindings()
    {
        if (!untouched()) {
            delete[] vbs;
        }
    }
    Bindings(const Bindings&) = delete;
    Bindings& operator=(const Bindings&) = delete;

    bool untouched() const { return vbs == &elsewhere_; }

    std::vector<BindingFacts> facts() const
    {
        std::vector<BindingFacts> found;
        for (int i = 0; i < 14; ++i) {
            found.push_back(factsOf(vbs[i]));
        }
        return found;
    }

    std::string value(unsigned number) const { return factsOf(vbs[number - 1]).value; }

private:
    Agentpp::Vbx elsewhere_;

public:
    Agentpp::Vbx* vbs = &elsewhere_;
};

/// Base of the tests of notifications: both handlers, a catalogue with a known alarm and one whose
/// text cannot be filled, an empty repository.
class NotifyTest : public AlarmCatalogueTest {
protected:
    NotifyTest()
    {
        forgetRepository();
        fakeNotifyHost().reset();
        defineKnownAlarm("5.3");
    }

    ~NotifyTest() override
    {
        forgetRepository();
        fakeNotifyHost().reset();
    }

    void defineKnownAlarm(const std::string& alarmOid)
    {
        CAlarmConfigParser::destroy();
        defineAlarms(R"({"eventID":"64437682177","name":"Disk failed","detail":"Disk ##00 failed.",
            "location":"Enclosure ##01","suggestion":"Replace ##00.","alarmOid":")" +
                     alarmOid + R"("},{"eventID":"3","detail":"x","location":"##"})");
        parser();
        host.log.clear();  // of the lines about loading
    }

    static void forgetRepository()
    {
        delete CAlarmRepository_Singleton::m_AlarmRep.exchange(nullptr);
    }

    int construct(const AlarmCells& cells, Bindings& bindings)
    {
        return handler.constructAlarmTrapVb(*cells.record(), bindings.vbs);
    }

    /// The one line besides those of the catalogue and the traces; "none" or "several" otherwise.
    std::string onlyLineOf(const std::string& label) const
    {
        std::string found = "none";
        for (const auto& line : lines()) {
            if (line.find(" " + label + ": ") != std::string::npos) {
                found = found == "none" ? line : "several";
            }
        }
        return found;
    }

    CTalvikNotifyMsgHandler handler;
    CTalvikOIDBasedMsgHandler oidBased;
};

}  // namespace talvik::test
