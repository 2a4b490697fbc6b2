#include "alarmconfig/alarm_text.h"

#include "alarmconfig/alarm_substitution.h"
#include "alarmconfig/step_log.h"
#include "platform/number_text.h"

#include <algorithm>
#include <bitset>
#include <set>
#include <string_view>

namespace {

using talvik::kNoValue;
using talvik::kPlaceholderMark;
using talvik::kPositionDigits;

constexpr auto kNowhere = std::string_view::npos;

// Contract: counted from the start of the "##"; the brace need not follow the position at once, so
// that a very close placeholder's brace counts for the one before it, too.
constexpr std::size_t kFurthestBrace = 7;

/// Positions of pairs; few are above two digits.
class PositionSet {
public:
    void insert(unsigned position)
    {
        if (position < low_.size()) {
            low_.set(position);
        } else {
            high_.insert(position);
        }
    }

    bool contains(std::size_t position) const
    {
        return position < low_.size()
                   ? low_.test(position)
                   : !high_.empty() && high_.count(static_cast<unsigned>(position)) != 0;
    }

private:
    std::bitset<128> low_;
    std::set<unsigned> high_;
};

/// Cuts off and returns what stands before the next `separator`.
std::string_view cutField(std::string_view& rest, char separator)
{
    const auto end = std::min(rest.find(separator), rest.size());
    const auto field = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return field;
}

/// What the items raw:shown of `map` show instead of `raw`; `raw` itself when none is for it.
std::string_view shownBy(std::string_view map, std::string_view raw)
{
    while (!map.empty()) {
        auto shown = cutField(map, ';');
        const auto colon = shown.find(':');
        if (colon == kNowhere || shown.substr(0, colon) != raw) {
            continue;
        }
        shown.remove_prefix(colon + 1);
        if (shown.find(':') == kNowhere) {  // two parts exactly
            return shown;
        }
    }
    return raw;
}

/// Walks the placeholders of a detail and knows the value of each.
class DetailWalk {
public:
    DetailWalk(std::string_view detail, const std::vector<std::string>& fields,
               talvik::StepLog& log)
        : detail_(detail),
          fields_(fields),
          log_(log)
    {
    }

    /// Appends the pair of the placeholder at `mark`; false when the walk ends there.
    bool appendPair(std::size_t mark, talvik::ValuePairs& pairs)
    {
        const auto digits = detail_.substr(mark + kPlaceholderMark.size(), kPositionDigits);
        if (digits.empty()) {
            return false;
        }
        // Contract: not the conversion that fills the texts; see `fillPlaceholders`.
        const unsigned position = KelUtility::StrToUint(std::string(digits));
        std::string_view map;
        const auto brace = braceNear(mark);
        if (brace != kNowhere && !findMap(mark, brace, map)) {
            return false;
        }
        const auto value = position < fields_.size() ? shownBy(map, fields_[position])
                                                     : std::string_view(kNoValue);
        pairs.emplace_back(position, value);
        return true;
    }

private:
    /// Where the brace is that the placeholder at `mark` takes. Not `find`, whose call costs more
    /// than these few characters.
    std::size_t braceNear(std::size_t mark) const
    {
        const auto end = std::min(mark + kFurthestBrace + 1, detail_.size());
        for (auto at = mark + kPlaceholderMark.size(); at < end; ++at) {
            if (detail_[at] == '{') {
                return at;
            }
        }
        return kNowhere;
    }

    /// The text between `open` and the first "}" behind `mark`, empty when that comes first; false
    /// when there is no "}".
    bool findMap(std::size_t mark, std::size_t open, std::string_view& map)
    {
        if (close_ <= mark) {
            close_ = detail_.find('}', mark);
        }
        if (close_ == kNowhere) {
            log_.guard().debug(talvik::log_code::kDebugLine, "parserParmeterByDetail", __LINE__,
                               "parserParmeterByDetail error");
            return false;
        }
        if (open < close_) {
            map = detail_.substr(open + 1, close_ - open - 1);
        }
        return true;
    }

    std::string_view detail_;
    const std::vector<std::string>& fields_;
    talvik::StepLog& log_;
    std::size_t close_ = 0;  // the last "}" found; none yet at a mark
};

void appendFieldsWithoutPair(const std::vector<std::string>& list, talvik::ValuePairs& pairs)
{
    PositionSet named;
    for (const auto& pair : pairs) {
        named.insert(pair.first);
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (!named.contains(i)) {
            pairs.emplace_back(static_cast<unsigned>(i), list[i]);
        }
    }
}

}  // namespace

void parserParmeterByDetail(std::vector<std::string>& list,
                            std::vector<std::pair<unsigned int, std::string>>& pairs,
                            const std::string& detail)
{
    talvik::StepLog log(__PRETTY_FUNCTION__);
    pairs.reserve(pairs.size() + list.size());
    DetailWalk walk(detail, list, log);
    auto mark = talvik::findMark(detail);
    while (mark != kNowhere) {
        if (!walk.appendPair(mark, pairs)) {
            return;  // Contract: fields that no placeholder named so far get no pair then; texts
                     // show "None" or "--" for them, as operators know such definitions.
        }
        mark = talvik::findMark(detail, mark + kPlaceholderMark.size());
    }
    appendFieldsWithoutPair(list, pairs);
}

// Contract: braces do not nest, so {a{b}c} leaves c}; deployed definitions are written for that.
void replaceBraceWithEmptyString(std::string& text)
{
    auto open = text.find('{');
    if (open == std::string::npos) {
        return;
    }
    auto kept = open;  // end of what stays
    auto rest = open;  // start of what is not moved up to it yet
    while (open != std::string::npos) {
        const auto close = text.find('}', open);
        if (close == std::string::npos) {
            talvik::StepLog(__PRETTY_FUNCTION__)
                .guard()
                .debug(talvik::log_code::kDebugLine, "replaceBraceWithEmptyString", __LINE__,
                       "replaceBraceWithEmptyString error");
            break;
        }
        rest = close + 1;
        open = text.find('{', rest);
        if (open != std::string::npos) {
            std::copy_n(text.data() + rest, open - rest, text.data() + kept);
            kept += open - rest;
            rest = open;
        }
    }
    text.erase(kept, rest - kept);
}

bool replaceParaWithBraceValue(std::string& text, int pos, unsigned long start,
                               unsigned long length,
                               const std::vector<std::pair<unsigned int, std::string>>& pairs)
{
    const auto* value = talvik::valueAt(pairs, pos);
    if (value == nullptr || start > text.size()) {
        return false;
    }
    text.replace(start, length, *value);
    return true;
}

std::string relpacestr(std::string text, std::string from, std::string to)
{
    if (from.empty()) {
        talvik::StepLog(__PRETTY_FUNCTION__)
            .guard()
            .warn(talvik::log_code::kAlarmParameter, "relpacestr", __LINE__,
                  "an empty text cannot be replaced at character 0, so the text is left as it is");
        return text;
    }
    auto hit = text.find(from);
    if (hit == std::string::npos) {
        return text;
    }
    std::string replaced;
    replaced.reserve(text.size());
    std::size_t done = 0;
    for (; hit != std::string::npos; hit = text.find(from, done)) {
        replaced.append(text, done, hit - done).append(to);
        done = hit + from.size();
    }
    replaced.append(text, done);
    return replaced;
}
