#pragma once

#include "snmp_pp/printable_cache.h"
#include "snmp_pp/smival.h"
#include "snmp_pp/sub_identifiers.h"

#include <utility>

namespace Snmp_pp {

/// OBJECT IDENTIFIER of any number of sub-identifiers. Valid when it holds at least one.
///
/// Text is decimal numbers between dots. Empty arcs are skipped, so a dot in front or at the end
/// does not count; a number beyond 32 bits wraps; anything else in the text makes the whole invalid
/// and empty.
class Oid : public SnmpSyntax {
public:
    Oid() = default;

    /// Null gives an empty one.
    Oid(const char* text);
    Oid(const Oid&) = default;
    Oid(Oid&& other) noexcept : ids_(std::move(other.ids_)) { other.printable_.reset(); }

    /// Null or a length below 1 gives an empty one.
    Oid(const SmiUINT32* ids, int length);

    Oid& operator=(const char* text);
    Oid& operator=(const Oid& other);
    Oid& operator=(Oid&& other) noexcept;

    /// Fits OBJECT IDENTIFIER only.
    SnmpSyntax& operator=(const SnmpSyntax& value) override;

    /// As if the texts were joined with a dot: a text that is no OID makes the whole invalid.
    Oid& operator+=(const char* text);
    Oid& operator+=(SmiUINT32 id);
    Oid& operator+=(const Oid& other);

    /// By sub-identifier; a prefix is the lesser.
    friend bool operator==(const Oid& a, const Oid& b) { return a.ids_ == b.ids_; }
    friend bool operator!=(const Oid& a, const Oid& b) { return !(a == b); }
    friend bool operator<(const Oid& a, const Oid& b) { return a.ids_ < b.ids_; }
    friend bool operator<=(const Oid& a, const Oid& b) { return !(b < a); }
    friend bool operator>(const Oid& a, const Oid& b) { return b < a; }
    friend bool operator>=(const Oid& a, const Oid& b) { return !(a < b); }

    /// For writing: the reference must not outlive the next call on this object. Past the end it
    /// is a spare sub-identifier that is no part of the value.
    SmiUINT32& operator[](unsigned int index);

    /// 0 past the end.
    SmiUINT32 operator[](unsigned int index) const { return index < ids_.size() ? ids_[index] : 0; }

    SmiUINT32 len() const { return static_cast<SmiUINT32>(ids_.size()); }

    /// Drops `count` sub-identifiers from the end, at most all.
    void trim(SmiUINT32 count = 1);

    /// Compares the first `count` sub-identifiers of both: -1, 0 or 1.
    int nCompare(SmiUINT32 count, const Oid& other) const;

    /// Null with any length gives an empty one.
    void set_data(const SmiUINT32* ids, SmiUINT32 length);

    /// Dotted, without a dot in front; "" when empty.
    const char* get_printable() const override;

    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_OID; }
    SnmpSyntax* clone() const override { return new Oid(*this); }
    bool valid() const override { return !ids_.empty(); }
    int get_asn1_length() const override;
    void clear() override;

private:
    void parse(const char* text);

    SubIdentifiers ids_;
    SmiUINT32 spare_ = 0;
    PrintableCache printable_;
};

}  // namespace Snmp_pp
