#include "tools/watch_picture.h"

#include "tools/alarm_output.h"
#include "tools/folded_text.h"
#include "tools/receiver_output.h"
#include "tools/safe_text.h"
#include "tools/watch_output.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <sstream>

namespace talvik::ctl {

namespace {

using Kind = Change::Kind;
using Lines = std::vector<std::string>;

constexpr std::size_t kMostNews = 10;    // lines
constexpr std::size_t kShareOfNews = 3;  // of the lines there are, one in so many

std::string fitted(const std::string& text, const TableStyle& style)
{
    return style.columns == 0 ? text : cutToWidth(text, style.columns);
}

Lines linesOf(const std::string& text)
{
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool isNews(const Change& change)
{
    return change.kind != Kind::Active && change.kind != Kind::Receiver &&
           change.kind != Kind::Away;
}

Lines newsLines(const std::vector<Change>& changes, const TableStyle& style, std::size_t room)
{
    Lines news;
    for (const auto& change : changes) {
        if (isNews(change)) {
            news.push_back(fitted("  " + changeLine(change, {0, false}), style));
        }
    }
    if (room == 0) {
        return {};
    }
    if (news.empty()) {
        return {fitted("nothing new since the last look", style)};
    }
    if (room < 3 && room <= news.size()) {
        return {fitted(std::to_string(news.size()) + " new since the last look", style)};
    }
    if (news.size() >= room) {
        const auto left = news.size() - (room - 2);
        news.resize(room - 2);
        news.push_back(fitted("  and " + std::to_string(left) + " more", style));
    }
    news.insert(news.begin(), fitted("since the last look:", style));
    return news;
}

/// Why there is no answer, in as many lines as there are; the last one tells if that is not all.
Lines failureLines(const Failure& failure, const TableStyle& style, std::size_t room)
{
    auto lines = foldedLines(printable(failure.what()) + "; " + printable(failure.advice()), style);
    if (lines.size() > room) {
        lines.resize(room);
        if (room != 0) {
            lines.back() = cutToWidth(lines.back() + " \u2026", style.columns);
        }
    }
    for (auto& line : lines) {
        line = style.colors ? colored(line, Tone::Bad) : line;
    }
    return lines;
}

/// A table of so many rows as have room, and what tells the number of the others. Empty if there is
/// not even room for one row.
Lines tableLines(std::size_t rows, std::size_t room,
                 const std::function<Lines(std::size_t shown)>& table)
{
    auto shown = std::min(rows, room);
    while (shown != 0 || rows == 0) {
        auto lines = table(shown);
        if (lines.size() <= room) {
            return lines;
        }
        if (shown == 0) {
            break;
        }
        const auto linesOfARow = lines.size() / shown + 1;  // no less than it takes
        shown -= std::min(shown, std::max<std::size_t>((lines.size() - room) / linesOfARow, 1));
    }
    return {};
}

/// Tells the number of those that have no room, unless the head alone has to, for want of a line.
Lines alarmLines(const std::vector<ActiveAlarm>& alarms, const TableStyle& style, std::size_t room)
{
    const auto newest = [&](std::size_t shown) {
        return linesOf(activeAlarmsText(
            {alarms.end() - static_cast<std::ptrdiff_t>(shown), alarms.end()}, style));
    };
    const auto lines = tableLines(alarms.size(), room, [&](std::size_t shown) {
        const auto hidden = alarms.size() - shown;
        auto some = newest(shown);
        if (hidden != 0) {
            some.insert(
                some.begin(),
                fitted(std::to_string(hidden) + " more with smaller serial numbers", style));
        }
        return some;
    });
    return lines.empty() ? tableLines(alarms.size(), room, newest) : lines;
}

/// `receivers` is sorted: those in trouble first.
Lines receiverLines(const std::vector<ReceiverStatus>& receivers, const TableStyle& style,
                    std::size_t room)
{
    return tableLines(receivers.size(), room, [&](std::size_t shown) {
        const auto end = receivers.begin() + static_cast<std::ptrdiff_t>(shown);
        auto lines = linesOf(receiverTableText({receivers.begin(), end}, style));
        if (shown != receivers.size()) {
            const auto inTrouble = std::count_if(end, receivers.end(), isInTrouble);
            const auto more =
                "and " + std::to_string(receivers.size() - shown) + " more" +
                (inTrouble == 0 ? std::string() : ", " + std::to_string(inTrouble) + " in trouble");
            lines.push_back(fitted(more, style));
        }
        return lines;
    });
}

std::vector<ReceiverStatus> troubleFirst(std::vector<ReceiverStatus> receivers)
{
    std::stable_partition(receivers.begin(), receivers.end(), isInTrouble);
    return receivers;
}

/// A part of the picture that takes what room it gets.
using Section = std::function<Lines(std::size_t room)>;

/// With a blank line in front of it.
Section apart(const Section& section)
{
    return [section](std::size_t room) {
        auto lines = room < 2 ? Lines() : section(room - 1);
        if (!lines.empty()) {
            lines.insert(lines.begin(), std::string());
        }
        return lines;
    };
}

/// Each gets half of the room, and what the other one does not need. Where half of it is not enough
/// for any of the first, it gets as much as it takes.
Lines shared(const Section& first, const Section& second, std::size_t room)
{
    const auto wanted = first(room).size();
    auto lower = second(std::max(room / 2, room - wanted));
    auto share = room - lower.size();
    auto both = first(share);
    while (both.empty() && share < room) {
        both = first(++share);
    }
    lower = second(room - both.size());
    both.insert(both.end(), lower.begin(), lower.end());
    return both;
}

Lines headLines(const Look& look, const TableStyle& style)
{
    Lines head = {localIsoTime(look.time) + "  Ctrl-C ends"};
    if (look.alarms.rows) {
        head.push_back("active alarms: " + std::to_string(look.alarms.rows->size()));
    }
    if (look.receivers.rows) {
        const auto& rows = *look.receivers.rows;
        head.push_back("trap receivers: " + std::to_string(rows.size()) + ", " +
                       std::to_string(std::count_if(rows.begin(), rows.end(), isInTrouble)) +
                       " in trouble");
    }
    for (auto& line : head) {
        line = fitted(line, style);
    }
    return head;
}

template <typename Row, typename Show>
Section sectionOf(const Answered<Row>& answered, const TableStyle& style, const Show& show)
{
    return apart([&answered, &style, show](std::size_t room) {
        if (answered.failure) {
            return failureLines(*answered.failure, style, room);
        }
        return answered.rows ? show(room) : Lines();
    });
}

}  // namespace

std::string watchPicture(const Look& look, const std::vector<Change>& changes,
                         const TableStyle& style, std::size_t rows)
{
    const auto room = std::max<std::size_t>(rows, 2) - 1;
    auto picture = headLines(look, style);
    if (picture.size() > room) {  // the time is what is missed least
        picture.erase(picture.begin());
        picture.resize(std::min(picture.size(), room));
    }
    const auto left = room - picture.size();
    const auto news = newsLines(
        changes, style, std::min({left, kMostNews, std::max<std::size_t>(left / kShareOfNews, 1)}));
    picture.insert(picture.end(), news.begin(), news.end());

    const auto receivers =
        troubleFirst(look.receivers.rows.value_or(std::vector<ReceiverStatus>()));
    const auto tables = shared(
        sectionOf(look.alarms, style,
                  [&](std::size_t some) { return alarmLines(*look.alarms.rows, style, some); }),
        sectionOf(look.receivers, style,
                  [&](std::size_t some) { return receiverLines(receivers, style, some); }),
        room - picture.size());
    picture.insert(picture.end(), tables.begin(), tables.end());

    std::string text;
    for (const auto& line : picture) {
        text += line + "\n";
    }
    return text;
}

}  // namespace talvik::ctl
