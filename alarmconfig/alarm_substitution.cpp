#include "alarmconfig/alarm_substitution.h"

#include "alarmconfig/alarm_text.h"
#include "alarmconfig/step_log.h"
#include "framework/result_codes.h"

#include <algorithm>

namespace talvik {

namespace {

constexpr auto kNowhere = std::string_view::npos;

constexpr const char* kLabel = "replaceAlarmParamInfo";

/// Of the step that filling is, as the compiler writes it; both ways into it are traced so.
constexpr const char* kSignature =
    "int CAlarmConfigParser::replaceAlarmParamInfo(std::string, std::string&, const ValuePairs&)";

// Contract: not the "--" of an empty value; operators tell a position beyond the values by it.
constexpr std::string_view kBeyondPairs = "None";

constexpr bool isBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// As `strtol` with base 10 reads the at most two characters of a position.
// Contract: not the conversion of `parserParmeterByDetail`; definitions with blanks or signs in a
// position get different results in their values and their texts, which deployed ones rely on.
int positionIn(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) {
        text.remove_prefix(1);
    }
    int number = 0;
    for (const char digit : text) {
        if (!isDigit(digit)) {
            break;
        }
        number = number * 10 + (digit - '0');
    }
    return negative ? -number : number;
}

/// The characters of one placeholder, which may stand partly in a value and partly behind it.
struct Placeholder {
    char text[kPlaceholderMark.size() + kPositionDigits];
    std::size_t size = 0;

    std::string_view whole() const { return {text, size}; }
    std::string_view digits() const { return whole().substr(kPlaceholderMark.size()); }
    bool reachesTheEnd() const { return size < sizeof text; }
};

/// Writes a text piece by piece. Not `append` of the string, whose calls cost more than copying the
/// few characters between two placeholders.
class TextWriter {
public:
    /// Writes over `text`, which holds the text after `finish`.
    TextWriter(std::string& text, std::size_t room) : text_(text) { text_.resize(room); }

    void append(std::string_view piece)
    {
        if (text_.size() - size_ < piece.size()) {
            text_.resize(roomFor(size_ + piece.size()));
        }
        piece.copy(&text_[size_], piece.size());
        size_ += piece.size();
    }

    std::size_t size() const { return size_; }

    void finish() { text_.resize(size_); }

private:
    std::string& text_;
    std::size_t size_ = 0;
};

/// One run over a text. Values with a "#" in them are read again in front of what is left, as
/// sources of their own on a stack; a source stays on it until something behind it is read. What
/// happens in between follows from the value alone, which is why a value that is asked for while it
/// is on the stack would be asked for again and again.
class Filling {
public:
    Filling(std::string_view text, const ValuePairs& pairs, TextWriter& filled, StepLog& log)
        : text_(text),
          pairs_(pairs),
          filled_(filled),
          log_(log)
    {
    }

    bool run()
    {
        while (true) {
            fillCommonOnes();
            if (!appendUpToPlaceholder()) {
                return true;
            }
            const bool nested = !values_.empty();
            const auto placeholder = takePlaceholder();
            if (placeholder.digits().empty()) {
                log_.guard().error(log_code::kAlarmNothingThere, kLabel, __LINE__,
                                   "no alarm parameter pos");
                return false;
            }
            if (!replace(placeholder, nested)) {
                stopBefore(placeholder);
                return true;
            }
        }
    }

private:
    struct Source {
        std::string_view left;
        int position;
    };

    /// Fills placeholders of the text itself up to the first that is not as nearly all are: two
    /// digits with a value that holds none.
    void fillCommonOnes()
    {
        while (values_.empty()) {
            const auto mark = std::min(findMark(text_), text_.size());
            filled_.append(text_.substr(0, mark));
            text_.remove_prefix(mark);
            const auto* value = valueOfCommonOne();
            if (value == nullptr) {
                return;
            }
            filled_.append(*value);
            text_.remove_prefix(kPlaceholderMark.size() + kPositionDigits);
        }
    }

    /// The value of the placeholder that the text goes on with; null when it has to be looked at
    /// closely, or is none.
    const std::string* valueOfCommonOne() const
    {
        const auto digits = kPlaceholderMark.size();
        if (text_.size() < digits + kPositionDigits || !isDigit(text_[digits]) ||
            !isDigit(text_[digits + 1])) {
            return nullptr;
        }
        const int position = (text_[digits] - '0') * 10 + (text_[digits + 1] - '0');
        if (static_cast<std::size_t>(position) >= pairs_.size()) {
            return nullptr;
        }
        const auto* value = valueAt(pairs_, position);
        return value != nullptr && value->find('#') == std::string::npos ? value : nullptr;
    }

    std::string_view& top() { return values_.empty() ? text_ : values_.back().left; }

    /// False at the end of everything; otherwise a mark comes next.
    bool appendUpToPlaceholder()
    {
        while (true) {
            auto& source = top();
            const auto mark = findMark(source);
            if (mark != kNowhere) {
                filled_.append(source.substr(0, mark));
                source.remove_prefix(mark);
                return true;
            }
            if (values_.empty()) {
                filled_.append(source);
                return false;
            }
            if (!source.empty() && source.back() == '#' && charBehindTop() == '#') {
                filled_.append(source.substr(0, source.size() - 1));
                source.remove_prefix(source.size() - 1);
                return true;
            }
            filled_.append(source);
            values_.pop_back();
        }
    }

