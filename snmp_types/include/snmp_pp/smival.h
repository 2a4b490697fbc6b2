#pragma once

#include <cstdint>

// Macros, not constants: code that uses them must compile unchanged where the libraries' own
// headers define them so.
#define sNMP_SYNTAX_INT 2
#define sNMP_SYNTAX_INT32 2
#define sNMP_SYNTAX_OCTETS 4
#define sNMP_SYNTAX_NULL 5
#define sNMP_SYNTAX_OID 6
#define sNMP_SYNTAX_GAUGE32 66
#define sNMP_SYNTAX_UINT32 66
#define sNMP_SYNTAX_CNTR64 70
#define sNMP_SYNTAX_NOSUCHOBJECT 128
#define sNMP_SYNTAX_NOSUCHINSTANCE 129
#define sNMP_SYNTAX_ENDOFMIBVIEW 130

#define SNMP_CLASS_SUCCESS 0
#define SNMP_CLASS_INVALID (-10)

namespace Snmp_pp {

using SmiUINT32 = std::uint32_t;
using SmiINT32 = std::int32_t;
using pp_uint64 = std::uint64_t;

/// Base of every SNMP value. Distinct objects may be used from distinct threads; one object may be
/// read from several threads at once, but not while it changes.
class SnmpSyntax {
public:
    virtual ~SnmpSyntax() = default;

    /// Takes over the value of `value` where the syntaxes fit; otherwise this value becomes
    /// invalid. Classes are told apart by their syntax number: whoever derives from this class
    /// must not answer the number of one of the library's own classes.
    virtual SnmpSyntax& operator=(const SnmpSyntax& value) = 0;

    /// The value as text, in storage that this object owns: valid until the value changes.
    virtual const char* get_printable() const = 0;

    /// One of the `sNMP_SYNTAX_...` numbers.
    virtual SmiUINT32 get_syntax() const = 0;

    /// A deep copy that the caller deletes.
    virtual SnmpSyntax* clone() const = 0;

    /// False after an assignment that did not fit; each class says what else makes it invalid.
    virtual bool valid() const = 0;

    /// Length in octets of the BER encoding: tag, length and contents.
    virtual int get_asn1_length() const = 0;

    /// Back to the value of a default-made object.
    virtual void clear() = 0;

protected:
    SnmpSyntax() = default;
    SnmpSyntax(const SnmpSyntax&) = default;
};

}  // namespace Snmp_pp
