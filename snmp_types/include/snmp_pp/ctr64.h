#pragma once

#include "snmp_pp/decimal_text.h"
#include "snmp_pp/smival.h"

namespace Snmp_pp {

/// Counter64. A default-made one is 0.
class Counter64 : public SnmpSyntax {
public:
    Counter64(pp_uint64 number = 0) : number_(number), text_(number) {}
    Counter64(std::uint32_t high, std::uint32_t low);
    Counter64(const Counter64&) = default;

    Counter64& operator=(pp_uint64 number);
    Counter64& operator=(const Counter64& other);

    /// Fits Counter64 and the 32-bit syntaxes, whose bits become the low word.
    SnmpSyntax& operator=(const SnmpSyntax& value) override;

    operator pp_uint64() const { return number_; }
    std::uint32_t high() const { return static_cast<std::uint32_t>(number_ >> 32); }
    std::uint32_t low() const { return static_cast<std::uint32_t>(number_); }

    const char* get_printable() const override { return text_.get(); }
    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_CNTR64; }
    SnmpSyntax* clone() const override { return new Counter64(*this); }
    bool valid() const override { return valid_; }
    int get_asn1_length() const override;
    void clear() override { *this = pp_uint64{0}; }

private:
    pp_uint64 number_;
    DecimalText<pp_uint64> text_;
    bool valid_ = true;
};

}  // namespace Snmp_pp
