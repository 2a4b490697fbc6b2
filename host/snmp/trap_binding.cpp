#include "host/snmp/trap_binding.h"

#include <agent_pp/snmp_pp_ext.h>

#include <cstdint>

namespace talvik {

namespace {

constexpr std::size_t kMinObjectIdLength = 2;

SnmpValue numberOf(Syntax syntax, std::int64_t number)
{
    return {syntax, number, {}};
}

std::optional<SnmpValue> valueOf(const Agentpp::Vbx& binding)
{
    switch (binding.get_syntax()) {
    case sNMP_SYNTAX_INT: {
        std::int32_t number = 0;
        binding.get_value(number);
        return numberOf(Syntax::Integer, number);
    }
    case sNMP_SYNTAX_GAUGE32: {
        std::uint32_t number = 0;
        binding.get_value(number);
        return numberOf(Syntax::Gauge32, number);
    }
    case sNMP_SYNTAX_CNTR64: {
        unsigned long long number = 0;
        binding.get_value(number);
        return numberOf(Syntax::Counter64, static_cast<std::int64_t>(number));
    }
    case sNMP_SYNTAX_OCTETS: {
        SnmpValue value;
        value.syntax = Syntax::OctetString;
        binding.get_value(value.octets);
        return value;
    }
    default:
        return std::nullopt;
    }
}

}  // namespace

ObjectId toObjectId(const Snmp_pp::Oid& oid)
{
    ObjectId id(oid.len());
    for (unsigned int at = 0; at < id.size(); ++at) {
        id[at] = oid[at];
    }
    return id;
}

std::optional<TrapBinding> toTrapBinding(const Agentpp::Vbx& binding, std::string& problem)
{
    auto id = toObjectId(static_cast<const Snmp_pp::Vb&>(binding).get_oid());  // not a copy
    if (id.size() < kMinObjectIdLength || id.size() > kMaxObjectIdLength) {
        problem =
            "its name has " + std::to_string(id.size()) + " sub-identifiers, 2 to 128 are due";
        return std::nullopt;
    }
    auto value = valueOf(binding);
    if (!value) {
        problem = "a value of syntax " + std::to_string(binding.get_syntax()) +
                  " cannot be sent in a notification";
        return std::nullopt;
    }
    return TrapBinding{std::move(id), std::move(*value)};
}

}  // namespace talvik
