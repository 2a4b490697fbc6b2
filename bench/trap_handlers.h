#pragma once

namespace talvik::bench {

/// Registers the module's notification handlers with the dispatcher, as the module does. Its types
/// and the SNMP library's headers do not go into one source.
void registerHandlers();

}  // namespace talvik::bench
