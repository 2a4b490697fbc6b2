#pragma once

#include "host/snmp/mib_description.h"
#include "host/snmp/mib_element.h"

#include <map>
#include <string>
#include <vector>

namespace talvik {

/// Syntax of a column, a scalar or a notification object.
Syntax readSyntax(const MibElement& object);

/// The labels of `element`, whose syntax is `syntax`; none when it has no enumeration.
std::map<long, std::string> readEnumeration(const MibElement& element, Syntax syntax);

/// The cell of a scalar, checked by itself.
MibColumn readScalarCell(const MibElement& scalar);

/// The columns of a table, in the file's order, each checked by itself and their aliases resolved.
/// Throws `StartupError`, as everything here does.
std::vector<MibColumn> readColumns(const MibElement& table);

}  // namespace talvik
