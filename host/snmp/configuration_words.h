#pragma once

#include "host/snmp/secret_text.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace talvik {

/// A word of the agent configuration, in small letters, and what stands behind it: passphrases, for
/// some words.
using ConfigurationLine = std::pair<std::string, SecretText>;

/// Appends to `lines` what `file`, and what it includes, has of the agent's words, and takes none
/// of it over. False when it cannot be read. What is wrong with it is in the library's log.
bool collectLines(const std::string& file, std::vector<ConfigurationLine>& lines);

/// Has the library take over these of the words in `file` and pass over the others. As above.
bool takeWords(const std::set<std::string>& words, const std::string& file);

/// Has the library take one line over, as if it stood in a file.
void takeLine(const std::string& word, const SecretText& rest);

/// Has the library drop all that these words have made.
void dropWords(const std::set<std::string>& words);

}  // namespace talvik
