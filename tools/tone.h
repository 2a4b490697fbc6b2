#pragma once

#include <string>

namespace talvik::ctl {

/// How much a text is to catch the eye on a terminal with colours.
enum class Tone {
    Plain,
    Good,     ///< green
    Notice,   ///< cyan
    Warning,  ///< yellow
    Bad,      ///< red
    Severe,   ///< bold red
};

/// `text` in the colour of `tone`; as it is for `Tone::Plain`.
std::string colored(const std::string& text, Tone tone);

}  // namespace talvik::ctl
