#pragma once

#include "snmp_pp/decimal_text.h"
#include "snmp_pp/smival.h"

namespace Snmp_pp {

/// INTEGER, 32 bits signed. A default-made one is 0.
class SnmpInt32 : public SnmpSyntax {
public:
    SnmpInt32(std::int32_t number = 0) : number_(number), text_(number) {}
    SnmpInt32(const SnmpInt32&) = default;

    SnmpInt32& operator=(std::int32_t number);
    SnmpInt32& operator=(const SnmpInt32& other);

    /// Fits INTEGER and, bit for bit, the 32-bit unsigned syntax.
    SnmpSyntax& operator=(const SnmpSyntax& value) override;

    operator std::int32_t() const { return number_; }

    const char* get_printable() const override { return text_.get(); }
    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_INT32; }
    SnmpSyntax* clone() const override { return new SnmpInt32(*this); }
    bool valid() const override { return valid_; }
    int get_asn1_length() const override;
    void clear() override { *this = std::int32_t{0}; }

private:
    std::int32_t number_;
    DecimalText<std::int32_t> text_;
    bool valid_ = true;
};

/// Unsigned32. A default-made one is 0.
class SnmpUInt32 : public SnmpSyntax {
public:
    SnmpUInt32(std::uint32_t number = 0) : number_(number), text_(number) {}
    SnmpUInt32(const SnmpUInt32&) = default;

    SnmpUInt32& operator=(std::uint32_t number);
    SnmpUInt32& operator=(const SnmpUInt32& other);

    /// Fits the 32-bit unsigned syntax and, bit for bit, INTEGER.
    SnmpSyntax& operator=(const SnmpSyntax& value) override;

    operator std::uint32_t() const { return number_; }

    const char* get_printable() const override { return text_.get(); }
    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_UINT32; }
    SnmpSyntax* clone() const override { return new SnmpUInt32(*this); }
    bool valid() const override { return valid_; }
    int get_asn1_length() const override;
    void clear() override { *this = std::uint32_t{0}; }

private:
    std::uint32_t number_;
    DecimalText<std::uint32_t> text_;
    bool valid_ = true;
};

}  // namespace Snmp_pp
