#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace talvik {

class StepLog;

using ValuePairs = std::vector<std::pair<unsigned int, std::string>>;

/// What opens a placeholder, and how many characters of position follow.
constexpr std::string_view kPlaceholderMark = "##";
constexpr std::size_t kPositionDigits = 2;

/// What stands for an empty or unknown value.
constexpr std::string_view kNoValue = "--";

/// How many characters to reserve for a text of `length` with its placeholders filled.
constexpr std::size_t roomFor(std::size_t length)
{
    return length + length / 2;
}

/// Where the next mark in `text` at or behind `from` is; `npos` when there is none.
std::size_t findMark(std::string_view text, std::size_t from = 0);

/// The value of the first pair with `position`, or null when there is none.
const std::string* valueAt(const ValuePairs& pairs, int position);

/// Writes `text` with its placeholders filled from `pairs` to `filled`, which must not be part of
/// the others. False when a placeholder has no position; `filled` then holds no usable text.
/// alarm_text.h says what bounds the work.
bool fillPlaceholders(std::string_view text, const ValuePairs& pairs, std::string& filled,
                      StepLog& log);

/// `CAlarmConfigParser::replaceAlarmParamInfo` for a text that need not be copied: `text` with its
/// placeholders filled from `pairs`, into `out`, which must not be part of them. The text is made
/// in `spare`, which then has what `out` had, so that one buffer serves several texts.
int fillText(std::string_view text, std::string& out, const ValuePairs& pairs, std::string& spare);

}  // namespace talvik
