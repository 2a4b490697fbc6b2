#include "backend/system_commands.h"

#include "backend/system_tags.h"
#include "host/startup_error.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <memory>

namespace talvik::backend {

namespace {

constexpr std::size_t kWwnDigits = 16;

bool isWwn(const std::string& text)
{
    return text.size() == kWwnDigits &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c); });
}

std::string systemWwn(const DeviceConfigFile& config)
{
    const auto& wwn = config.text("SYSTEM", "WWN");
    if (!isWwn(wwn)) {
        throw StartupError("device configuration " + config.path() +
                           ": section \"SYSTEM\", item \"WWN\" is \"" + wwn +
                           "\", not 16 hexadecimal digits");
    }
    return wwn;
}

std::unique_ptr<CTLVRecordV3> wwnRecord(std::uint64_t command, const std::string& wwn)
{
    auto record = std::make_unique<CTLVRecordV3>(command);
    auto cell = std::make_unique<CTLVCell>();
    cell->set(system_tag::kWwn, wwn.c_str());
    record->append(cell.get());
    cell.release();
    return record;
}

}  // namespace

std::uint64_t commandNumber(const DeviceConfigFile& config, const std::string& name)
{
    // The module reads the number as a signed one, and takes 0 for one that is missing.
    const auto number = config.number("COMMAND", name, std::numeric_limits<std::int64_t>::max());
    if (number == 0) {
        throw StartupError("device configuration " + config.path() +
                           ": section \"COMMAND\", item \"" + name +
                           "\" is 0; command numbers start at 1");
    }
    return number;
}

void addSystemCommands(CommandServer& server, const DeviceConfigFile& config)
{
    const auto getWwn = commandNumber(config, "GET_SYSTEM_WWN");
    server.add(getWwn, "GET_SYSTEM_WWN",
               [getWwn, wwn = systemWwn(config)](const Package&, Package& reply) {
                   auto record = wwnRecord(getWwn, wwn);
                   reply.oRecords.push_back(record.get());
                   record.release();
                   return result::kSuccess;
               });
}

CommandServer makeCommandServer(const DeviceConfigFile& config)
{
    CommandServer server;
    addSystemCommands(server, config);
    return server;
}

}  // namespace talvik::backend
