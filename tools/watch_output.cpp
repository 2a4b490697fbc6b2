#include "tools/watch_output.h"

#include "tools/alarm_output.h"
#include "tools/receiver_output.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

#include <algorithm>

namespace talvik::ctl {

namespace {

using Kind = Change::Kind;

constexpr std::size_t kMostChanges = 8;  // lines of a picture
constexpr std::size_t kLeastAlarms = 3;

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

std::string changeWithoutTime(const Change& change, const TableStyle& style)
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

bool isNews(const Change& change)
{
    return change.kind != Kind::Active && change.kind != Kind::Receiver &&
           change.kind != Kind::Away;
}

std::string changesPart(const std::vector<Change>& changes, const TableStyle& style)
{
    std::string text;
    std::size_t shown = 0;
    std::size_t left = 0;
    for (const auto& change : changes) {
        if (!isNews(change)) {
            continue;
        }
        if (shown == kMostChanges) {
            ++left;
            continue;
        }
        ++shown;
        const auto line = changeWithoutTime(change, {0, false});
        text += "  " + (style.columns > 2 ? cutToWidth(line, style.columns - 2) : line) + "\n";
    }
    if (left != 0) {
        text += "  and " + std::to_string(left) + " more\n";
    }
    return text.empty() ? "nothing new since the last look\n" : "since the last look:\n" + text;
}

template <typename Row>
std::string failureOf(const Answered<Row>& answered, const TableStyle& style)
{
    const auto why =
        printable(answered.failure->what()) + "; " + printable(answered.failure->advice());
    return (style.colors ? colored(why, Tone::Bad) : why) + "\n";
}

std::string alarmsPart(const Answered<ActiveAlarm>& alarms, const TableStyle& style,
                       std::size_t room)
{
    if (alarms.failure) {
        return failureOf(alarms, style);
    }
    const auto& rows = *alarms.rows;
    const auto shown = std::min(std::max(room, kLeastAlarms), rows.size());
    const auto hidden = rows.size() - shown;
    auto text = hidden == 0 ? std::string()
                            : std::to_string(hidden) + " more with smaller serial numbers\n";
    return text +
           activeAlarmsText({rows.end() - static_cast<std::ptrdiff_t>(shown), rows.end()}, style);
}

std::size_t linesOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

std::string changeText(const Change& change, std::uint64_t time, const TableStyle& style)
{
    return localIsoTime(time) + "  " + changeWithoutTime(change, style) + "\n";
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

std::string watchPicture(const Look& look, const std::vector<Change>& changes,
                         const TableStyle& style, std::size_t rows)
{
    const auto news = changesPart(changes, style);
    const bool withAlarms = look.alarms.rows || look.alarms.failure;
    std::string receivers;
    if (look.receivers.failure) {
        receivers = "\n" + failureOf(look.receivers, style);
    } else if (look.receivers.rows) {
        receivers = "\n" + receiverTableText(*look.receivers.rows, style);
    }
    auto heading = localIsoTime(look.time) + "  Ctrl-C ends\n";
    if (look.alarms.rows) {
        heading += "active alarms: " + std::to_string(look.alarms.rows->size()) + "\n";
    }
    constexpr std::size_t kOther = 5;  // blank lines, headings and where the cursor stands
    const auto taken = linesOf(news) + linesOf(receivers) + linesOf(heading) + kOther;
    const auto alarms =
        withAlarms ? "\n" + alarmsPart(look.alarms, style, rows > taken ? rows - taken : 0) : "";
    return heading + news + alarms + receivers;
}

}  // namespace talvik::ctl
