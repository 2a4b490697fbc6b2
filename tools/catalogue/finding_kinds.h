#pragma once

#include "tools/catalogue/finding.h"

#include <array>

/// Every kind of finding, in the order of docs/alarm-catalogue.md.
namespace talvik::ctl::kind {

// The files.
constexpr FindingKind kNotJson{"not-json", Severity::Error};
constexpr FindingKind kMissingElement{"missing-element", Severity::Error};
constexpr FindingKind kWrongType{"wrong-type", Severity::Error};
constexpr FindingKind kNullElement{"null-element", Severity::Warning};
constexpr FindingKind kRepeatedMember{"repeated-member", Severity::Warning};
constexpr FindingKind kTextAfterEnd{"text-after-end", Severity::Warning};
constexpr FindingKind kUnknownMember{"unknown-member", Severity::Note};

// Alarm ids.
constexpr FindingKind kMissingId{"missing-id", Severity::Error};
constexpr FindingKind kIdNotANumber{"id-not-a-number", Severity::Error};
constexpr FindingKind kIdZero{"id-zero", Severity::Error};
constexpr FindingKind kIdTooLarge{"id-too-large", Severity::Error};
constexpr FindingKind kRepeatedId{"repeated-id", Severity::Error};
constexpr FindingKind kIdSame32Bits{"id-same-32-bits", Severity::Warning};
constexpr FindingKind kIdLow16BitsZero{"id-low-16-bits-zero", Severity::Note};
constexpr FindingKind kIdSame16Bits{"id-same-16-bits", Severity::Note};

// Trap OIDs.
constexpr FindingKind kMissingOid{"missing-oid", Severity::Error};
constexpr FindingKind kInvalidOid{"invalid-oid", Severity::Error};
constexpr FindingKind kWholeOid{"whole-oid", Severity::Warning};
constexpr FindingKind kSharedOid{"shared-oid", Severity::Note};

// Texts.
constexpr FindingKind kMissingText{"missing-text", Severity::Warning};
constexpr FindingKind kTextLooksMissing{"text-looks-missing", Severity::Warning};
constexpr FindingKind kEmptyText{"empty-text", Severity::Note};
constexpr FindingKind kInvalidUtf8{"invalid-utf8", Severity::Warning};
constexpr FindingKind kControlCharacter{"control-character", Severity::Warning};

// Placeholders.
constexpr FindingKind kPlaceholderAtEnd{"placeholder-at-end", Severity::Error};
constexpr FindingKind kPlaceholderOneDigit{"placeholder-one-digit", Severity::Warning};
constexpr FindingKind kPlaceholderThreeDigits{"placeholder-three-digits", Severity::Warning};
constexpr FindingKind kPlaceholderNoPosition{"placeholder-no-position", Severity::Warning};
constexpr FindingKind kPlaceholderNotFilled{"placeholder-not-filled", Severity::Warning};
constexpr FindingKind kPlaceholderNotInDetail{"placeholder-not-in-detail", Severity::Note};

// Value maps.
constexpr FindingKind kMapNotClosed{"map-not-closed", Severity::Error};
constexpr FindingKind kMapWithoutEffect{"map-without-effect", Severity::Warning};
constexpr FindingKind kMapNotFirst{"map-not-first", Severity::Warning};
constexpr FindingKind kMapShared{"map-shared", Severity::Warning};
constexpr FindingKind kMapNotInDetail{"map-not-in-detail", Severity::Warning};
constexpr FindingKind kMapItem{"map-item", Severity::Warning};
constexpr FindingKind kMapNested{"map-nested", Severity::Warning};
constexpr FindingKind kMapRepeatedValue{"map-repeated-value", Severity::Warning};
constexpr FindingKind kMapEmptyValue{"map-empty-value", Severity::Warning};
constexpr FindingKind kMapBlank{"map-blank", Severity::Warning};
constexpr FindingKind kMapBehindEnumeration{"map-behind-enumeration", Severity::Warning};
constexpr FindingKind kValueWithPlaceholder{"value-with-placeholder", Severity::Warning};
constexpr FindingKind kSelfReference{"self-reference", Severity::Error};

// Enumerated parameters and enumerations.
constexpr FindingKind kParamDescItem{"param-desc-item", Severity::Warning};
constexpr FindingKind kParamDescRepeated{"param-desc-repeated", Severity::Warning};
constexpr FindingKind kParamDescUnused{"param-desc-unused", Severity::Note};
constexpr FindingKind kUnknownEnumeration{"unknown-enumeration", Severity::Warning};
constexpr FindingKind kUnusedEnumeration{"unused-enumeration", Severity::Note};
constexpr FindingKind kIncompleteEnumeration{"incomplete-enumeration", Severity::Warning};
constexpr FindingKind kEmptyEnumeration{"empty-enumeration", Severity::Warning};
constexpr FindingKind kRepeatedLiteral{"repeated-literal", Severity::Warning};

// Whatever else the module itself warned of when the alarm was tried.
constexpr FindingKind kModuleWarning{"module-warning", Severity::Warning};

inline constexpr std::array kAll = {
    kNotJson,
    kMissingElement,
    kWrongType,
    kNullElement,
    kRepeatedMember,
    kTextAfterEnd,
    kUnknownMember,
    kMissingId,
    kIdNotANumber,
    kIdZero,
    kIdTooLarge,
    kRepeatedId,
    kIdSame32Bits,
    kIdLow16BitsZero,
    kIdSame16Bits,
    kMissingOid,
    kInvalidOid,
    kWholeOid,
    kSharedOid,
    kMissingText,
    kTextLooksMissing,
    kEmptyText,
    kInvalidUtf8,
    kControlCharacter,
    kPlaceholderAtEnd,
    kPlaceholderOneDigit,
    kPlaceholderThreeDigits,
    kPlaceholderNoPosition,
    kPlaceholderNotFilled,
    kPlaceholderNotInDetail,
    kMapNotClosed,
    kMapWithoutEffect,
    kMapNotFirst,
    kMapShared,
    kMapNotInDetail,
    kMapItem,
    kMapNested,
    kMapRepeatedValue,
    kMapEmptyValue,
    kMapBlank,
    kMapBehindEnumeration,
    kValueWithPlaceholder,
    kSelfReference,
    kParamDescItem,
    kParamDescRepeated,
    kParamDescUnused,
    kUnknownEnumeration,
    kUnusedEnumeration,
    kIncompleteEnumeration,
    kEmptyEnumeration,
    kRepeatedLiteral,
    kModuleWarning,
};

}  // namespace talvik::ctl::kind
