#include "tools/tone.h"

namespace talvik::ctl {

namespace {

const char* sequenceOf(Tone tone)
{
    switch (tone) {
    case Tone::Good:
        return "\x1B[32m";
    case Tone::Notice:
        return "\x1B[36m";
    case Tone::Warning:
        return "\x1B[33m";
    case Tone::Bad:
        return "\x1B[31m";
    case Tone::Severe:
        return "\x1B[1;31m";
    case Tone::Plain:
        break;
    }
    return "";
}

}  // namespace

std::string colored(const std::string& text, Tone tone)
{
    return tone == Tone::Plain ? text : sequenceOf(tone) + text + "\x1B[0m";
}

}  // namespace talvik::ctl
