#include "snmp_pp/integer.h"

#include "ber_length.h"

namespace Snmp_pp {

SnmpInt32& SnmpInt32::operator=(std::int32_t number)
{
    number_ = number;
    text_ = DecimalText<std::int32_t>(number);
    valid_ = true;
    return *this;
}

SnmpInt32& SnmpInt32::operator=(const SnmpInt32& other)
{
    if (this != &other) {
        *this = other.number_;
        valid_ = other.valid_;
    }
    return *this;
}

SnmpSyntax& SnmpInt32::operator=(const SnmpSyntax& value)
{
    switch (value.get_syntax()) {
    case sNMP_SYNTAX_INT32:
        return *this = static_cast<const SnmpInt32&>(value);
    case sNMP_SYNTAX_UINT32: {
        const auto& source = static_cast<const SnmpUInt32&>(value);
        *this = static_cast<std::int32_t>(static_cast<std::uint32_t>(source));
        valid_ = source.valid();
        return *this;
    }
    default:
        clear();
        valid_ = false;
        return *this;
    }
}

int SnmpInt32::get_asn1_length() const
{
    return berElementLength(berSignedLength(number_));
}

SnmpUInt32& SnmpUInt32::operator=(std::uint32_t number)
{
    number_ = number;
    text_ = DecimalText<std::uint32_t>(number);
    valid_ = true;
    return *this;
}

SnmpUInt32& SnmpUInt32::operator=(const SnmpUInt32& other)
{
    if (this != &other) {
        *this = other.number_;
        valid_ = other.valid_;
    }
    return *this;
}

SnmpSyntax& SnmpUInt32::operator=(const SnmpSyntax& value)
{
    switch (value.get_syntax()) {
    case sNMP_SYNTAX_UINT32:
        return *this = static_cast<const SnmpUInt32&>(value);
    case sNMP_SYNTAX_INT32: {
        const auto& source = static_cast<const SnmpInt32&>(value);
        *this = static_cast<std::uint32_t>(static_cast<std::int32_t>(source));
        valid_ = source.valid();
        return *this;
    }
    default:
        clear();
        valid_ = false;
        return *this;
    }
}

int SnmpUInt32::get_asn1_length() const
{
    return berElementLength(berUnsignedLength(number_));
}

}  // namespace Snmp_pp
