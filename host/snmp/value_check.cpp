#include "host/snmp/value_check.h"

#include "host/platform/utf8_text.h"
#include "platform/snmp_util.h"

namespace talvik {

namespace {

bool isAcceptableNumber(const MibColumn& column, long number)
{
    if (!column.enumeration.empty()) {
        return column.enumeration.count(number) != 0;
    }
    return isWithin(number, column.range.value_or(boundsOf(column.syntax)));
}

bool isAcceptableText(const MibColumn& column, const std::string& text)
{
    return isPlainUtf8(text) && (!column.isDestination || SnmpUtil::CheckIPAddrOK(text));
}

}  // namespace

bool isWithin(long number, const Bounds& bounds)
{
    return number >= bounds.low && number <= bounds.high;
}

bool haveOneType(Syntax a, Syntax b)
{
    const auto typeOf = [](Syntax s) { return s == Syntax::Gauge32 ? Syntax::Unsigned32 : s; };
    return typeOf(a) == typeOf(b);
}

std::optional<SetError> checkValue(const SnmpValue& value, const MibColumn& column)
{
    if (column.syntax != Syntax::OctetString) {
        return isAcceptableNumber(column, value.number) ? std::nullopt
                                                        : std::optional(SetError::WrongValue);
    }
    const auto size = static_cast<long>(value.octets.size());
    if (!isWithin(size, column.size.value_or(Bounds{0, kMaxTextOctets}))) {
        return SetError::WrongLength;
    }
    return isAcceptableText(column, value.octets) ? std::nullopt
                                                  : std::optional(SetError::WrongValue);
}

}  // namespace talvik
