#pragma once

/// What the trap address list answers besides 0. `docs/host-contract.md` has the table.
namespace talvik::trap_result {

constexpr int kIndexTaken = 0x1000020;    ///< create: another destination has the index
constexpr int kIndexUnknown = 0x1000021;  ///< modify, delete: no destination has the index
constexpr int kListFull = 0x1000022;      ///< create: the list has as many as it may have
constexpr int kStoreFailed = 0x1000023;  ///< the list could not be read or written; nothing changed
constexpr int kIndexInvalid = 0x1000024;  ///< create: the index named is not from 1 to 2147483647
constexpr int kRefused = 0x1000025;       ///< a field is not acceptable; nothing changed

}  // namespace talvik::trap_result
