#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace talvik::fuzz {

/// A cell as its tag, type code and bytes.
struct PlainCell {
    unsigned tag;
    unsigned type;
    std::string bytes;
};

struct PlainRecord {
    std::uint64_t identifier = 0;
    std::vector<PlainCell> cells;
};

/// One binding; a number's value is its decimal digits.
struct PlainBinding {
    std::string oid;
    unsigned syntax = 0;
    std::string value;

    bool operator==(const PlainBinding& other) const
    {
        return oid == other.oid && syntax == other.syntax && value == other.value;
    }
};

/// What comes of a record: the handler's result, the line that it logs when it refuses ("" for
/// none), and the bindings, none unless the result is 0.
struct PlainTrap {
    int result = 0;
    std::string line;
    std::vector<PlainBinding> bindings;
};

/// `base` is the OID that the bindings hang under; without `asOctets` the time is text.
PlainTrap trapOf(const PlainRecord& record, const std::string& base, bool asOctets);

}  // namespace talvik::fuzz
