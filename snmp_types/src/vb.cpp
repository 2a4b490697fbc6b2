#include "snmp_pp/vb.h"

namespace Snmp_pp {

Vb::Vb(const Vb& other)
    : oid_(other.oid_),
      value_(other.value_ ? other.value_->clone() : nullptr),
      exception_(other.exception_)
{
}

Vb& Vb::operator=(const Vb& other)
{
    if (this != &other) {
        value_.reset(other.value_ ? other.value_->clone() : nullptr);
        oid_ = other.oid_;
        exception_ = other.exception_;
    }
    return *this;
}

void Vb::set_value(const SnmpSyntax& value)
{
    release();
    value_.reset(value.clone());
}

void Vb::set_value(const unsigned char* bytes, unsigned int length)
{
    set_value(OctetStr(bytes, length));
}

int Vb::get_value(SnmpSyntax& value) const
{
    if (!value_) {
        return SNMP_CLASS_INVALID;
    }
    value = *value_;
    return value.valid() ? SNMP_CLASS_SUCCESS : SNMP_CLASS_INVALID;
}

int Vb::get_value(std::int32_t& number) const
{
    if (!value_ || value_->get_syntax() != sNMP_SYNTAX_INT32 || !value_->valid()) {
        return SNMP_CLASS_INVALID;
    }
    number = static_cast<const SnmpInt32&>(*value_);
    return SNMP_CLASS_SUCCESS;
}

int Vb::get_value(std::uint32_t& number) const
{
    if (!value_ || value_->get_syntax() != sNMP_SYNTAX_UINT32 || !value_->valid()) {
        return SNMP_CLASS_INVALID;
    }
    number = static_cast<const SnmpUInt32&>(*value_);
    return SNMP_CLASS_SUCCESS;
}

int Vb::get_value(unsigned long& number) const
{
    unsigned long long wide = number;
    const int result = get_value(wide);
    number = static_cast<unsigned long>(wide);
    return result;
}

int Vb::get_value(unsigned long long& number) const
{
    if (!value_ || value_->get_syntax() != sNMP_SYNTAX_CNTR64 || !value_->valid()) {
        return SNMP_CLASS_INVALID;
    }
    number = static_cast<const Counter64&>(*value_);
    return SNMP_CLASS_SUCCESS;
}

int Vb::get_value(std::string& bytes) const
{
    if (!value_ || value_->get_syntax() != sNMP_SYNTAX_OCTETS || !value_->valid()) {
        return SNMP_CLASS_INVALID;
    }
    bytes = static_cast<const OctetStr&>(*value_).as_string();
    return SNMP_CLASS_SUCCESS;
}

SmiUINT32 Vb::get_syntax() const
{
    if (exception_ != SNMP_CLASS_SUCCESS) {
        return exception_;
    }
    return value_ ? value_->get_syntax() : sNMP_SYNTAX_NULL;
}

void Vb::set_exception_status(SmiUINT32 status)
{
    release();
    exception_ = status;
}

const char* Vb::get_printable_value() const
{
    return value_ ? value_->get_printable() : "";
}

void Vb::clear()
{
    release();
    oid_.clear();
}

void Vb::release()
{
    value_.reset();
    exception_ = SNMP_CLASS_SUCCESS;
}

}  // namespace Snmp_pp
