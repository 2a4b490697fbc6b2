#include "tests/support/plain_alarm_texts.h"

namespace talvik::test::plain {

namespace {

constexpr auto kNone = std::string::npos;

Fields split(const std::string& text, char separator)
{
    Fields fields{""};
    for (const char c : text) {
        if (c == separator) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The digits that the text starts with.
unsigned leadingDigits(const std::string& text)
{
    unsigned number = 0;
    for (const char c : text) {
        if (!isDigit(c)) {
            break;
        }
        number = number * 10 + static_cast<unsigned>(c - '0');
    }
    return number;
}

/// As the C library reads a number: blanks, then a sign, then digits.
int signedNumber(std::string text)
{
    while (!text.empty() && std::string(" \t\n\v\f\r").find(text.front()) != kNone) {
        text.erase(0, 1);
    }
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) {
        text.erase(0, 1);
    }
    const int number = static_cast<int>(leadingDigits(text));
    return negative ? -number : number;
}

/// What a line shows of a text: it ends at a zero byte.
std::string shown(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

bool has(const Pairs& pairs, std::size_t position)
{
    for (const auto& [taken, value] : pairs) {
        if (taken == position) {
            return true;
        }
    }
    return false;
}

/// The value of one placeholder of the detail, by the items of the map that belongs to it.
std::string mapped(const Fields& fields, unsigned position, const std::string& items)
{
    if (fields.size() < position + 1) {
        return "--";
    }
    for (const std::string& item : split(items, ';')) {
        const Fields parts = split(item, ':');
        if (parts.size() == 2 && parts[0] == fields[position]) {
            return parts[1];
        }
    }
    return fields[position];
}

std::string numbered(const char* before, int number, const char* after)
{
    return before + std::to_string(number) + after;
}

}  // namespace

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    std::size_t offset = 0;
    for (;;) {
        const std::size_t hit = text.find(from, offset);
        if (hit == kNone) {
            return text;
        }
        text.replace(hit, from.size(), to);
        offset = hit + to.size();
    }
}

Fields fieldsOf(const std::string& params)
{
    if (params.empty()) {
        return {};
    }
    Fields fields = split(params, ',');
    for (std::string& field : fields) {
        field = replaced(field, "&#44;", ",");
        field = replaced(field, "&#38;", "&");
    }
    return fields;
}

void enumerate(const Catalogue& catalogue, unsigned long long alarmId, const Pairs& enumPositions,
               Fields& fields, Lines& lines)
{
    for (const auto& [position, type] : enumPositions) {
        if (position >= fields.size()) {
            lines.push_back({"warn", 0x10014,
                             "alarm " + std::to_string(alarmId) + " parameter enume value " +
                                 std::to_string(static_cast<int>(position)) +
                                 " is out of rang[0, " + std::to_string(fields.size()) + "]"});
            continue;
        }
        const std::string key = type + "_" + fields[position];
        const auto literal = catalogue.literals.find(key);
        if (literal != catalogue.literals.end()) {
            fields[position] = literal->second;
        } else {
            lines.push_back({"warn", 0x10031,
                             "not found enum value literal desc of key " + shown(key) + " in map"});
        }
    }
}

void pairUp(const Fields& fields, const std::string& detail, Pairs& pairs, Lines& lines)
{
    for (std::size_t offset = 0;;) {
        const std::size_t mark = detail.find("##", offset);
        if (mark == kNone) {
            break;
        }
        const std::string digits = detail.substr(mark + 2, 2);
        if (digits.empty()) {
            return;
        }
        const unsigned position = leadingDigits(digits);
        const std::size_t open = detail.find('{', mark);
        std::string items;
        if (open != kNone && open - mark <= 7) {
            const std::size_t close = detail.find('}', mark);
            if (close == kNone) {
                lines.push_back({"debug", 0xFFFF, "parserParmeterByDetail error"});
                return;
            }
            // Nothing is between a closing brace and an opening one behind it.
            items = close > open ? detail.substr(open + 1, close - open - 1) : "";
        }
        pairs.emplace_back(position, mapped(fields, position, items));
        offset = mark + 2;
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!has(pairs, i)) {
            pairs.emplace_back(static_cast<unsigned>(i), fields[i]);
        }
    }
}

void removeBraces(std::string& text, Lines& lines)
{
    for (;;) {
        // What stands before the last block holds no "{", so searching from the start is the same.
        const std::size_t open = text.find('{');
        if (open == kNone) {
            return;
        }
        const std::size_t close = text.find('}', open);
        if (close == kNone) {
            lines.push_back({"debug", 0xFFFF, "replaceBraceWithEmptyString error"});
            return;
        }
        text.erase(open, close - open + 1);
    }
}

bool writeOver(std::string& text, int position, std::size_t start, std::size_t length,
               const Pairs& pairs)
{
    for (const auto& [taken, value] : pairs) {
        if (position >= 0 && taken == static_cast<unsigned>(position)) {
            text = text.substr(0, start) + value +
                   (text.size() - start > length ? text.substr(start + length) : "");
            return true;
        }
    }
    return false;
}

int fill(const std::string& text, const Pairs& pairs, std::string& out, Lines& lines,
         const Limit& limit)
{
    std::string worked = text;
    const int count = static_cast<int>(pairs.size());
    std::size_t mark = count == 0 ? kNone : worked.find("##");
    for (std::size_t step = 0; mark != kNone; ++step) {
        if (step == limit.steps || worked.size() > limit.size) {
            return kDoesNotEnd;
        }
        const std::string digits = worked.substr(mark + 2, 2);
        if (digits.empty()) {
            lines.push_back({"error", 0x10015, "no alarm parameter pos"});
            return kNoPosition;
        }
        const int position = signedNumber(digits);
        if (position < 0 || position >= count) {
            lines.push_back({"warn", 0x1002F,
                             numbered("alarm parameter pos ", position, " is out of range[0, ") +
                                 numbered("", count - 1, "]")});
            worked.replace(mark, 2 + digits.size(), "None");
        } else if (!writeOver(worked, position, mark, 4, pairs)) {
            lines.push_back({"warn", 0x1002F,
                             numbered("alarm parameter pos ", position,
                                      " is not in the parameters of the detail")});
            worked.replace(mark, 2 + digits.size(), "--");
        }
        if (limit.afterStep) {
            limit.afterStep(worked);
        }
        mark = worked.find("##", mark);
    }
    out = worked;
    return 0;
}

void lookUp(const Catalogue& catalogue, unsigned long long alarmId, const std::string& params,
            Texts& texts, Lines& lines, const Limit& limit)
{
    texts.result = -1;
    if (catalogue.alarms.empty()) {
        lines.push_back({"error", 0x10015, "alarm config info is empty."});
        return;
    }
    if (alarmId == 0) {
        lines.push_back({"error", 0x10014, "invalid alarm id 0"});
        return;
    }
    const auto found = catalogue.alarms.find(alarmId);
    if (found == catalogue.alarms.end()) {
        lines.push_back(
            {"warn", 0x1001E, "alarm " + std::to_string(alarmId) + " desn't need to be parsed."});
        return;
    }
    const Definition& alarm = found->second;

    Fields fields = fieldsOf(params);
    for (std::string& field : fields) {
        if (field.empty()) {
            field = "--";
        }
    }
    enumerate(catalogue, alarmId, alarm.enumPositions, fields, lines);
    texts.id32 = static_cast<unsigned>(alarmId & 0xFFFFFFFFU);

    std::string detail = alarm.detail;
    Pairs pairs;
    pairUp(fields, detail, pairs, lines);
    removeBraces(detail, lines);

    const auto make = [&](const std::string& from, const std::string& defined, std::string& out,
                          const std::string& what, const std::string& outcome) {
        texts.result = fill(from, pairs, out, lines, limit);
        if (texts.result == kNoPosition) {
            lines.push_back({"error", 0x1002E,
                             "parse alarm " + what + " " + shown(defined) + " using parameter " +
                                 shown(params) + outcome + shown(out) + "."});
        }
        return texts.result == 0;
    };
    if (make(alarm.location, alarm.location, texts.location, "location",
             " failed. parsed location is ") &&
        make(detail, alarm.detail, texts.detail, "detail", " failed, parsed detail is ") &&
        make(alarm.suggestion, alarm.suggestion, texts.suggestion, "suggestion",
             " failed, parsed detail is ")) {
        texts.name = alarm.name;
    }
}

}  // namespace talvik::test::plain
