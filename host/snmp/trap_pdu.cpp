#include "host/snmp/trap_pdu.h"

#include "host/snmp/varbind.h"

#include <algorithm>
#include <new>

namespace talvik {

namespace {

const ObjectId kSysUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};
const ObjectId kSnmpTrapOid{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
const ObjectId kSnmpTraps{1, 3, 6, 1, 6, 3, 1, 1, 5};

constexpr unsigned long kStandardTraps = 6;  ///< snmpTraps.1 coldStart to .6 egpNeighborLoss

PduPtr newPdu(int command, long version)
{
    PduPtr pdu(snmp_pdu_create(command));
    if (!pdu) {
        throw std::bad_alloc();
    }
    pdu->version = version;
    return pdu;
}

/// Puts variables behind one another.
class VariableWriter {
public:
    explicit VariableWriter(netsnmp_pdu& pdu) : pdu_(pdu) {}

    void add(const ObjectId& name, unsigned char type, const void* value, std::size_t size)
    {
        auto** place = last_ == nullptr ? &pdu_.variables : &last_->next_variable;
        last_ = snmp_varlist_add_variable(place, name.data(), name.size(), type, value, size);
        if (last_ == nullptr) {
            throw std::bad_alloc();
        }
    }

    void add(const TrapBinding& binding)
    {
        add(binding.name, ASN_NULL, nullptr, 0);
        setValue(*last_, binding.value);
    }

private:
    netsnmp_pdu& pdu_;
    netsnmp_variable_list* last_ = nullptr;
};

bool isStandard(const ObjectId& id)
{
    return id.size() == kSnmpTraps.size() + 1 && startsWith(id, kSnmpTraps) && id.back() >= 1 &&
           id.back() <= kStandardTraps;
}

/// Enterprise, generic and specific type of the notification `id`.
void setV1Kind(netsnmp_pdu& pdu, const ObjectId& id)
{
    auto enterprise = kSnmpTraps;
    if (isStandard(id)) {
        pdu.trap_type = static_cast<long>(id.back()) - 1;
        pdu.specific_type = 0;
    } else {
        pdu.trap_type = SNMP_TRAP_ENTERPRISESPECIFIC;
        pdu.specific_type = static_cast<long>(id.back());
        const std::size_t left = id[id.size() - 2] == 0 ? 2 : 1;
        enterprise.assign(id.begin(), id.end() - static_cast<long>(left));
    }
    pdu.enterprise = snmp_duplicate_objid(enterprise.data(), enterprise.size());
    if (pdu.enterprise == nullptr) {
        throw std::bad_alloc();
    }
    pdu.enterprise_length = enterprise.size();
}

}  // namespace

PduPtr makeTrapPdu(int command, long version, const TrapContent& content)
{
    auto pdu = newPdu(command, version);
    VariableWriter variables(*pdu);
    const u_long upTime = content.upTime;
    variables.add(kSysUpTime, ASN_TIMETICKS, &upTime, sizeof(upTime));
    variables.add(kSnmpTrapOid, ASN_OBJECT_ID, content.id.data(), content.id.size() * sizeof(oid));
    for (const auto& binding : content.bindings) {
        variables.add(binding);
    }
    return pdu;
}

PduPtr makeV1TrapPdu(const TrapContent& content, const std::array<unsigned char, 4>& agentAddress)
{
    constexpr std::size_t kShortest = 4;  // an enterprise of two sub-identifiers, 0, the number
    if (content.id.size() < kShortest) {
        return nullptr;
    }
    auto pdu = newPdu(SNMP_MSG_TRAP, SNMP_VERSION_1);
    setV1Kind(*pdu, content.id);
    pdu->time = content.upTime;
    std::copy(agentAddress.begin(), agentAddress.end(), pdu->agent_addr);
    VariableWriter variables(*pdu);
    for (const auto& binding : content.bindings) {
        if (binding.value.syntax != Syntax::Counter64) {
            variables.add(binding);
        }
    }
    return pdu;
}

}  // namespace talvik
