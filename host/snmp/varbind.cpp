#include "host/snmp/varbind.h"

#include <new>

namespace talvik {

namespace {

unsigned char berTypeOf(Syntax syntax)
{
    switch (syntax) {
    case Syntax::Unsigned32:
    case Syntax::Gauge32:
        return ASN_GAUGE;
    case Syntax::Counter32:
        return ASN_COUNTER;
    case Syntax::Counter64:
        return ASN_COUNTER64;
    case Syntax::TimeTicks:
        return ASN_TIMETICKS;
    case Syntax::OctetString:
        return ASN_OCTET_STR;
    case Syntax::Integer:
        break;
    }
    return ASN_INTEGER;
}

void setRaw(netsnmp_variable_list& variable, unsigned char type, const void* value,
            std::size_t size)
{
    if (snmp_set_var_typed_value(&variable, type, value, size) != 0) {
        throw std::bad_alloc();
    }
}

}  // namespace

void setName(netsnmp_variable_list& variable, const oid* name, std::size_t length)
{
    if (snmp_set_var_objid(&variable, name, length) != 0) {
        throw std::bad_alloc();
    }
}

void setName(netsnmp_variable_list& variable, const ObjectId& name)
{
    setName(variable, name.data(), name.size());
}

void setValue(netsnmp_variable_list& variable, const SnmpValue& value)
{
    setValue(variable, value.syntax, value.number, value.octets);
}

void setValue(netsnmp_variable_list& variable, Syntax syntax, std::int64_t number,
              std::string_view octets)
{
    const auto type = berTypeOf(syntax);
    if (syntax == Syntax::OctetString) {
        setRaw(variable, type, octets.data(), octets.size());
    } else if (syntax == Syntax::Counter64) {
        const auto bits = static_cast<std::uint64_t>(number);
        const counter64 halves{static_cast<u_long>(bits >> 32U),
                               static_cast<u_long>(bits & 0xFFFFFFFFU)};
        setRaw(variable, type, &halves, sizeof(halves));
    } else {
        const long word = number;  // the library takes every 32-bit number as a long
        setRaw(variable, type, &word, sizeof(word));
    }
}

ObjectId suffixOf(const netsnmp_variable_list& variable, const ObjectId& base)
{
    const ObjectId name(variable.name, variable.name + variable.name_length);
    return startsWith(name, base)
               ? ObjectId(name.begin() + static_cast<long>(base.size()), name.end())
               : ObjectId();
}

std::optional<SnmpValue> valueOf(const netsnmp_variable_list& variable)
{
    SnmpValue value;
    switch (variable.type) {
    case ASN_OCTET_STR:
        value.syntax = Syntax::OctetString;
        value.octets.assign(variable.val.string, variable.val.string + variable.val_len);
        return value;
    case ASN_INTEGER:
        value.syntax = Syntax::Integer;
        break;
    case ASN_GAUGE:
        value.syntax = Syntax::Gauge32;
        break;
    case ASN_TIMETICKS:
        value.syntax = Syntax::TimeTicks;
        break;
    default:  // counters are never written
        return std::nullopt;
    }
    value.number = *variable.val.integer;
    return value;
}

}  // namespace talvik
