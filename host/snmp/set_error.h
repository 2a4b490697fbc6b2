#pragma once

#include <cstddef>
#include <optional>

namespace talvik {

/// Why a SET is refused, named as SNMPv2 names it.
enum class SetError {
    NoCreation,
    NotWritable,
    WrongType,
    WrongLength,
    WrongValue,
    InconsistentName,
    InconsistentValue,
    ResourceUnavailable,
    CommitFailed,
    UndoFailed,
    GenErr
};

/// An error and the variable that gets it: its position among those of the table.
struct SetFault {
    SetError error;
    std::size_t position;
};

using SetOutcome = std::optional<SetFault>;  ///< nothing when all is well

}  // namespace talvik
