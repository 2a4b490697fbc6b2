#include "host/snmp/column_write.h"

#include "host/platform/utf8_text.h"
#include "platform/snmp_util.h"

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;
constexpr long kMaxIndex = 2147483647;

bool isWithin(long number, const Bounds& bounds)
{
    return number >= bounds.low && number <= bounds.high;
}

/// The column that the variable names; null when there is none.
const MibColumn* columnOf(const MibTable& table, const ObjectId& suffix)
{
    return suffix.size() >= 2 && suffix[0] == kEntry ? table.column(suffix[1]) : nullptr;
}

/// The row that the variable names; nothing when no row can have that index.
std::optional<std::uint32_t> rowOf(const MibTable& table, const ObjectId& suffix)
{
    if (suffix.size() != 3 || suffix[2] < 1 || suffix[2] > kMaxIndex) {
        return std::nullopt;
    }
    const auto& index = table.columns[table.index.front()];
    if (index.range && !isWithin(static_cast<long>(suffix[2]), *index.range)) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(suffix[2]);
}

/// On the wire an Unsigned32 and a Gauge32 are one type.
bool haveOneType(Syntax a, Syntax b)
{
    const auto typeOf = [](Syntax s) { return s == Syntax::Gauge32 ? Syntax::Unsigned32 : s; };
    return typeOf(a) == typeOf(b);
}

bool isAcceptableNumber(const MibTable& table, const MibColumn& column, long number)
{
    if (column.tag == table.rowStatus) {
        return number == row_status::kActive || number == row_status::kCreateAndGo ||
               number == row_status::kDestroy;
    }
    if (!column.enumeration.empty()) {
        return column.enumeration.count(number) != 0;
    }
    return isWithin(number, column.range.value_or(boundsOf(column.syntax)));
}

bool isAcceptableText(const MibColumn& column, const std::string& text)
{
    return isPlainUtf8(text) && (!column.isDestination || SnmpUtil::CheckIPAddrOK(text));
}

std::optional<SetError> checkValue(const MibTable& table, const MibColumn& column,
                                   const SnmpValue& value)
{
    if (column.syntax != Syntax::OctetString) {
        return isAcceptableNumber(table, column, value.number)
                   ? std::nullopt
                   : std::optional(SetError::WrongValue);
    }
    const auto size = static_cast<long>(value.octets.size());
    if (!isWithin(size, column.size.value_or(Bounds{0, kMaxTextOctets}))) {
        return SetError::WrongLength;
    }
    return isAcceptableText(column, value.octets) ? std::nullopt
                                                  : std::optional(SetError::WrongValue);
}

}  // namespace

std::optional<SetError> checkWrite(const MibTable& table, const WrittenVariable& variable,
                                   ColumnWrite& write)
{
    if (table.rowStatus == 0) {
        return SetError::NotWritable;
    }
    const auto* column = columnOf(table, variable.suffix);
    if (column == nullptr || column->access != Access::ReadCreate) {
        return SetError::NotWritable;
    }
    if (!variable.value || !haveOneType(variable.value->syntax, column->syntax)) {
        return SetError::WrongType;
    }
    if (const auto error = checkValue(table, *column, *variable.value)) {
        return error;
    }
    const auto row = rowOf(table, variable.suffix);
    if (!row) {
        return SetError::NoCreation;
    }
    write = {column, *row, *variable.value};
    write.value.syntax = column->syntax;
    return std::nullopt;
}

}  // namespace talvik
