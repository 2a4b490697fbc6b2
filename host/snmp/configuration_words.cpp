#include "host/snmp/configuration_words.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/net_snmp_persistence.h"
#include "host/snmp/trap_settings.h"

#include <algorithm>
#include <cctype>

namespace talvik {

namespace {

using Words = std::set<std::string>;
using Lines = std::vector<ConfigurationLine>;
using Handlers = std::vector<config_line>;

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
        collecting->emplace_back(lowerCase(word), rest == nullptr ? "" : rest);
        return 0;
    });
}

void ignore(const char*, char*) {}

/// The library's handlers of the agent's words: as they are for `words`, others do `instead`.
Handlers handlersFor(const Words& words, void (*instead)(const char*, char*))
{
    Handlers handlers;
    for (const auto* one = read_config_get_handlers(kApplicationName); one != nullptr;
         one = one->next) {
        handlers.push_back(*one);
        if (words.count(lowerCase(one->config_token)) == 0) {
            handlers.back().parse_line = instead;
        }
    }
    for (std::size_t i = 0; i < handlers.size(); ++i) {
        handlers[i].next = i + 1 < handlers.size() ? &handlers[i + 1] : nullptr;
    }
    return handlers;
}

bool readWith(Handlers handlers, const std::string& file)
{
    return read_config(file.c_str(), handlers.data(), NORMAL_CONFIG) == SNMPERR_SUCCESS;
}

}  // namespace

bool collectLines(const std::string& file, Lines& lines)
{
    collecting = &lines;
    const bool read = readWith(handlersFor({}, &collect), file);
    collecting = nullptr;
    return read;
}

bool takeWords(const Words& words, const std::string& file)
{
    return readWith(handlersFor(words, &ignore), file);
}

void takeLine(const std::string& word, std::string rest)
{
    const auto* handler = read_config_get_handlers(kApplicationName);
    while (handler != nullptr && lowerCase(handler->config_token) != word) {
        handler = handler->next;
    }
    if (handler != nullptr) {
        rest.push_back('\0');
        handler->parse_line(handler->config_token, rest.data());
        wipe(rest);
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
