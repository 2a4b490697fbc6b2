#include "bench/text_expanders.h"

#include <sstream>

namespace talvik::bench {

namespace {

std::size_t numberAt(std::string_view text, std::size_t at)
{
    return static_cast<std::size_t>(text[at] - '0') * 10 +
           static_cast<std::size_t>(text[at + 1] - '0');
}

std::vector<std::pair<std::string, std::string>> valuesOf(std::string_view block)
{
    std::vector<std::pair<std::string, std::string>> values;
    std::istringstream items{std::string(block)};
    for (std::string item; std::getline(items, item, ';');) {
        const auto colon = item.find(':');
        values.emplace_back(item.substr(0, colon), item.substr(colon + 1));
    }
    return values;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> fields;
    std::istringstream stream(text);
    for (std::string field; std::getline(stream, field, separator);) {
        fields.push_back(field);
    }
    return fields;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

/// Resolves the value map behind the placeholder `key`, if it has one.
void resolveValueMap(std::string& text, const std::string& key, const std::string& field)
{
    const auto at = text.find(key + "{");
    if (at == std::string::npos) {
        return;
    }
    const auto open = at + key.size();
    const auto close = text.find('}', open);
    std::string shown = field;
    for (const auto& item : split(text.substr(open + 1, close - open - 1), ';')) {
        const auto parts = split(item, ':');
        if (parts.size() == 2 && parts[0] == field) {
            shown = parts[1];
        }
    }
    text.replace(at, close + 1 - at, shown);
}

}  // namespace

PrecompiledText::PrecompiledText(std::string_view text)
{
    for (auto hit = text.find("##"); hit != std::string_view::npos; hit = text.find("##")) {
        Piece piece{std::string(text.substr(0, hit)), numberAt(text, hit + 2), {}};
        text.remove_prefix(hit + 4);
        if (!text.empty() && text.front() == '{') {
            const auto close = text.find('}');
            piece.values = valuesOf(text.substr(1, close - 1));
            text.remove_prefix(close + 1);
        }
        pieces_.push_back(std::move(piece));
    }
    rest_ = text;
}

void PrecompiledText::expand(const std::vector<std::string_view>& fields, std::string& out) const
{
    out.clear();
    for (const auto& piece : pieces_) {
        out += piece.before;
        std::string_view shown = fields[piece.position];
        for (const auto& [raw, value] : piece.values) {
            if (raw == shown) {
                shown = value;
                break;
            }
        }
        out += shown;
    }
    out += rest_;
}

void splitFields(std::string_view parameters, std::vector<std::string_view>& fields)
{
    fields.clear();
    for (auto comma = parameters.find(','); comma != std::string_view::npos;
         comma = parameters.find(',')) {
        fields.push_back(parameters.substr(0, comma));
        parameters.remove_prefix(comma + 1);
    }
    fields.push_back(parameters);
}

std::string expandNaively(std::string text, const std::string& parameters)
{
    const auto fields = split(parameters, ',');
    for (std::size_t position = 0; position < fields.size(); ++position) {
        const std::string key = (position < 10 ? "##0" : "##") + std::to_string(position);
        resolveValueMap(text, key, fields[position]);
        replaceAll(text, key, fields[position]);
    }
    return text;
}

}  // namespace talvik::bench
