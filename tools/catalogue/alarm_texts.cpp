#include "tools/catalogue/alarm_texts.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/step_log.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <set>

namespace talvik::ctl {

namespace {

constexpr auto kNowhere = std::string_view::npos;
constexpr unsigned kSampleFields = 100;
constexpr std::size_t kFurthestBrace = 7;  // from the start of the "##"

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

unsigned PlaceholderText::shownNumber() const
{
    return static_cast<unsigned>(std::strtol(std::string(position).c_str(), nullptr, 10));
}

std::vector<PlaceholderText> placeholdersIn(std::string_view text, bool skipBlocks)
{
    const auto blocks = skipBlocks ? blocksIn(text) : std::vector<Block>();
    std::vector<PlaceholderText> found;
    auto at = text.find(kPlaceholderMark);
    while (at != kNowhere) {
        auto behind = at + kPlaceholderMark.size();
        if (!isInside(blocks, at)) {
            const auto position = text.substr(behind, kPositionDigits);
            found.push_back({at, position});
            behind += std::min(position.find('{'), position.size());  // it may look like a mark
        }
        at = text.find(kPlaceholderMark, behind);
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

DetailMarks marksIn(std::string_view detail)
{
    DetailMarks found{{}, kNowhere};
    std::set<unsigned> seen;
    for (auto at = detail.find(kPlaceholderMark); at != kNowhere;
         at = detail.find(kPlaceholderMark, at + kPlaceholderMark.size())) {
        const PlaceholderText mark{at,
                                   detail.substr(at + kPlaceholderMark.size(), kPositionDigits)};
        const auto open = detail.find('{', mark.at);
        const bool isNear = open != kNowhere && open - mark.at <= kFurthestBrace;
        const auto close = detail.find('}', mark.at);
        if (mark.position.empty() || (isNear && close == kNowhere)) {
            found.stop = mark.at;
            break;
        }
        const bool takes = isNear && open < close;
        found.marks.push_back(
            {mark.at, mark.number(), seen.insert(mark.number()).second, takes ? open : kNowhere});
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

bool EnumeratedParameter::isWellFormed() const
{
    const auto digits = item.substr(0, item.find('='));
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), isDigit) &&
           position < kSampleFields && !type.empty() && type.front() != ' ' && type.back() != ' ';
}

std::vector<EnumeratedParameter> enumeratedParameters(const Definition& definition)
{
    const std::string_view text = definition.of(Member::ParamDesc).text;
    std::vector<EnumeratedParameter> found;
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find(',', at), text.size());
        const auto item = text.substr(at, end - at);
        const auto sign = item.find('=');
        if (sign != kNowhere) {
            const auto position = std::strtol(std::string(item).c_str(), nullptr, 10);
            found.push_back(
                {at, item, static_cast<unsigned>(position), std::string(item.substr(sign + 1))});
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
