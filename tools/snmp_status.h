#pragma once

#include <string>

namespace talvik::ctl {

/// Error status of the protocol (RFC 3416).
enum SnmpStatus : int {
    kStatusNoError = 0,
    kStatusTooBig = 1,
    kStatusNoSuchName = 2,
    kStatusBadValue = 3,
    kStatusReadOnly = 4,
    kStatusGenErr = 5,
    kStatusNoAccess = 6,
    kStatusWrongType = 7,
    kStatusWrongLength = 8,
    kStatusWrongEncoding = 9,
    kStatusWrongValue = 10,
    kStatusNoCreation = 11,
    kStatusInconsistentValue = 12,
    kStatusResourceUnavailable = 13,
    kStatusCommitFailed = 14,
    kStatusUndoFailed = 15,
    kStatusAuthorizationError = 16,
    kStatusNotWritable = 17,
    kStatusInconsistentName = 18,
};

/// The protocol's own name of a status, for example "wrongValue"; "error N" for an unknown one.
std::string statusName(int status);

}  // namespace talvik::ctl
