#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The commands and options of talvikctl as data. Help in other formats and the completion of
/// shells are made from it, so none of them can say anything else than the program does.
namespace talvik::ctl {

/// An option, or an argument without a name.
struct OptionEntry {
    std::vector<std::string> names;    ///< "-h" and "--help"; of an argument, its only name
    std::string value;                 ///< what stands for its value; empty for a flag
    std::vector<std::string> choices;  ///< the words that it may be, if these are all or most
    std::string description;
    std::string fallback;  ///< the value without it; empty if none or if it is the installation's
    bool takesFile = false;
    bool required = false;
    bool repeated = false;
};

struct CommandEntry {
    std::string name;
    std::string path;  ///< with the commands that it belongs to: "talvikctl alarm list"
    std::string description;
    std::string details;
    std::string exitStatus;
    std::vector<std::string> examples;
    std::vector<OptionEntry> options;
    std::vector<OptionEntry> arguments;
    std::vector<CommandEntry> commands;
};

/// The tree from `app` on. A type name like "auto|always|NUMBER" gives the choices: words in
/// capitals stand for anything. FILE and PATH are files.
CommandEntry commandTree(const CLI::App& app, const std::string& parentPath = "");

/// `entry` and all below it, parents first.
std::vector<const CommandEntry*> allCommands(const CommandEntry& entry);

}  // namespace talvik::ctl
