#pragma once

/// Cell tags of a trap destination's row; each is the column's number in the MIB.
namespace talvik::trap_tag {

constexpr unsigned short kUsableAddress = 1;
constexpr unsigned short kPort = 2;
constexpr unsigned short kRowStatus = 3;
constexpr unsigned short kIndex = 4;
constexpr unsigned short kVersion = 5;
constexpr unsigned short kAddress = 6;
constexpr unsigned short kType = 7;
constexpr unsigned short kUser = 8;

}  // namespace talvik::trap_tag
