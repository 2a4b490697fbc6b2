#pragma once

namespace talvik {

/// Raises this process's limit of open files as far as the system allows, at most to 16384. Each
/// receiver of informs takes a descriptor for as long as it is there; the usual 1024 would leave
/// none for the rest of the agent. A failure is a line in the log.
void allowManyDescriptors();

}  // namespace talvik
