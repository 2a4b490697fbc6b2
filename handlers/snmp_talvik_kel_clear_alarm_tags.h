#pragma once

/// Cell tags of a set of the clear-alarm leaf and of the command that it becomes.
namespace talvik::clear_alarm_tag {

constexpr unsigned short kRequestedSerialNo = 0;  ///< of the set, and of the leaf's own value
constexpr unsigned short kSerialNo = 3;
constexpr unsigned short kRequester = 7;

}  // namespace talvik::clear_alarm_tag
