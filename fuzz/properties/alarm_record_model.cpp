#include "fuzz/properties/alarm_record_model.h"

#include "alarmconfig/alarm_config_parser.h"
#include "fuzz/properties/notify_device.h"
#include "platform/time_conversion.h"

#include <snmp_pp/snmp_pp.h>

namespace talvik::fuzz {

namespace {

constexpr std::uint64_t kEventRecord = 55847747766;
constexpr unsigned kInteger = 2;
constexpr unsigned kOctets = 4;
constexpr unsigned kGauge = 66;
constexpr unsigned kCounter = 70;

/// Why a record makes no trap.
struct Refused {
    std::string text;
};

const PlainCell& firstOf(const PlainRecord& record, unsigned tag)
{
    for (const PlainCell& cell : record.cells) {
        if (cell.tag == tag) {
            return cell;
        }
    }
    throw Refused{"CTLVRecordV3 has no such cell! tag equal to " + std::to_string(tag)};
}

/// The first `width` bytes at most, little-endian; two bytes of type 4 carry a sign.
std::uint64_t numberOf(const PlainRecord& record, unsigned tag, std::size_t width)
{
    const PlainCell& cell = firstOf(record, tag);
    if (cell.type <= 2) {
        throw Refused{"CTLVCell isn't numerical type! tag equal to " + std::to_string(tag)};
    }
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < cell.bytes.size() && i < width; ++i) {
        number |= std::uint64_t{static_cast<unsigned char>(cell.bytes[i])} << (8 * i);
    }
    if (cell.type == 4 && cell.bytes.size() == 2 && number >= 0x8000) {
        number |= width == 4 ? 0xFFFF0000 : 0xFFFFFFFFFFFF0000;
    }
    return number;
}

std::string textOf(const PlainRecord& record, unsigned tag)
{
    const PlainCell& cell = firstOf(record, tag);
    if (cell.type != 2) {
        throw Refused{"CTLVCell isn't string type! tag equal to " + std::to_string(tag)};
    }
    return cell.bytes.substr(0, cell.bytes.find('\0'));
}

unsigned categoryOf(const PlainRecord& record)
{
    if (numberOf(record, 6, 4) != 0) {
        return 2;
    }
    if (numberOf(record, 5, 4) != 0) {
        return 2;
    }
    if (record.identifier != kEventRecord) {
        return 1;
    }
    return numberOf(record, 73, 4) == 1 ? 3 : 1;
}

std::string severityOf(std::uint64_t level)
{
    switch (level) {
    case 2:
        return "5";
    case 4:
        return "3";
    case 5:
        return "2";
    case 6:
    case 7:
        return "1";
    default:
        return "4";
    }
}

std::string timeOf(std::uint64_t seconds, bool asOctets)
{
    Snmp_pp::OctetStr time;
    if (asOctets) {
        CSnmpUtil::convertTime2DateTime(time, static_cast<long>(seconds));
    } else {
        CSnmpUtil::convertTime2DateTimeStr(time, static_cast<long>(seconds));
    }
    return time.as_string();
}

PlainTrap acceptedTrapOf(const PlainRecord& record, const std::string& base, bool asOctets)
{
    const std::uint64_t id = numberOf(record, 1, 8);
    const std::string parameters = textOf(record, 8);
    std::string location;
    std::string detail;
    std::string name;
    std::string suggestion;
    unsigned id32 = 0;
    PlainTrap trap;
    trap.result = CAlarmConfigParser::instance()->getAlarmInfo(id, parameters, location, detail,
                                                               id32, name, suggestion);
    if (trap.result != 0) {
        trap.line = "parse alarm " + std::to_string(id) + " failed";
        return trap;
    }
    const std::uint64_t level = numberOf(record, 2, 4);
    const unsigned category = categoryOf(record);
    const std::uint64_t serial = numberOf(record, 3, 4);
    std::uint64_t time = numberOf(record, 4, 8);
    if (category == 2) {
        const std::uint64_t preferred = numberOf(record, 6, 8);
        const std::uint64_t other = numberOf(record, 5, 8);
        time = preferred != 0 ? preferred : other;
    }
    const std::pair<unsigned, std::string> values[] = {
        {kOctets, kNodeCode},
        {kOctets, location},
        {kOctets, suggestion},
        {kOctets, name},
        {kInteger, category == 3 ? "3" : "2"},
        {kInteger, severityOf(level)},
        {kGauge, std::to_string(id32)},
        {kOctets, timeOf(time, asOctets)},
        {kGauge, std::to_string(serial)},
        {kOctets, detail},
        {kInteger, std::to_string(category)},
        {kCounter, std::to_string(id)},
        {kInteger, std::to_string(kDeviceType)},
        {kOctets, kProductSn},
    };
    for (const auto& [syntax, value] : values) {
        const auto number = std::to_string(trap.bindings.size() + 1);
        trap.bindings.push_back({base + "." + number + ".0", syntax, value});
    }
    return trap;
}

}  // namespace

PlainTrap trapOf(const PlainRecord& record, const std::string& base, bool asOctets)
{
    try {
        return acceptedTrapOf(record, base, asOctets);
    } catch (const Refused& refused) {
        return {-1, "handle notify failed, CKEL_Exception: " + refused.text, {}};
    }
}

}  // namespace talvik::fuzz
