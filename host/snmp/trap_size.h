#pragma once

#include "host/snmp/trap.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// The largest message that leaves the agent, whatever its version: one Ethernet frame.
constexpr std::size_t kMaxTrapMessage = 1472;

/// What a message needs besides its variables at the most: version 3, an engine ID and a user of 32
/// octets, 48 octets of authentication, padded encryption.
constexpr std::size_t kMaxTrapHeader = 245;

/// The longest community for which that is enough.
constexpr std::size_t kMaxCommunity = 128;

/// The longest user name (RFC 3414).
constexpr std::size_t kMaxUserName = 32;

/// A text that was shortened to let a notification fit.
struct TextCut {
    std::size_t binding;  ///< position
    std::size_t before;   ///< octets
    std::size_t after;
};

/// The most octets that `bindings`, with sysUpTime.0 and snmpTrapOID.0 of `id` in front, take in a
/// message. A number counts as the longest of its syntax.
std::size_t variablesSize(const ObjectId& id, const std::vector<TrapBinding>& bindings);

/// Makes the texts of `bindings` plain (`plainText`) and so short that the notification `id` fits a
/// message of any version: all texts that are longer than a certain length are cut to that, the
/// others stay. Returns what was cut; nothing when it would not even fit without any text. The
/// receivers play no part: everyone gets the same texts.
std::optional<std::vector<TextCut>> fitTexts(const ObjectId& id,
                                             std::vector<TrapBinding>& bindings);

}  // namespace talvik
