#pragma once

#include "snmp_pp/printable_cache.h"
#include "snmp_pp/smival.h"

#include <string>
#include <utility>

namespace Snmp_pp {

/// OCTET STRING: any bytes, NUL among them. The empty one is valid.
class OctetStr : public SnmpSyntax {
public:
    OctetStr() = default;

    /// A NUL-terminated text; null gives the empty string.
    OctetStr(const char* text);
    OctetStr(const unsigned char* bytes, std::uint32_t length);
    OctetStr(const OctetStr&) = default;
    OctetStr(OctetStr&& other) noexcept { *this = std::move(other); }

    OctetStr& operator=(const char* text);
    OctetStr& operator=(const OctetStr& other);
    OctetStr& operator=(OctetStr&& other) noexcept;

    /// Fits OCTET STRING only.
    SnmpSyntax& operator=(const SnmpSyntax& value) override;

    OctetStr& operator+=(const char* text);
    OctetStr& operator+=(unsigned char byte);
    OctetStr& operator+=(const OctetStr& other);

    /// Byte by byte, unsigned; a prefix is the lesser.
    friend bool operator==(const OctetStr& a, const OctetStr& b) { return a.compare(b) == 0; }
    friend bool operator!=(const OctetStr& a, const OctetStr& b) { return a.compare(b) != 0; }
    friend bool operator<(const OctetStr& a, const OctetStr& b) { return a.compare(b) < 0; }
    friend bool operator<=(const OctetStr& a, const OctetStr& b) { return a.compare(b) <= 0; }
    friend bool operator>(const OctetStr& a, const OctetStr& b) { return a.compare(b) > 0; }
    friend bool operator>=(const OctetStr& a, const OctetStr& b) { return a.compare(b) >= 0; }
    friend bool operator==(const OctetStr& a, const char* b) { return a == OctetStr(b); }
    friend bool operator!=(const OctetStr& a, const char* b) { return a != OctetStr(b); }
    friend bool operator<(const OctetStr& a, const char* b) { return a < OctetStr(b); }
    friend bool operator<=(const OctetStr& a, const char* b) { return a <= OctetStr(b); }
    friend bool operator>(const OctetStr& a, const char* b) { return a > OctetStr(b); }
    friend bool operator>=(const OctetStr& a, const char* b) { return a >= OctetStr(b); }

    /// For writing: the reference must not outlive the next call on this object. Past the end it
    /// is a spare byte that is no part of the value.
    unsigned char& operator[](unsigned int index);

    /// 0 past the end.
    unsigned char operator[](unsigned int index) const;

    std::uint32_t len() const { return static_cast<std::uint32_t>(bytes_.size()); }

    /// The bytes, not NUL-terminated; null when empty. Valid until the value changes.
    const unsigned char* data() const;

    /// Null with any length gives the empty string.
    void set_data(const unsigned char* bytes, std::uint32_t length);

    std::string as_string() const { return bytes_; }

    /// The text itself when every byte is printable ASCII or a line feed, else a hex dump: per 16
    /// bytes one line of two blanks, sixteen fields "XX " (blank past the last byte), three blanks,
    /// the bytes as text with '.' for what cannot be printed, and a line feed.
    const char* get_printable() const override;

    SmiUINT32 get_syntax() const override { return sNMP_SYNTAX_OCTETS; }
    SnmpSyntax* clone() const override { return new OctetStr(*this); }
    bool valid() const override { return valid_; }
    int get_asn1_length() const override;
    void clear() override;

private:
    int compare(const OctetStr& other) const { return bytes_.compare(other.bytes_); }
    void changed();

    std::string bytes_;
    bool valid_ = true;
    unsigned char spare_ = 0;
    PrintableCache printable_;  ///< of bytes that are no text
};

}  // namespace Snmp_pp
