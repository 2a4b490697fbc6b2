#pragma once

#include "host/snmp/trap.h"

#include <cstddef>
#include <string>

namespace talvik {

/// True for a binding whose octets are a text for humans: every OCTET STRING but the time of an
/// alarm as a DateAndTime of 8 or 11 octets.
bool isText(const TrapBinding& binding);

/// `text` as valid UTF-8 without control characters: each of these becomes a blank, and each octet
/// that is no UTF-8 becomes U+FFFD.
std::string plainText(std::string text);

/// How many octets `shortened` gives.
std::size_t shortenedSize(const std::string& text, std::size_t atMost);

/// `text`, which is valid UTF-8, in at most `atMost` octets: itself if it fits, otherwise its first
/// characters and "…"; nothing where that has no room either.
std::string shortened(const std::string& text, std::size_t atMost);

}  // namespace talvik
