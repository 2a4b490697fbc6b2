#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// The texts of an alarm, made a second time: one simple step after the other on whole strings,
/// without a thought for cost, for tests to compare the catalogue with. It calls nothing of the
/// module and nothing of a host. What differs on purpose: it knows no bound on values that hold
/// placeholders but gives up after a number of steps.
namespace talvik::test::plain {

using Fields = std::vector<std::string>;
using Pairs = std::vector<std::pair<unsigned, std::string>>;

constexpr int kNoPosition = 0x100400F;
constexpr int kDoesNotEnd = -2;  ///< the steps or the size allowed were used up

/// One line but those that trace calls.
struct Line {
    std::string level;
    unsigned long long code = 0;
    std::string text;

    friend bool operator==(const Line& a, const Line& b)
    {
        return a.level == b.level && a.code == b.code && a.text == b.text;
    }
    friend bool operator!=(const Line& a, const Line& b) { return !(a == b); }
};

using Lines = std::vector<Line>;

/// What may be done before a text counts as one without end, and who sees it after each step.
struct Limit {
    std::size_t steps = 1000;
    std::size_t size = 1024UL * 1024;
    std::function<void(const std::string& text)> afterStep = {};
};

struct Definition {
    unsigned long long id = 0;
    std::string name;
    std::string location;
    std::string detail;
    std::string suggestion;
    Pairs enumPositions;
};

struct Catalogue {
    std::map<unsigned long long, Definition> alarms;
    std::map<std::string, std::string> literals;  ///< by type, "_" and value
};

/// What a look-up answers and fills.
struct Texts {
    int result = 0;
    unsigned id32 = 0;
    std::string location;
    std::string detail;
    std::string suggestion;
    std::string name;
};

std::string replaced(std::string text, const std::string& from, const std::string& to);

Fields fieldsOf(const std::string& params);

void enumerate(const Catalogue& catalogue, unsigned long long alarmId, const Pairs& enumPositions,
               Fields& fields, Lines& lines);

/// Appends to `pairs`.
void pairUp(const Fields& fields, const std::string& detail, Pairs& pairs, Lines& lines);

void removeBraces(std::string& text, Lines& lines);

/// `start` is no more than the text's length.
bool writeOver(std::string& text, int position, std::size_t start, std::size_t length,
               const Pairs& pairs);

/// 0, `kNoPosition` or `kDoesNotEnd`; `out` is filled with the first only.
int fill(const std::string& text, const Pairs& pairs, std::string& out, Lines& lines,
         const Limit& limit = {});

/// The whole look-up, over what `texts` holds before. With `kDoesNotEnd` as the result the rest of
/// the texts is left as it is.
void lookUp(const Catalogue& catalogue, unsigned long long alarmId, const std::string& params,
            Texts& texts, Lines& lines, const Limit& limit = {});

}  // namespace talvik::test::plain
