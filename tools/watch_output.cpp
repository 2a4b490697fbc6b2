#include "tools/watch_output.h"

#include "tools/alarm_output.h"
#include "tools/folded_text.h"
#include "tools/receiver_output.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

namespace talvik::ctl {

namespace {

using Kind = Change::Kind;

const char* eventOf(Kind kind)
{
    switch (kind) {
    case Kind::Active:
        return "active";
    case Kind::Raised:
        return "raised";
    case Kind::Cleared:
        return "cleared";
    case Kind::Receiver:
        return "receiver";
    case Kind::ReceiverAdded:
        return "receiver-added";
    case Kind::ReceiverChanged:
        return "receiver-changed";
    case Kind::ReceiverRemoved:
        return "receiver-removed";
    case Kind::Away:
        return "away";
    case Kind::Back:
        break;
    }
    return "back";
}

std::string alarmText(const Change& change, const TableStyle& style)
{
    std::string text = std::string(eventOf(change.kind)) + " alarm";
    for (const auto& cell : activeAlarmLine(*change.alarm)) {
        const bool toned = style.colors && change.kind != Kind::Cleared;
        text += cell.text.empty() ? "" : "  " + (toned ? colored(cell.text, cell.tone) : cell.text);
    }
    return text;
}

std::string counter(const char* name, std::uint64_t value, std::uint64_t more)
{
    return std::string(", ") + name + " " + std::to_string(value) +
           (more == 0 ? "" : " (+" + std::to_string(more) + ")");
}

std::string receiverText(const Change& change, const TableStyle& style)
{
    const auto& row = *change.receiver;
    auto text = "receiver " + std::to_string(row.index) + " " + printable(row.address) + " port " +
                std::to_string(row.port);
    if (change.kind == Kind::ReceiverRemoved) {
        return text + " removed";
    }
    const auto state = printable(row.state);
    text += change.kind == Kind::ReceiverAdded ? " added: " : ": ";
    text += style.colors ? colored(state, isInTrouble(row) ? Tone::Warning : Tone::Good) : state;
    return text + counter("sent", row.sent, change.counted.sent) +
           counter("failed", row.failed, change.counted.failed) +
           counter("answered", row.answered, change.counted.answered) +
           counter("given up", row.givenUp, change.counted.givenUp) +
           counter("waiting", row.waiting, 0);
}

std::string whatOf(const Change& change)
{
    return change.ofAlarms ? "alarms" : "traps";
}

}  // namespace

std::string changeLine(const Change& change, const TableStyle& style)
{
    if (change.alarm) {
        return alarmText(change, style);
    }
    if (change.receiver) {
        return receiverText(change, style);
    }
    if (change.kind == Kind::Back) {
        return whatOf(change) + ": there are answers again";
    }
    const auto why = printable(change.failure->what()) + "; " + printable(change.failure->advice());
    return whatOf(change) + ": " + (style.colors ? colored(why, Tone::Bad) : why);
}

std::string changeText(const Change& change, std::uint64_t time, const TableStyle& style)
{
    constexpr std::size_t kIndent = 4;
    return foldedText(localIsoTime(time) + "  " + changeLine(change, style), style, kIndent);
}

std::string changeJson(const Change& change, std::uint64_t time)
{
    Json::Value value;
    value["time"] = static_cast<Json::UInt64>(time);
    value["event"] = eventOf(change.kind);
    value["what"] = whatOf(change);
    if (change.alarm) {
        value["alarm"] = activeAlarmJson(*change.alarm);
    }
    if (change.receiver) {
        value["receiver"] = receiverJson(*change.receiver);
    }
    if (change.kind == Kind::ReceiverChanged) {
        auto& counted = value["counted"];
        counted["sent"] = static_cast<Json::UInt64>(change.counted.sent);
        counted["failed"] = static_cast<Json::UInt64>(change.counted.failed);
        counted["answered"] = static_cast<Json::UInt64>(change.counted.answered);
        counted["givenUp"] = static_cast<Json::UInt64>(change.counted.givenUp);
    }
    if (change.failure) {
        value["reason"] = validUtf8(change.failure->what());
        value["advice"] = validUtf8(change.failure->advice());
    }
    return jsonLine(value);
}

}  // namespace talvik::ctl
