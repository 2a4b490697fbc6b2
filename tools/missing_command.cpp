#include "tools/missing_command.h"

#include "tools/trap_output.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <string>
#include <vector>

namespace talvik::ctl {

namespace {

constexpr std::size_t kMostWrong = 2;  // letters of a word that may be meant for another

/// How many letters have to be changed, put in or left out to make one of the other.
std::size_t lettersBetween(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < a.size(); ++i) {
        auto diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const auto changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/// The one of `names` that `word` may be meant for; empty if there is none.
std::string nearMiss(const std::string& word, const std::vector<std::string>& names)
{
    std::string nearest;
    auto fewest = std::min(kMostWrong + 1, word.size());
    for (const auto& name : names) {
        const auto letters = lettersBetween(word, name);
        if (letters < fewest) {
            fewest = letters;
            nearest = name;
        }
    }
    return nearest;
}

std::vector<std::string> namesOf(const CLI::App& group)
{
    std::vector<std::string> names;
    for (const auto* command : group.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const auto& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

}  // namespace

std::optional<Failure> missingCommand(const CLI::App& app)
{
    const auto* group = &app;
    auto path = app.get_name();
    while (!group->get_subcommands().empty()) {
        group = group->get_subcommands().front();
        path += " " + group->get_name();
    }
    const auto names = namesOf(*group);
    if (names.empty()) {
        return std::nullopt;
    }
    const auto words = app.remaining(true);
    const auto word = std::find_if(words.begin(), words.end(),
                                   [](const auto& each) { return each.rfind('-', 0) != 0; });
    const auto help = path + " --help shows what they do";
    if (word == words.end()) {
        return Failure(Failure::Kind::Refused, path + " needs a command: one of " + joined(names),
                       help);
    }
    const auto meant = nearMiss(*word, names);
    return Failure(Failure::Kind::Refused,
                   "\"" + *word + "\" is no command of " + path + "; it is one of " + joined(names),
                   meant.empty() ? help : "perhaps " + meant + " is meant; " + help);
}

void printMissingCommand(const CLI::App& app, const Failure& failure)
{
    const auto words = app.remaining(true);
    if (std::find(words.begin(), words.end(), "--json") != words.end()) {
        std::cout << jsonText(failureJson(failure));
    } else {
        std::cerr << failureText(failure);
    }
}

}  // namespace talvik::ctl
