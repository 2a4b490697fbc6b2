#pragma once

#include "tests/support/plain_alarm_texts.h"

#include <cstddef>
#include <random>
#include <string>

namespace talvik::test {

/// Makes texts, parameters and value pairs of the pieces that the rules of alarm texts are about,
/// many at their edges. The same seed makes the same ones on every machine.
class AlarmTextMaker {
public:
    explicit AlarmTextMaker(unsigned seed) : random_(seed) {}

    /// A number below `count`.
    std::size_t below(std::size_t count) { return random_() % count; }

    /// True once in `count` times.
    bool oneIn(std::size_t count) { return below(count) == 0; }

    template <std::size_t Count>
    const char* oneOf(const char* const (&pieces)[Count])
    {
        return pieces[below(Count)];
    }

    /// A text with placeholders, value maps, and what looks like either.
    std::string text()
    {
        std::string made;
        for (std::size_t count = oneIn(12) ? below(30) : below(7); count != 0; --count) {
            made += piece();
        }
        return made;
    }

    /// A back end's parameters: fields, some escaped, some that placeholders can be made of.
    std::string params()
    {
        std::string made;
        for (std::size_t count = below(6); count != 0; --count) {
            made += value();
            made += oneIn(10) ? "" : ",";
        }
        return made;
    }

    std::string value()
    {
        static const char* const kWords[] = {"",      "a",         "b",     "1",         "0",
                                             "x:y",   "a;b",       "{a:x}", "&#44;",     "&#38;",
                                             "&",     "&#38;#44;", "--",    "None",      "\xC3\xA4",
                                             "\xFF#", "&#4",       " ",     "long value"};
        static const char* const kMarks[] = {"##00", "##01", "##02",   "##0",     "##1",    "##",
                                             "#",    "#0",   "a##01b", "##9",     "##03##", "#00",
                                             "##-",  "0#",   "##04.",  "##00##01"};
        if (!oneIn(4)) {
            return oneOf(kWords);
        }
        std::string made = oneOf(kMarks);
        if (oneIn(4)) {
            made += oneOf(kMarks);
        }
        return made;
    }

    /// Positions may be missing, repeated or beyond two digits.
    plain::Pairs pairs()
    {
        plain::Pairs made;
        for (std::size_t count = below(6); count != 0; --count) {
            const auto place = oneIn(20) ? 4294967295U - below(3) : below(5);
            made.emplace_back(static_cast<unsigned>(place), value());
        }
        return made;
    }

private:
    std::string piece()
    {
        static const char* const kEdges[] = {
            "##",   "###",   "####",       "#",    "{",          "}",    ";",    ":",
            ",",    "&#44;", "&#38;",      "##0",  "##1",        "##9",  "##99", "##05",
            "##ab", "##1x",  "##+1",       "##-1", "##- ",       "##-0", "## 2", "##\t1",
            "##\n", "##{0",  "##\xC3\xA4", "{}",   "##\x7F\xFF", "&",    "##0{"};
        static const char* const kWords[] = {
            "a", "Disk ", " in ", "0", "12", ".", "\xE2\x82\xAC", "\x80", "--", "None", " "};
        switch (below(4)) {
        case 0:
            return oneOf(kEdges);
        case 1:
            return oneOf(kWords);
        case 2:
            return "##0" + std::to_string(below(6));
        default:
            return mapped();
        }
    }

    /// A placeholder and a value map at every distance that matters.
    std::string mapped()
    {
        std::string made = "##0" + std::to_string(below(5));
        made.append(below(6), '.');
        return made + map();
    }

    /// A value map, often with the separators at odd places, sometimes never closed.
    std::string map()
    {
        static const char* const kItems[] = {"a:x",    "b:y", "1:on",   "0:off", ":none",
                                             "a:",     "a",   "",       "a:x:y", "--:gone",
                                             "##01:p", "{:q", "a:##00", "x:#"};
        std::string made = oneIn(12) ? "}{" : "{";
        for (std::size_t count = below(4); count != 0; --count) {
            made += oneOf(kItems);
            made += count == 1 && !oneIn(5) ? "" : ";";
        }
        return made + (oneIn(10) ? "" : "}");
    }

    std::mt19937 random_;
};

}  // namespace talvik::test
