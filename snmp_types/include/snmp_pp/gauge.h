#pragma once

#include "snmp_pp/integer.h"

namespace Snmp_pp {

/// Gauge32: shares its syntax number with Unsigned32.
class Gauge32 : public SnmpUInt32 {
public:
    Gauge32(std::uint32_t number = 0) : SnmpUInt32(number) {}
    Gauge32(const Gauge32&) = default;

    using SnmpUInt32::operator=;
    Gauge32& operator=(const Gauge32&) = default;

    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_GAUGE32; }
    SnmpSyntax* clone() const override { return new Gauge32(*this); }
};

}  // namespace Snmp_pp