    char charBehindTop() const
    {
        for (auto value = values_.rbegin() + 1; value != values_.rend(); ++value) {
            if (!value->left.empty()) {
                return value->left.front();
            }
        }
        return text_.empty() ? '\0' : text_.front();
    }

    Placeholder takePlaceholder()
    {
        Placeholder placeholder;
        if (values_.empty()) {  // as below, at once
            placeholder.size = text_.copy(placeholder.text, sizeof placeholder.text);
            text_.remove_prefix(placeholder.size);
            return placeholder;
        }
        while (placeholder.reachesTheEnd()) {
            while (!values_.empty() && top().empty()) {
                values_.pop_back();
            }
            if (top().empty()) {
                break;
            }
            placeholder.text[placeholder.size++] = top().front();
            top().remove_prefix(1);
        }
        return placeholder;
    }

    /// False when that would not end.
    // Contract: up to four characters go, also where the position has one digit only; definitions
    // are written with two.
    bool replace(const Placeholder& placeholder, bool nested)
    {
        const int position = positionIn(placeholder.digits());
        const std::string_view value = valueFor(position);
        if (nested && !spend(value.size())) {
            return false;
        }
        // Contract: the value is read again from its start; definitions nest placeholders.
        if (value.find('#') == std::string_view::npos) {
            filled_.append(value);
            return true;
        }
        if (isUnderWay(position, placeholder.reachesTheEnd())) {
            log_.guard().warn(
                log_code::kAlarmParameter, kLabel, __LINE__,
                "alarm parameter pos %d leads back to itself at character %zu, so the "
                "text is left as it is from there on",
                position, filled_.size());
            return false;
        }
        values_.push_back({value, position});
        return true;
    }

    std::string_view valueFor(int position)
    {
        if (position < 0 || static_cast<std::size_t>(position) >= pairs_.size()) {
            log_.guard().warn(log_code::kAlarmParameter, kLabel, __LINE__,
                              "alarm parameter pos %d is out of range[0, %d]", position,
                              static_cast<int>(pairs_.size()) - 1);
            return kBeyondPairs;
        }
        const auto* value = valueAt(pairs_, position);
        if (value == nullptr) {
            log_.guard().warn(log_code::kAlarmParameter, kLabel, __LINE__,
                              "alarm parameter pos %d is not in the parameters of the detail",
                              position);
            return kNoValue;
        }
        return *value;
    }

    /// Counts a placeholder of a value; false when that is too much.
    bool spend(std::size_t length)
    {
        ++nestedSubstitutions_;
        nestedLength_ += length;
        if (nestedSubstitutions_ <= kMaxNestedSubstitutions && nestedLength_ <= kMaxNestedLength) {
            return true;
        }
        log_.guard().warn(log_code::kAlarmParameter, kLabel, __LINE__,
                          "the values of an alarm text ask for more than %zu values or %zu "
                          "characters at character %zu, so the text is left as it is from there on",
                          kMaxNestedSubstitutions, kMaxNestedLength, filled_.size());
        return false;
    }

    bool isUnderWay(int position, bool atTheEnd)
    {
        if (atTheEnd) {  // nothing is left behind the value, so it must not come here twice
            const bool again = std::find(positionsAtTheEnd_.begin(), positionsAtTheEnd_.end(),
                                         position) != positionsAtTheEnd_.end();
            positionsAtTheEnd_.push_back(position);
            return again;
        }
        return std::any_of(values_.begin(), values_.end(),
                           [position](const Source& value) { return value.position == position; });
    }

    void stopBefore(const Placeholder& placeholder)
    {
        filled_.append(placeholder.whole());
        for (auto value = values_.rbegin(); value != values_.rend(); ++value) {
            filled_.append(value->left);
        }
        filled_.append(text_);
    }

    std::string_view text_;  // what is left of it
    const ValuePairs& pairs_;
    TextWriter& filled_;
    std::vector<Source> values_;
    std::vector<int> positionsAtTheEnd_;
    std::size_t nestedSubstitutions_ = 0;
    std::size_t nestedLength_ = 0;
    StepLog& log_;
};

}  // namespace

std::size_t findMark(std::string_view text, std::size_t from)
{
    static_assert(kPlaceholderMark == "##");
    auto hash = text.find('#', from);
    while (hash != kNowhere && text.substr(hash + 1, 1) != "#") {
        hash = text.find('#', hash + 1);
    }
    return hash;
}

const std::string* valueAt(const ValuePairs& pairs, int position)
{
    if (position < 0) {
        return nullptr;
    }
    const auto wanted = static_cast<unsigned int>(position);
    const auto pair = std::find_if(pairs.begin(), pairs.end(),
                                   [wanted](const auto& each) { return each.first == wanted; });
    return pair == pairs.end() ? nullptr : &pair->second;
}

bool fillPlaceholders(std::string_view text, const ValuePairs& pairs, std::string& filled,
                      StepLog& log)
{
    TextWriter writer(filled, roomFor(text.size()));
    const bool complete = Filling(text, pairs, writer, log).run();
    writer.finish();
    return complete;
}

int fillText(std::string_view text, std::string& out, const ValuePairs& pairs, std::string& spare)
{
    // Contract: placeholders stay when there are no values at all; managers know such alarms.
    if (pairs.empty()) {
        out.assign(text);
        return result_code::kSuccess;
    }
    StepLog log(kSignature);
    if (!fillPlaceholders(text, pairs, spare, log)) {
        return result_code::kNoParameterPosition;
    }
    out.swap(spare);
    return result_code::kSuccess;
}

}  // namespace talvik
