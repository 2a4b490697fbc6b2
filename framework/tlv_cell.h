#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// One tag-type-length-value cell. It owns a heap copy of its value bytes and is owned by the
/// record that it was appended to. Used by one thread at a time.
///
/// Layout and field order are shared with the host. Operations marked "the host supplies" are
/// resolved from the process that loads the module.
class CTLVCell {
public:
    /// Type codes, the low four bits of the tag word. Codes above 9 are refused on the wire; 3 to 9
    /// are numeric.
    enum ETLVType : unsigned {
        TLV_NONE = 0,    ///< a freshly made cell
        TLV_OCTETS = 1,  ///< bytes that are neither text nor a number
        TLV_STRING = 2,  ///< text; its terminating NUL is counted in the length
        TLV_UINT = 3,    ///< unsigned number
        TLV_INT = 4,     ///< signed number
        TLV_NUMERIC_LAST = 9
    };

    /// Numeric value of a cell, for `T` one of unsigned int and unsigned long long. The type code
    /// is not checked: call `checkNumerical` first where it matters. Never throws; a cell without
    /// bytes reads as 0.
    template <typename T>
    struct ValueCast;

    /// A cell of type 0 with tag 4094, no data.
    CTLVCell() = default;

    /// Zeroes the value bytes, then frees them.
    ~CTLVCell();

    CTLVCell(const CTLVCell&) = delete;
    CTLVCell& operator=(const CTLVCell&) = delete;

    /// Throws `CKEL_Exception` unless the type code is above 2.
    void checkNumerical() const;

    /// Throws `CKEL_Exception` unless the type code is 2.
    void checkString() const;

    /// Makes this a string cell: a copy of `text` with its terminating NUL, or no data when `text`
    /// is null. Returns and throws what `set_i` does.
    int set(unsigned short tag, const char* text);

    /// Sets type, tag and a copy of `len` value bytes (none when `data` is null); the former value
    /// bytes are zeroed and freed. Returns 0. Throws `CKEL_Exception` when `len` exceeds 65535 or
    /// `tag` 4095, and on an allocation failure; the cell is then unchanged. The host supplies it.
    int set_i(ETLVType type, unsigned short tag, const void* data, unsigned long len);

    /// As `set_i`, type and tag taken from a raw tag word. Afterwards the length field is the
    /// length taken. The host supplies it.
    int setCell(unsigned short tagWord, const char* data, unsigned long len);

    /// The value as text: a string's characters up to its NUL, a number in decimal (signed for type
    /// 4), other bytes in hexadecimal. The host supplies it.
    std::string toString() const;

    std::uint16_t usTagWord = 4094U << 4;  ///< bits 0 to 3 type code, bits 4 to 15 tag
    std::uint16_t sDataLen = 0;            ///< number of value bytes
    std::uint16_t usHostWord = 0;          ///< the host's own
    unsigned char* pData =
        nullptr;  ///< the value, made with array `new`; null when there are no bytes
};

template <>
struct CTLVCell::ValueCast<unsigned int> {
    /// Lengths 1 and 3 and 4 zero-extended, length 2 by type (sign-extended for type 4), longer
    /// ones cut to 4 bytes.
    unsigned int operator()(const CTLVCell* pCell) const;
};

template <>
struct CTLVCell::ValueCast<unsigned long long> {
    /// As above to 64 bits; lengths 3 to 7 zero-extended, longer ones cut to 8 bytes.
    unsigned long long operator()(const CTLVCell* pCell) const;
};

static_assert(sizeof(CTLVCell) == 16 && offsetof(CTLVCell, usTagWord) == 0 &&
                  offsetof(CTLVCell, sDataLen) == 2 && offsetof(CTLVCell, usHostWord) == 4 &&
                  offsetof(CTLVCell, pData) == 8,
              "cells are shared with the host");
