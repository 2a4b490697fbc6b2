#pragma once

#include <string>

/// The loopback address as an IPv4-mapped IPv6 text (RFC 4291).
// Contract: one copy for each unit that includes this, read by none; deployed hosts expect the
// constants in the image.
static const std::string LOCAL_MAPPED_ADDRESS = "::ffff:127.0.0.1";
