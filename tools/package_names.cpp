#include "tools/package_names.h"

#include "backend/alarm_tags.h"
#include "backend/protocol.h"
#include "backend/system_tags.h"
#include "framework/tlv_cell.h"
#include "host/link/receiver_tags.h"
#include "host/platform/device_config_file.h"
#include "tools/alarm_input.h"

#include <limits>

namespace talvik::ctl {

namespace {

using Names = std::map<std::uint64_t, std::string>;

const Names& alarmCells()
{
    namespace tag = backend::alarm;
    static const Names names = {
        {tag::kKindTag, "kind"},           {tag::kIdTag, "alarm id"},
        {tag::kLevelTag, "level"},         {tag::kSerialTag, "serial number"},
        {tag::kTimeTag, "time"},           {tag::kClearTimeTag, "time of clearing"},
        {tag::kRequesterTag, "requester"}, {tag::kParametersTag, "parameters"},
        {tag::kCountTag, "count"},         {tag::kEventFlagTag, "is event"},
        {tag::kEndMarkTag, "end mark"},
    };
    return names;
}

const Names& receiverCells()
{
    static const Names names = {
        {receiver::kAddressTag, "address"},   {receiver::kPortTag, "port"},
        {receiver::kIndexTag, "index"},       {receiver::kVersionTag, "version"},
        {receiver::kTypeTag, "type"},         {receiver::kUserTag, "user"},
        {receiver::kInformTag, "is inform"},  {receiver::kStateTag, "state"},
        {receiver::kSentTag, "sent"},         {receiver::kFailedTag, "failed"},
        {receiver::kAnsweredTag, "answered"}, {receiver::kGivenUpTag, "given up"},
        {receiver::kWaitingTag, "waiting"},
    };
    return names;
}

std::string nameIn(const Names& names, std::uint64_t number)
{
    const auto found = names.find(number);
    return found == names.end() ? std::string() : found->second;
}

/// The cells that records of a command have.
const Names& cellsOf(const std::string& command)
{
    static const Names none;
    static const Names wwn = {{backend::system_tag::kWwn, "WWN"}};
    if (command == "GET_SYSTEM_WWN") {
        return wwn;
    }
    if (command == "SHOW_RECEIVERS" || command == "SEND_TEST_TRAP") {
        return receiverCells();
    }
    return command.empty() ? none : alarmCells();
}

}  // namespace

PackageNames::PackageNames(const DeviceConfigFile& device)
{
    for (const auto* name :
         {"GET_SYSTEM_WWN", "GET_CURRENT_ALARM", "CLEAR_ALARM", "RAISE_ALARM", "REPORT_EVENT",
          "RESEND_ALARMS", "SUBSCRIBE_NOTIFICATIONS", "SHOW_RECEIVERS", "SEND_TEST_TRAP"}) {
        if (const auto* number = device.find("COMMAND", name)) {
            const auto id = wholeNumber(*number, 1, std::numeric_limits<std::uint64_t>::max());
            if (id) {
                commands_[*id] = name;
            }
        }
    }
}

std::string PackageNames::record(std::uint64_t id) const
{
    return id == backend::alarm::kRecordId ? "alarm" : nameIn(commands_, id);
}

std::string PackageNames::cell(std::uint64_t recordId, unsigned tag) const
{
    return nameIn(cellsOf(record(recordId)), tag);
}

std::string PackageNames::kind(unsigned kind)
{
    static const Names names = {
        {1, "request"}, {2, "reply"}, {3, "notification"}, {4, "acknowledgement"}};
    return nameIn(names, kind);
}

std::string PackageNames::result(std::uint32_t code)
{
    namespace result = backend::result;
    static const Names names = {
        {result::kSuccess, "done"},
        {result::kUnknownCommand, "no command has that number"},
        {result::kNoCommand, "the request has no record"},
        {result::kCommandFailed, "the command broke off"},
        {result::kAnswerTooLarge, "the answer does not fit a package"},
        {result::kNoSuchAlarm, "no alarm with that serial number is active"},
        {result::kBadRequest, "a cell is missing, of the wrong type or out of bounds"},
        {result::kOutboxFull, "too many notifications wait"},
        {result::kAlreadySubscribed, "another connection carries the notifications"},
        {result::kStoreFailed, "the file of the alarms cannot be written"},
        {receiver::kNoSuchReceiver, "no receiver has that index"},
        {receiver::kAgentBusy, "the agent is busy"},
    };
    return nameIn(names, code);
}

std::string PackageNames::type(unsigned type)
{
    static const Names names = {{CTLVCell::TLV_NONE, "none"},
                                {CTLVCell::TLV_OCTETS, "bytes"},
                                {CTLVCell::TLV_STRING, "text"},
                                {CTLVCell::TLV_UINT, "unsigned"},
                                {CTLVCell::TLV_INT, "signed"}};
    const auto name = nameIn(names, type);
    return name.empty() ? "number" : name;
}

}  // namespace talvik::ctl
