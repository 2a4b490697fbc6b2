#include "snmp_pp/ctr64.h"

#include "ber_length.h"
#include "snmp_pp/integer.h"

namespace Snmp_pp {

Counter64::Counter64(std::uint32_t high, std::uint32_t low)
    : Counter64(static_cast<pp_uint64>(high) << 32 | low)
{
}

Counter64& Counter64::operator=(pp_uint64 number)
{
    number_ = number;
    text_ = DecimalText<pp_uint64>(number);
    valid_ = true;
    return *this;
}

Counter64& Counter64::operator=(const Counter64& other)
{
    if (this != &other) {
        *this = other.number_;
        valid_ = other.valid_;
    }
    return *this;
}

SnmpSyntax& Counter64::operator=(const SnmpSyntax& value)
{
    if (value.get_syntax() == sNMP_SYNTAX_CNTR64) {
        return *this = static_cast<const Counter64&>(value);
    }
    SnmpUInt32 word;
    word = value;
    *this = pp_uint64{static_cast<std::uint32_t>(word)};
    valid_ = word.valid();
    return *this;
}

int Counter64::get_asn1_length() const
{
    return berElementLength(berUnsignedLength(number_));
}

}  // namespace Snmp_pp
