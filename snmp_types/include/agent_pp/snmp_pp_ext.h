#pragma once

#include "snmp_pp/octet.h"
#include "snmp_pp/oid.h"
#include "snmp_pp/vb.h"

namespace Agentpp {

/// An Oid with the operations of tables and subtrees. All but the assignments leave this one as it
/// is and answer a new one.
class Oidx : public Snmp_pp::Oid {
public:
    Oidx() = default;
    Oidx(const char* text) : Oid(text) {}
    Oidx(const Snmp_pp::Oid& oid) : Oid(oid) {}
    Oidx(const Snmp_pp::SmiUINT32* ids, int length) : Oid(ids, length) {}
    Oidx(const Oidx&) = default;
    Oidx(Oidx&&) = default;

    using Oid::operator=;
    Oidx& operator=(const Oidx&) = default;
    Oidx& operator=(Oidx&&) = default;

    /// The OID of this one sub-identifier.
    Oidx& operator=(std::uint32_t id);

    /// Without the `count` sub-identifiers at the left or right; an empty one if there are no more.
    Oidx cut_left(unsigned int count) const;
    Oidx cut_right(unsigned int count) const;
    static Oidx cut_left(const Oidx& oid, unsigned int count) { return oid.cut_left(count); }
    static Oidx cut_right(const Oidx& oid, unsigned int count) { return oid.cut_right(count); }

    /// The last sub-identifier, 0 when empty.
    Snmp_pp::SmiUINT32 last() const;

    /// Strictly below, strictly above: never true for the same OID.
    bool in_subtree_of(const Oidx& root) const { return root.is_root_of(*this); }
    bool is_root_of(const Oidx& oid) const;

    /// The low byte of each sub-identifier. With `withoutLength` the first one is left out if it
    /// counts the others.
    Snmp_pp::OctetStr as_string(bool withoutLength = false) const;

    /// One sub-identifier a byte, after their number if `withLength`.
    static Oidx from_string(const Snmp_pp::OctetStr& bytes, bool withLength = true);

    /// The next OID in lexicographic order among those of at most 128 sub-identifiers: itself for
    /// the very last.
    Oidx successor() const;

    /// The previous OID in that order: itself when empty.
    Oidx predecessor() const;

    /// The last sub-identifier one higher, wrapping to 0; empty when empty.
    Oidx next_peer() const;

    SnmpSyntax* clone() const override { return new Oidx(*this); }
};

/// A Vb made from an OID and a value, with its OID as an Oidx.
class Vbx : public Snmp_pp::Vb {
public:
    Vbx() = default;
    Vbx(const Snmp_pp::Vb& vb) : Vb(vb) {}
    Vbx(const Snmp_pp::Oid& oid) : Vb(oid) {}
    Vbx(const Snmp_pp::Oid& oid, const Snmp_pp::SnmpSyntax& value) : Vb(oid) { set_value(value); }

    using Vb::get_oid;

    /// A copy.
    Oidx get_oid() const { return Vb::get_oid(); }

    /// A deep copy that the caller deletes.
    Vbx* clone() const { return new Vbx(*this); }
};

}  // namespace Agentpp
