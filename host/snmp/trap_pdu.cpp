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

template <typename Pointer>
Pointer newPdu(int command, long version)
{
    Pointer pdu(snmp_pdu_create(command));
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

/// As above, without copies, in `room`.
class BorrowingWriter {
public:
    /// `count`: how many it takes at the most.
    BorrowingWriter(netsnmp_pdu& pdu, VariableRoom& room, std::size_t count)
        : room_(room),
          end_(&pdu.variables)
    {
        if (room_.size() < count) {
            room_.resize(count);
        }
    }

    void add(const ObjectId& name, unsigned char type, const void* value, std::size_t size)
    {
        // The library encodes these and changes none.
        auto& variable = append(name);
        variable.type = type;
        variable.val.string = static_cast<u_char*>(const_cast<void*>(value));
        variable.val_len = size;
    }

    void add(const TrapBinding& binding)
    {
        const auto& value = binding.value;
        if (value.syntax == Syntax::OctetString) {
            add(binding.name, ASN_OCTET_STR, value.octets.data(), value.octets.size());
        } else {
            setValue(append(binding.name), value);  // has room within the variable
        }
    }

private:
    netsnmp_variable_list& append(const ObjectId& name)
    {
        auto& variable = room_.at(used_++);
        variable.next_variable = nullptr;
        variable.name = const_cast<oid*>(name.data());
        variable.name_length = name.size();
        variable.val.string = nullptr;
        variable.val_len = 0;
        *end_ = &variable;
        end_ = &variable.next_variable;
        return variable;
    }

    VariableRoom& room_;
    netsnmp_variable_list** end_;
    std::size_t used_ = 0;
};

/// sysUpTime.0, snmpTrapOID.0 and the bindings. The writer may borrow from `content`.
template <typename Writer>
void addVariables(Writer& variables, const TrapContent& content)
{
    variables.add(kSysUpTime, ASN_TIMETICKS, &content.upTime, sizeof(content.upTime));
    variables.add(kSnmpTrapOid, ASN_OBJECT_ID, content.id.data(), content.id.size() * sizeof(oid));
    for (const auto& binding : content.bindings) {
        variables.add(binding);
    }
}

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
    auto pdu = newPdu<PduPtr>(command, version);
    VariableWriter variables(*pdu);
    addVariables(variables, content);
    return pdu;
}

BorrowingPduPtr borrowTrapPdu(long version, const TrapContent& content, VariableRoom& room)
{
    constexpr std::size_t kInFront = 2;
    auto pdu = newPdu<BorrowingPduPtr>(SNMP_MSG_TRAP2, version);
    BorrowingWriter variables(*pdu, room, kInFront + content.bindings.size());
    addVariables(variables, content);
    return pdu;
}

BorrowingPduPtr borrowV1TrapPdu(const TrapContent& content,
                                const std::array<unsigned char, 4>& agentAddress,
                                VariableRoom& room)
{
    constexpr std::size_t kShortest = 4;  // an enterprise of two sub-identifiers, 0, the number
    if (content.id.size() < kShortest) {
        return nullptr;
    }
    auto pdu = newPdu<BorrowingPduPtr>(SNMP_MSG_TRAP, SNMP_VERSION_1);
    setV1Kind(*pdu, content.id);
    pdu->time = content.upTime;
    std::copy(agentAddress.begin(), agentAddress.end(), pdu->agent_addr);
    BorrowingWriter variables(*pdu, room, content.bindings.size());
    for (const auto& binding : content.bindings) {
        if (binding.value.syntax != Syntax::Counter64) {
            variables.add(binding);
        }
    }
    return pdu;
}

}  // namespace talvik
