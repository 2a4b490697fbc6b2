#pragma once

#include "host/snmp/engine_state.h"

#include <optional>
#include <string>

namespace talvik {

/// What net-snmp's library calls this program: its configuration type and the name of its
/// persistent file.
constexpr const char* kApplicationName = "talvik-agentd";

/// Where net-snmp keeps its own persistent file, within the agent's state directory; an absolute
/// path.
std::string persistentDirectory(const std::string& stateDir);

/// Makes `directory` and repairs what is in it. The library rewrites its persistent file in place
/// and keeps the former one beside it meanwhile (`talvik-agentd.N.conf`); when a power cut has left
/// both, the complete one stays and the others go. Users that managers have made are in that file.
/// Throws `StartupError`.
void preparePersistentDirectory(const std::string& directory);

/// Engine ID and boots in net-snmp's persistent file; nothing if there is none or the ID is not of
/// our form.
std::optional<EngineState> persistentEngineState(const std::string& directory);

/// The file itself, which every run leaves behind.
std::string persistentFileIn(const std::string& directory);

/// Puts `engine` into the persistent file, so that the library, when it reads the file, goes on
/// with exactly this ID and these boots; nothing else in the file is changed. Throws
/// `StartupError`.
void storeForLibrary(const std::string& directory, const EngineState& engine);

/// Has the library write its persistent file anew, as `snmp_store` does. Returns what is wrong,
/// with the former file in place again; nothing once the new one is there in whole. After
/// `markPersistentFileComplete`.
std::optional<std::string> storeForNextStart(const std::string& directory);

/// Makes the library end its persistent file with a mark, from which a complete file is known.
/// Once, after everything else that stores something is set up.
void markPersistentFileComplete();

}  // namespace talvik
