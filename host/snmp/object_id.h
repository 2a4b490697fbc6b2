#pragma once

#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// An object identifier as the SNMP engine keeps it: one element a sub-identifier. Compares in MIB
/// order.
using ObjectId = std::vector<unsigned long>;

/// The longest object identifier that SNMP knows, in sub-identifiers.
constexpr std::size_t kMaxObjectIdLength = 128;

/// The object identifier that dotted decimal `text` ("1.3.6", no dot in front) names; nothing when
/// `text` is malformed, has fewer than two or more than 128 sub-identifiers or one above
/// 4294967295.
std::optional<ObjectId> parseObjectId(const std::string& text);

/// Dotted decimal text without a dot in front.
std::string toText(const ObjectId& id);

/// True if `id` begins with `prefix` (or equals it).
bool startsWith(const ObjectId& id, const ObjectId& prefix);

}  // namespace talvik
