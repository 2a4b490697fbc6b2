#include "tools/receiver_output.h"

#include "tools/folded_text.h"
#include "tools/safe_text.h"
#include "tools/trap_names.h"

#include <algorithm>
#include <iterator>

namespace talvik::ctl {

namespace {

const Columns kCuttable = {{1, 15}, {5, 8}, {7, 16}};  // address, user, state

TableLine lineOf(const ReceiverStatus& receiver)
{
    return {std::to_string(receiver.index),
            printable(receiver.address),
            std::to_string(receiver.port),
            trapVersionName(receiver.version),
            trapTypeName(receiver.type),
            printable(receiver.user),
            receiver.inform ? "inform" : "trap",
            {printable(receiver.state), isInTrouble(receiver) ? Tone::Warning : Tone::Good},
            std::to_string(receiver.sent),
            std::to_string(receiver.failed),
            std::to_string(receiver.answered),
            std::to_string(receiver.givenUp),
            std::to_string(receiver.waiting)};
}

Json::Value jsonOf(std::uint64_t number)
{
    return static_cast<Json::UInt64>(number);
}

}  // namespace

bool isInTrouble(const ReceiverStatus& receiver)
{
    return receiver.state != "ok";
}

Json::Value receiverJson(const ReceiverStatus& receiver)
{
    Json::Value value;
    value["index"] = receiver.index;
    value["address"] = validUtf8(receiver.address);
    value["port"] = receiver.port;
    value["version"] = trapVersionName(receiver.version);
    value["versionCode"] = receiver.version;
    value["type"] = trapTypeName(receiver.type);
    value["typeCode"] = receiver.type;
    value["user"] = validUtf8(receiver.user);
    value["inform"] = receiver.inform;
    value["state"] = validUtf8(receiver.state);
    value["sent"] = jsonOf(receiver.sent);
    value["failed"] = jsonOf(receiver.failed);
    value["answered"] = jsonOf(receiver.answered);
    value["givenUp"] = jsonOf(receiver.givenUp);
    value["waiting"] = jsonOf(receiver.waiting);
    return value;
}

std::string receiverTableText(const std::vector<ReceiverStatus>& receivers, const TableStyle& style)
{
    if (receivers.empty()) {
        return foldedText("no trap receivers", style, 0);
    }
    std::vector<TableLine> lines = {{"INDEX", "ADDRESS", "PORT", "VERSION", "TYPE", "USER", "SENDS",
                                     "STATE", "SENT", "FAILED", "ANSWERED", "GIVEN UP", "WAITING"}};
    std::transform(receivers.begin(), receivers.end(), std::back_inserter(lines), lineOf);
    return alignedTable(lines, style, kCuttable);
}

Json::Value receiversJson(const std::vector<ReceiverStatus>& receivers)
{
    Json::Value list(Json::arrayValue);
    for (const auto& receiver : receivers) {
        list.append(receiverJson(receiver));
    }
    return list;
}

}  // namespace talvik::ctl
