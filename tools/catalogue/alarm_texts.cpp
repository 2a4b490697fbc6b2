#include "tools/catalogue/alarm_texts.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/step_log.h"

#include <algorithm>
#include <charconv>

namespace talvik::ctl {

namespace {

constexpr auto kNowhere = std::string_view::npos;
constexpr unsigned kSampleFields = 100;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isInside(const std::vector<Block>& blocks, std::size_t at)
{
    return std::any_of(blocks.begin(), blocks.end(), [at](const Block& block) {
        return block.open < at && (block.close == kNowhere || at < block.close);
    });
}

}  // namespace

bool PlaceholderText::isTwoDigits() const
{
    return position.size() == kPositionDigits &&
           std::all_of(position.begin(), position.end(), isDigit);
}

unsigned PlaceholderText::number() const
{
    unsigned read = 0;
    std::from_chars(position.data(), position.data() + position.size(), read);
    return read;
}

std::vector<PlaceholderText> placeholdersIn(std::string_view text, bool skipBlocks)
{
    const auto blocks = skipBlocks ? blocksIn(text) : std::vector<Block>();
    std::vector<PlaceholderText> found;
    for (auto at = text.find(kPlaceholderMark); at != kNowhere;
         at = text.find(kPlaceholderMark, at + kPlaceholderMark.size())) {
        if (!isInside(blocks, at)) {
            found.push_back({at, text.substr(at + kPlaceholderMark.size(), kPositionDigits)});
        }
    }
    return found;
}

std::vector<Block> blocksIn(std::string_view text)
{
    std::vector<Block> found;
    auto open = text.find('{');
    while (open != kNowhere) {
        const auto close = text.find('}', open);
        found.push_back({open, close});
        open = close == kNowhere ? kNowhere : text.find('{', close);
    }
    return found;
}

bool MapItem::isWellFormed() const
{
    return std::count(text.begin(), text.end(), ':') == 1;
}

std::string MapItem::raw() const
{
    return std::string(text.substr(0, text.find(':')));
}

std::string MapItem::shown() const
{
    return std::string(text.substr(text.find(':') + 1));
}

std::vector<MapItem> itemsIn(std::string_view detail, const Block& block)
{
    std::vector<MapItem> items;
    for (auto at = block.open + 1; at < block.close;) {
        const auto end = std::min(detail.find(';', at), block.close);
        if (end > at) {
            items.push_back({at, detail.substr(at, end - at)});
        }
        at = end + 1;
    }
    return items;
}

std::vector<EnumeratedParameter> enumeratedParameters(const Definition& definition)
{
    const std::string_view text = definition.of(Member::ParamDesc).text;
    std::vector<EnumeratedParameter> found;
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find(',', at), text.size());
        const auto item = text.substr(at, end - at);
        const auto sign = item.find('=');
        unsigned position = 0;
        const auto* digitsEnd = item.data() + std::min(sign, item.size());
        const auto read = std::from_chars(item.data(), digitsEnd, position);
        if (sign != kNowhere && read.ec == std::errc() && read.ptr == digitsEnd) {
            found.push_back({at, position, std::string(item.substr(sign + 1))});
        }
        at = end + 1;
    }
    return found;
}

std::optional<std::string> filled(std::string_view text, const ValuePairs& pairs)
{
    StepLog log("talvikctl catalogue");
    std::string result;
    if (!fillPlaceholders(text, pairs, result, log)) {
        return std::nullopt;
    }
    return result;
}

std::vector<std::string> sampleFields()
{
    std::vector<std::string> fields;
    for (unsigned i = 0; i < kSampleFields; ++i) {
        fields.push_back("parameter " + std::to_string(i));
    }
    return fields;
}

}  // namespace talvik::ctl
