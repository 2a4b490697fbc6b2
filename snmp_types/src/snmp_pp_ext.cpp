#include "agent_pp/snmp_pp_ext.h"

#include <limits>

namespace Agentpp {

namespace {

using Snmp_pp::SmiUINT32;

/// The longest OID that SNMP knows; the order of successor() and predecessor() ends here.
constexpr SmiUINT32 kMaxLength = 128;
constexpr SmiUINT32 kMaxId = std::numeric_limits<SmiUINT32>::max();

}  // namespace

Oidx& Oidx::operator=(std::uint32_t id)
{
    set_data(&id, 1);
    return *this;
}

Oidx Oidx::cut_left(unsigned int count) const
{
    Oidx rest;
    for (SmiUINT32 i = count; i < len(); ++i) {
        rest += (*this)[i];
    }
    return rest;
}

Oidx Oidx::cut_right(unsigned int count) const
{
    Oidx rest(*this);
    rest.trim(count);
    return rest;
}

SmiUINT32 Oidx::last() const
{
    return valid() ? (*this)[len() - 1] : 0;
}

bool Oidx::is_root_of(const Oidx& oid) const
{
    return len() < oid.len() && nCompare(len(), oid) == 0;
}

Snmp_pp::OctetStr Oidx::as_string(bool withoutLength) const
{
    const bool skip = withoutLength && valid() && (*this)[0] == len() - 1;
    Snmp_pp::OctetStr bytes;
    for (SmiUINT32 i = skip ? 1 : 0; i < len(); ++i) {
        bytes += static_cast<unsigned char>((*this)[i]);
    }
    return bytes;
}

Oidx Oidx::from_string(const Snmp_pp::OctetStr& bytes, bool withLength)
{
    Oidx oid;
    if (withLength) {
        oid += bytes.len();
    }
    for (SmiUINT32 i = 0; i < bytes.len(); ++i) {
        oid += SmiUINT32{bytes[i]};
    }
    return oid;
}

Oidx Oidx::successor() const
{
    Oidx next(*this);
    if (len() != kMaxLength) {
        next += SmiUINT32{0};
        return next;
    }
    while (next.valid() && next.last() == kMaxId) {
        next.trim();
    }
    return next.valid() ? next.next_peer() : *this;
}

Oidx Oidx::predecessor() const
{
    Oidx previous(*this);
    if (!valid()) {
        return previous;
    }
    if (last() == 0) {
        previous.trim();
        return previous;
    }
    --previous[len() - 1];
    while (previous.len() < kMaxLength) {
        previous += kMaxId;
    }
    return previous;
}

Oidx Oidx::next_peer() const
{
    Oidx peer(*this);
    if (valid()) {
        ++peer[len() - 1];
    }
    return peer;
}

}  // namespace Agentpp
