#pragma once

#include "tools/command_tree.h"

#include <json/json.h>

#include <string>

namespace talvik::ctl {

/// The command and all below it as a manual page, in the language of man(7).
std::string manualPage(const CommandEntry& command);

/// The same in Markdown, a part a command.
std::string markdownPage(const CommandEntry& command);

/// {"name", "path", "description", "details", "exitStatus", "examples": [text], "arguments",
/// "options": [{"names": [text], "value", "choices": [text], "description", "default", "takesFile",
/// "required", "repeated"}], "commands": [the same]}. Texts are empty where there is nothing.
Json::Value helpJson(const CommandEntry& command);

}  // namespace talvik::ctl
