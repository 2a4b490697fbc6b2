#include "tools/catalogue/json_document.h"

#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/ordinary_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr std::size_t kBlock = 1024;
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::vector<std::size_t> lineStarts(const std::string& text)
{
    std::vector<std::size_t> starts = {0};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool firstOfTwo = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (text[i] == '\n' || (text[i] == '\r' && !firstOfTwo)) {
            starts.push_back(i + 1);
        }
    }
    return starts;
}

/// How many characters start in this part of the text.
std::size_t charactersIn(const std::string& text, std::size_t from, std::size_t to)
{
    const auto* bytes = text.data();
    return (to - from) -
           static_cast<std::size_t>(std::count_if(bytes + from, bytes + to, continuesCharacter));
}

std::vector<std::size_t> charactersBeforeBlocks(const std::string& text)
{
    std::vector<std::size_t> counts = {0};
    for (std::size_t end = kBlock; end <= text.size(); end += kBlock) {
        counts.push_back(counts.back() + charactersIn(text, end - kBlock, end));
    }
    return counts;
}

/// How many bytes of UTF-8 the \u escape at `at` stands for, and how long it is itself. A pair of
/// surrogates is one character.
std::pair<std::size_t, std::size_t> unicodeEscape(const std::string& text, std::size_t at)
{
    const auto unit = std::strtoul(text.substr(at + 2, 4).c_str(), nullptr, 16);
    if (unit >= 0xD800 && unit < 0xDC00) {
        return {4, 12};
    }
    return {unit < 0x80 ? 1 : (unit < 0x800 ? 2 : 3), 6};
}

}  // namespace

JsonDocument JsonDocument::load(const std::string& path)
{
    return JsonDocument(path, readOrdinaryFile(path));
}

JsonDocument::JsonDocument(std::string path, std::string text)
    : path_(std::move(path)),
      text_(std::move(text))
{
    if (text_.compare(0, std::strlen(kByteOrderMark), kByteOrderMark) == 0) {
        text_.erase(0, std::strlen(kByteOrderMark));
    }
    starts_ = lineStarts(text_);
    characters_ = charactersBeforeBlocks(text_);
    const Json::CharReaderBuilder asTheModule;
    if (!parse(asTheModule, root_, errors_)) {
        root_ = Json::Value();
        errors_ = errors_.empty() ? "* Line 1, Column 1\n  no reason given\n" : errors_;
    } else {
        errors_.clear();
    }
}

bool JsonDocument::parse(const Json::CharReaderBuilder& builder, Json::Value& root,
                         std::string& errors) const
{
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        return reader->parse(text_.data(), text_.data() + text_.size(), &root, &errors);
    } catch (const std::exception& error) {  // nested too deeply
        errors = std::string("* Line 1, Column 1\n  ") + error.what() + "\n";
        return false;
    }
}

bool JsonDocument::isJson(Findings& findings) const
{
    if (!errors_.empty()) {
        addReaderError(errors_, findings);
        return false;
    }
    Json::CharReaderBuilder strict;
    strict["rejectDupKeys"] = true;
    strict["failIfExtra"] = true;
    Json::Value ignored;
    std::string errors;
    if (!parse(strict, ignored, errors)) {
        addReaderError(errors, findings);
    }
    return true;
}

void JsonDocument::addReaderError(const std::string& errors, Findings& findings) const
{
    std::size_t line = 1;
    std::size_t column = 1;
    std::sscanf(errors.c_str(), "* Line %zu, Column %zu", &line, &column);
    const auto start = std::min(errors.find("\n  "), errors.size() - 1) + 1;
    const auto first = errors.find_first_not_of(' ', start);
    const auto reason = errors.substr(first, errors.find('\n', first) - first);
    auto place = placeAt(line, column);
    if (!errors_.empty()) {
        findings.add(kind::kNotJson, std::move(place),
                     "this is not JSON, so the module loads no alarm at all (\"parse root element "
                     "failed!\"): " +
                         reason,
                     "correct the file here or just before");
    } else if (reason.find("Extra non-whitespace") == 0) {
        findings.add(kind::kTextAfterEnd, std::move(place),
                     "the module reads nothing from here on: the JSON value ends before it",
                     "remove what follows, or join it with what comes before");
    } else {
        findings.add(kind::kRepeatedMember, std::move(place),
                     "this member stands in its object twice, and the module uses the last one: " +
                         reason,
                     "remove one of them; later ones in the file are found when this is corrected");
    }
}

Place JsonDocument::placeOf(const Json::Value& value) const
{
    return placeAt(static_cast<std::size_t>(value.getOffsetStart()));
}

Place JsonDocument::placeIn(const Json::Value& value, std::size_t index) const
{
    auto offset = static_cast<std::size_t>(value.getOffsetStart()) + 1;  // behind the quote
    for (std::size_t done = 0; done < index && offset < text_.size();) {
        if (text_[offset] != '\\') {
            ++done;
            ++offset;
            continue;
        }
        const bool unicode = offset + 1 < text_.size() && text_[offset + 1] == 'u';
        const auto [bytes, length] =
            unicode ? unicodeEscape(text_, offset) : std::make_pair<std::size_t, std::size_t>(1, 2);
        if (done + bytes > index) {
            break;  // in the middle of the character
        }
        done += bytes;
        offset += length;
    }
    return placeAt(offset);
}

Place JsonDocument::placeAt(std::size_t offset) const
{
    offset = std::min(offset, text_.size());
    const auto line = std::upper_bound(starts_.begin(), starts_.end(), offset) - 1;
    return {path_, static_cast<std::size_t>(line - starts_.begin()) + 1,
            charactersBefore(offset) - charactersBefore(*line) + 1};
}

std::size_t JsonDocument::charactersBefore(std::size_t offset) const
{
    const auto block = offset / kBlock;
    return characters_[block] + charactersIn(text_, block * kBlock, offset);
}

Place JsonDocument::placeAt(std::size_t line, std::size_t byteColumn) const
{
    const auto known = std::clamp<std::size_t>(line, 1, starts_.size());
    return placeAt(starts_[known - 1] + std::max<std::size_t>(byteColumn, 1) - 1);
}

}  // namespace talvik::ctl
