#pragma once

/// The context of one SNMP request, as the host keeps it. Opaque to the module, which only passes
/// the reference on to its own operations and relies on nothing inside. It must outlive the handler
/// call that it is given to.
class CKEL_SnmpContext;
