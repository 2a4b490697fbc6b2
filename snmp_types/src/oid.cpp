#include "snmp_pp/oid.h"

#include "ber_length.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace Snmp_pp {

namespace {

/// text ::= [number] *("." [number]); false, with some of it appended, at anything else.
bool appendText(SubIdentifiers& ids, const char* text)
{
    bool inNumber = false;
    for (; *text != '\0'; ++text) {
        if (*text == '.') {
            inNumber = false;
            continue;
        }
        if (*text < '0' || *text > '9') {
            return false;
        }
        if (!inNumber) {
            ids.append(0);
            inNumber = true;
        }
        // Contract: hosts that link SNMP++ see a number beyond 32 bits wrap, so it does here.
        ids.back() = ids.back() * 10 + static_cast<SmiUINT32>(*text - '0');
    }
    return true;
}

std::string dotted(const SubIdentifiers& ids)
{
    constexpr std::size_t kUsualLength = 3;  // of a sub-identifier and its dot
    std::string text;
    text.reserve(ids.size() * kUsualLength);
    for (const SmiUINT32 id : ids) {
        char digits[std::numeric_limits<SmiUINT32>::digits10 + 1];
        if (!text.empty()) {
            text += '.';
        }
        text.append(digits, std::to_chars(std::begin(digits), std::end(digits), id).ptr);
    }
    return text;
}

}  // namespace

Oid::Oid(const char* text)
{
    parse(text);
}

Oid::Oid(const SmiUINT32* ids, int length)
{
    set_data(ids, length > 0 ? static_cast<SmiUINT32>(length) : 0);
}

Oid& Oid::operator=(const char* text)
{
    return *this = Oid(text);
}

Oid& Oid::operator=(const Oid& other)
{
    if (this != &other) {
        ids_ = other.ids_;
        printable_.reset();
    }
    return *this;
}

Oid& Oid::operator=(Oid&& other) noexcept
{
    if (this != &other) {
        ids_ = std::move(other.ids_);
        printable_.reset();
        other.printable_.reset();
    }
    return *this;
}

SnmpSyntax& Oid::operator=(const SnmpSyntax& value)
{
    if (value.get_syntax() == sNMP_SYNTAX_OID) {
        return *this = static_cast<const Oid&>(value);
    }
    clear();
    return *this;
}

Oid& Oid::operator+=(const char* text)
{
    parse(text);
    printable_.reset();  // Last: `text` may be this one's printable text.
    return *this;
}

Oid& Oid::operator+=(SmiUINT32 id)
{
    ids_.append(id);
    printable_.reset();
    return *this;
}

Oid& Oid::operator+=(const Oid& other)
{
    ids_.append(other.ids_.begin(), other.ids_.size());
    printable_.reset();
    return *this;
}

SmiUINT32& Oid::operator[](unsigned int index)
{
    printable_.reset();
    if (index < ids_.size()) {
        return ids_[index];
    }
    return spare_ = 0;
}

void Oid::trim(SmiUINT32 count)
{
    ids_.truncate(ids_.size() - std::min<std::size_t>(count, ids_.size()));
    printable_.reset();
}

int Oid::nCompare(SmiUINT32 count, const Oid& other) const
{
    const std::size_t mine = std::min<std::size_t>(count, ids_.size());
    const std::size_t theirs = std::min<std::size_t>(count, other.ids_.size());
    for (std::size_t i = 0; i < std::min(mine, theirs); ++i) {
        if (ids_[i] != other.ids_[i]) {
            return ids_[i] < other.ids_[i] ? -1 : 1;
        }
    }
    return mine == theirs ? 0 : (mine < theirs ? -1 : 1);
}

void Oid::set_data(const SmiUINT32* ids, SmiUINT32 length)
{
    if (ids) {
        ids_.assign(ids, length);
    } else {
        ids_.clear();
    }
    printable_.reset();
}

const char* Oid::get_printable() const
{
    return printable_.get([this] { return dotted(ids_); });
}

int Oid::get_asn1_length() const
{
    // The first two sub-identifiers share one arc; those that are missing count as 0.
    std::size_t contents = berArcLength(std::uint64_t{(*this)[0]} * 40 + (*this)[1]);
    for (std::size_t i = 2; i < ids_.size(); ++i) {
        contents += berArcLength(ids_[i]);
    }
    return berElementLength(contents);
}

void Oid::clear()
{
    ids_.clear();
    printable_.reset();
}

void Oid::parse(const char* text)
{
    if (text && !appendText(ids_, text)) {
        ids_.clear();
    }
}

}  // namespace Snmp_pp
