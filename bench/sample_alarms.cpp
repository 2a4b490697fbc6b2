#include "bench/sample_alarms.h"

#include "backend/alarm_database.h"
#include "backend/alarm_store.h"

#include <array>
#include <filesystem>

namespace talvik::bench {

namespace {

constexpr std::uint64_t kFirstTime = 1'790'000'000;
constexpr unsigned kSlots = 25;  // of an enclosure

/// What alarms of one definition have in common: place and values differ.
struct Sample {
    std::uint64_t id;
    std::uint32_t level;
    std::string (*parameters)(const std::string& place, const std::string& part);
};

/// Of each kind that the catalogue has: values only, a map of values, an enumeration, long texts.
const std::array<Sample, 8> kSamples = {{
    {501010001, 5,
     [](const auto& place, const auto& part) {
         return "DAE" + place + "," + part + ",2102350TLV" + place + part + ",1";
     }},
    {501010007, 4,
     [](const auto& place, const auto& part) { return "DAE" + place + "," + part + ",41250,830"; }},
    {502010002, 5,
     [](const auto& place, const auto& part) { return "DAE" + place + "," + part + ",61,5,50"; }},
    {504010006, 5,
     [](const auto& place, const auto& part) { return "DAE" + place + "," + part + ",0,2400"; }},
    {505010001, 5, [](const auto& place, const auto& part) { return place + ",P" + part + ",0"; }},
    {506010003, 3,
     [](const auto& place, const auto& part) {
         return "Pool" + place + "-" + part + ",86,1410,85";
     }},
    {506010006, 6,
     [](const auto& place, const auto& part) {
         return "Volume" + place + "-" + part + ",6A00B5C7" + place + part + ",Pool" + place + ",1";
     }},
    {508010004, 3,
     [](const auto& place, const auto& part) {
         return "array-" + place + "-" + part + ",0,2027-03-31";
     }},
}};

backend::ActiveAlarm sampleAlarm(unsigned serial)
{
    const auto& sample = kSamples.at(serial % kSamples.size());
    const auto part = std::to_string(serial % kSlots);
    const auto place = std::to_string(serial / kSlots);
    return {serial, {sample.id, sample.level, kFirstTime + serial, sample.parameters(place, part)}};
}

}  // namespace

void writeSampleAlarms(const std::string& folder, unsigned count)
{
    std::filesystem::create_directories(folder);
    backend::AlarmDatabase database(folder + "/" + backend::AlarmStore::kFileName);
    database.change([&] {
        for (unsigned serial = 1; serial <= count; ++serial) {
            database.insertActive(sampleAlarm(serial));
        }
        database.setLastSerial(count);
    });
}

}  // namespace talvik::bench
