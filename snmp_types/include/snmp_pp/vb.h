#pragma once

#include "snmp_pp/ctr64.h"
#include "snmp_pp/gauge.h"
#include "snmp_pp/integer.h"
#include "snmp_pp/octet.h"
#include "snmp_pp/oid.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace Snmp_pp {

/// Variable binding: an OID with a value, an exception or nothing. Copies are deep.
class Vb {
public:
    Vb() = default;
    Vb(const Oid& oid) : oid_(oid) {}
    Vb(const Vb& other);
    Vb& operator=(const Vb& other);
    Vb(Vb&&) noexcept = default;
    Vb& operator=(Vb&&) noexcept = default;

    void set_oid(const Oid& oid) { oid_ = oid; }
    void get_oid(Oid& oid) const { oid = oid_; }
    const Oid& get_oid() const { return oid_; }

    /// The old value is released first, with whatever get_printable_value() answered for it.
    void set_value(const SnmpSyntax& value);

    /// As above, and takes the bytes of a temporary.
    template <typename Octets, typename = std::enable_if_t<std::is_same_v<Octets, OctetStr>>>
    void set_value(Octets&& octets)
    {
        release();
        value_ = std::make_unique<OctetStr>(std::forward<Octets>(octets));
    }

    void set_value(int number) { set_value(SnmpInt32(number)); }
    void set_value(unsigned int number) { set_value(SnmpUInt32(number)); }
    void set_value(const char* text) { set_value(OctetStr(text)); }
    void set_value(const unsigned char* bytes, unsigned int length);

    // Contract: callers written for the libraries expect INTEGER and Unsigned32 of the low 32 bits
    // here; a 64-bit number is set as a Counter64.
    void set_value(long number) { set_value(static_cast<int>(number)); }
    void set_value(unsigned long number) { set_value(static_cast<unsigned int>(number)); }

    void set_null() { release(); }

    /// SNMP_CLASS_SUCCESS, or SNMP_CLASS_INVALID when there is no value or it does not fit the
    /// syntax of `value`, which then is invalid in the second case and untouched in the first.
    int get_value(SnmpSyntax& value) const;

    /// As above for INTEGER, Unsigned32/Gauge32, Counter64 and OCTET STRING alone; the argument is
    /// untouched on failure.
    int get_value(std::int32_t& number) const;
    int get_value(std::uint32_t& number) const;
    int get_value(unsigned long& number) const;
    int get_value(unsigned long long& number) const;
    int get_value(std::string& bytes) const;

    /// The exception if one is set, else the syntax of the value, sNMP_SYNTAX_NULL without one.
    SmiUINT32 get_syntax() const;

    /// sNMP_SYNTAX_NOSUCHOBJECT and the like take the place of the value; setting a value or null
    /// ends the exception.
    void set_exception_status(SmiUINT32 status);

    /// SNMP_CLASS_SUCCESS when there is none.
    SmiUINT32 get_exception_status() const { return exception_; }

    /// The value's own storage, valid until the value is set again; "" without a value.
    const char* get_printable_value() const;
    const char* get_printable_oid() const { return oid_.get_printable(); }

    /// True once it has a valid OID.
    bool valid() const { return oid_.valid(); }

    void clear();

    /// A deep copy that the caller deletes.
    Vb* clone() const { return new Vb(*this); }

private:
    void release();

    Oid oid_;
    std::unique_ptr<SnmpSyntax> value_;
    SmiUINT32 exception_ = SNMP_CLASS_SUCCESS;
};

}  // namespace Snmp_pp
