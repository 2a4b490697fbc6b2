#include "host/snmp/configuration_words.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/net_snmp_persistence.h"

#include <algorithm>
#include <cctype>

namespace talvik {

namespace {

using Words = std::set<std::string>;
using Lines = std::vector<ConfigurationLine>;

/// "[snmp]" in a file: what the library itself goes by, whatever the application.
constexpr const char* kLibrarySection = "snmp";

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

Lines* collecting = nullptr;

void collect(const char* word, char* rest)
{
    guardCallback("agent configuration", 0, [&] {
        collecting->emplace_back(lowerCase(word), SecretText{rest == nullptr ? "" : rest});
        return 0;
    });
}

void ignore(const char*, char*) {}

using ParseLine = void (*)(const char*, char*);

/// While this lives, the library does `instead` for every word but `words`. In the library's own
/// lists: a section of a file, "[talvik-agentd]" for one, is read with these, whatever the rest of
/// the file is read with.
class OtherMeaning {
public:
    OtherMeaning(const Words& words, ParseLine instead)
    {
        for (const auto* section : {kApplicationName, kLibrarySection}) {
            for (auto* one = read_config_get_handlers(section); one != nullptr; one = one->next) {
                if (words.count(lowerCase(one->config_token)) == 0) {
                    former_.emplace_back(one, one->parse_line);
                }
            }
        }
        for (const auto& one : former_) {
            one.first->parse_line = instead;
        }
    }

    ~OtherMeaning()
    {
        for (const auto& [handler, parse] : former_) {
            handler->parse_line = parse;
        }
    }

    OtherMeaning(const OtherMeaning&) = delete;
    OtherMeaning& operator=(const OtherMeaning&) = delete;

private:
    std::vector<std::pair<config_line*, ParseLine>> former_;
};

bool readWith(const Words& words, ParseLine instead, const std::string& file)
{
    const OtherMeaning meaning(words, instead);
    return read_config(file.c_str(), read_config_get_handlers(kApplicationName), NORMAL_CONFIG) ==
           SNMPERR_SUCCESS;
}

}  // namespace

bool collectLines(const std::string& file, Lines& lines)
{
    collecting = &lines;
    const bool read = readWith({}, &collect, file);
    collecting = nullptr;
    return read;
}

bool takeWords(const Words& words, const std::string& file)
{
    return readWith(words, &ignore, file);
}

void takeLine(const std::string& word, const SecretText& rest)
{
    const auto* handler = read_config_get_handlers(kApplicationName);
    while (handler != nullptr && lowerCase(handler->config_token) != word) {
        handler = handler->next;
    }
    if (handler != nullptr) {
        SecretText line{rest.view()};  // the library cuts it up
        handler->parse_line(handler->config_token, line.data());
    }
}

void dropWords(const Words& words)
{
    std::set<void (*)()> drops;
    for (const auto* one = read_config_get_handlers(kApplicationName); one != nullptr;
         one = one->next) {
        if (words.count(lowerCase(one->config_token)) != 0 && one->free_func != nullptr) {
            drops.insert(one->free_func);
        }
    }
    for (auto* const drop : drops) {
        drop();
    }
}

}  // namespace talvik
