#include "fuzz/properties/alarm_record_property.h"

#include "framework/tlv_record.h"
#include "fuzz/properties/alarm_host.h"
#include "fuzz/properties/alarm_record_model.h"
#include "notify/talvik_oid_based_msg_handler.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace talvik::fuzz {

namespace {

constexpr std::uint64_t kEventRecord = 0xD00C900B6;
constexpr unsigned kTagOfEventFlag = 73;
constexpr const char* kDefinitions = R"({"root":{"eventDefinition":{"param":[
    {"eventID":"1","name":"one","detail":"##00{0:off;1:on} ##01","location":"at ##01",
     "suggestion":"do ##02","alarmOid":"1"},
    {"eventID":"2","name":"two","detail":"","location":"","suggestion":"","alarmOid":""},
    {"eventID":"3","name":"three","detail":"x","location":"##"}]}}})";

PlainRecord recordIn(const std::uint8_t* data, std::size_t size)
{
    PlainRecord record;
    if (size == 0) {
        return record;
    }
    record.identifier = data[0] == 0 ? kEventRecord : data[0];
    for (std::size_t at = 1; size - at >= 2;) {
        const unsigned head = data[at];
        const std::size_t length = data[at + 1] % 64;
        at += 2;
        if (size - at < length) {
            break;
        }
        const unsigned tag = head & 0xFU;
        record.cells.push_back({tag == 15 ? kTagOfEventFlag : tag,
                                (head >> 4U) % 10,
                                {data + at, data + at + length}});
        at += length;
    }
    return record;
}

std::unique_ptr<CTLVRecordV3> made(const PlainRecord& plain)
{
    auto record = std::make_unique<CTLVRecordV3>(plain.identifier);
    for (const PlainCell& each : plain.cells) {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(static_cast<CTLVCell::ETLVType>(each.type),
                    static_cast<unsigned short>(each.tag), each.bytes.data(), each.bytes.size());
        record->append(cell.get());
        cell.release();
    }
    return record;
}

PlainBinding plain(const Agentpp::Vbx& vb)
{
    PlainBinding binding{vb.get_printable_oid(), vb.get_syntax(), ""};
    if (vb.get_value(binding.value) != SNMP_CLASS_SUCCESS) {
        binding.value = vb.get_printable_value();
    }
    return binding;
}

void require(bool holds, const char* rule)
{
    if (!holds) {
        std::fprintf(stderr, "alarm record property broken: %s\n", rule);
        std::abort();
    }
}

/// The texts of the lines that begin as the handler's own do.
std::vector<std::string> linesOfRefusal()
{
    std::vector<std::string> found;
    for (const auto& line : alarmHost().lines) {
        if (line.level == "error" && line.code == 0x1002C) {
            found.push_back(line.text);
        }
    }
    return found;
}

void check(CTalvikNotifyMsgHandler& handler, const PlainRecord& record, const PlainTrap& expected)
{
    alarmHost().lines.clear();
    Agentpp::Vbx untouched;
    Agentpp::Vbx* vbs = &untouched;

    const int result = handler.constructAlarmTrapVb(*made(record), vbs);

    require(result == expected.result, "the result is the model's");
    require(alarmHost().guards == 0, "every log guard is closed");
    const auto lines = linesOfRefusal();
    if (result != 0) {
        require(vbs == &untouched, "a refusal touches no bindings");
        require(lines == std::vector<std::string>{expected.line}, "a refusal has the model's line");
        return;
    }
    require(vbs != &untouched, "a success makes bindings");
    const std::unique_ptr<Agentpp::Vbx[]> owned(vbs);
    require(lines.empty(), "a success logs no refusal");
    require(expected.bindings.size() == static_cast<std::size_t>(handler.getTrapVbLen()),
            "there are fourteen bindings");
    for (std::size_t i = 0; i < expected.bindings.size(); ++i) {
        require(plain(vbs[i]) == expected.bindings[i], "each binding is the model's");
    }
}

}  // namespace

void checkAlarmRecord(const std::uint8_t* data, std::size_t size)
{
    static const bool loaded = [] {
        alarmHost().definitions.write(kDefinitions);
        alarmHost().literals.write(R"({"alarm":{"param_enum":[]}})");
        return true;
    }();
    require(loaded, "there is a catalogue");

    const PlainRecord record = recordIn(data, size);
    CTalvikNotifyMsgHandler handler;
    CTalvikOIDBasedMsgHandler oidBased;
    check(handler, record, trapOf(record, "1.3.6.1.4.1.99999.2.91.10.3.1.1", true));
    check(oidBased, record, trapOf(record, "1.3.6.1.4.1.99999.2.251.20.1.3", false));
}

}  // namespace talvik::fuzz
