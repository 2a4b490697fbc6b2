#pragma once

#include "host/snmp/mib_description.h"
#include "host/snmp/mib_element.h"

#include <vector>

namespace talvik {

/// Syntax and access of a column or a scalar.
Syntax readSyntax(const MibElement& object);
Access readAccess(const MibElement& object);

/// The columns of a table, in the file's order, each checked by itself and their aliases resolved.
/// Throws `StartupError`, as everything here does.
std::vector<MibColumn> readColumns(const MibElement& table);

}  // namespace talvik
