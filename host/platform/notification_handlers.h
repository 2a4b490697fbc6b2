#pragma once

namespace talvik {

/// Deletes every handler in the dispatcher's list and empties it. Call it before the module that
/// made them is unloaded.
void dropNotificationHandlers();

}  // namespace talvik
