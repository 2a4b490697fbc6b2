#include "bench/sample_catalogue.h"

#include <json/json.h>

#include <fstream>
#include <memory>

namespace talvik::bench {

namespace {

constexpr unsigned kValuesOfAType = 10;

void writeFile(const std::string& path, const Json::Value& document)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    std::ofstream file(path);
    const std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
    writer->write(document, &file);
}

Json::Value definition(unsigned number)
{
    const auto text = std::to_string(number);
    Json::Value alarm;
    alarm["eventID"] = std::to_string(SampleCatalogue::kFirstId + number);
    alarm["name"] = "Power Module " + text + " Is Faulty";
    alarm["reason"] = "The module lost its input, overheated, or failed on its own (" + text + ").";
    alarm["suggestion"] = SampleCatalogue::kSuggestion;
    alarm["detail"] = SampleCatalogue::kDetail;
    alarm["location"] = SampleCatalogue::kLocation;
    alarm["alarmOid"] = "1.3.6.1.4.1.99999.2.251.20.1.4." + text;
    if (number % 3 == 2) {  // not the first one, which is looked up without enumerations
        alarm["paramDesc"] = "3=Type" + std::to_string(number % 100);
    }
    return alarm;
}

}  // namespace

void SampleCatalogue::write(const std::string& folder, unsigned definitions, unsigned enumValues)
{
    Json::Value alarms;
    auto& list = alarms["root"]["eventDefinition"]["param"] = Json::arrayValue;
    for (unsigned number = 1; number <= definitions; ++number) {
        list.append(definition(number));
    }
    writeFile(folder + "/definitions.json", alarms);

    Json::Value enums;
    auto& types = enums["alarm"]["param_enum"] = Json::arrayValue;
    for (unsigned first = 0; first < enumValues; first += kValuesOfAType) {
        Json::Value type;
        type["name"] = "Type" + std::to_string(first / kValuesOfAType);
        for (unsigned value = 0; value < kValuesOfAType && first + value < enumValues; ++value) {
            Json::Value member;
            member["value"] = std::to_string(value);
            member["name"] = "state number " + std::to_string(value);
            type["enum_member"].append(member);
        }
        types.append(type);
    }
    writeFile(folder + "/enumerations.json", enums);
}

}  // namespace talvik::bench
