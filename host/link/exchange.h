#pragma once

#include "backend/protocol.h"
#include "host/link/backend_link.h"

#include <cstdint>

namespace talvik {

/// `request` as the wire's bytes, marked as request number `number`. The package's own header words
/// stay, apart from `uiDataLen`. Throws `backend::ProtocolError` when it is too large.
backend::Bytes requestBytes(Package& request, std::uint32_t number);

/// Takes the reply to request `number` out of `wire`: on success appends its records to `answer`,
/// gives `answer` its header and returns 0; otherwise leaves `answer` as it was and returns the
/// back end's code. Throws `backend::ProtocolError`, with `answer` as it was, when the bytes are
/// not that reply.
int takeReply(backend::Bytes& wire, std::uint32_t number, Package& answer);

}  // namespace talvik
