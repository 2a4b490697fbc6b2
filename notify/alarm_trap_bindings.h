#pragma once

/// The variable bindings of an alarm trap and what its record says of the alarm.
namespace talvik {

/// A binding's number is its sub-identifier below the base OID; its place in the array is one less.
enum class Binding : unsigned {
    NodeCode = 1,
    LocationInfo,
    RestoreAdvice,
    FaultTitle,
    FaultType,
    FaultLevel,
    AlarmId,
    FaultTime,
    SerialNo,
    AdditionInfo,
    FaultCategory,
    LocationAlmId,
    ProductModel,
    ProductSn
};

constexpr unsigned kBindingCount = 14;

namespace alarm_category {

constexpr unsigned int kFault = 1;
constexpr unsigned int kClear = 2;
constexpr unsigned int kEvent = 3;

}  // namespace alarm_category

}  // namespace talvik
