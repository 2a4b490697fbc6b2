#pragma once

#include "host/snmp/set_error.h"
#include "host/snmp/snmp_value.h"

#include <optional>

namespace talvik {

/// One variable of a SET: its name relative to the table or scalar and what is to be written. No
/// value stands for one of a type that no object has.
struct WrittenVariable {
    ObjectId suffix;
    std::optional<SnmpValue> value;
};

/// The part of one SET request that falls on one table or scalar, step by step as net-snmp's agent
/// library takes all parts of a request: `check` and `prepare`, then `act`, then `undo` if another
/// part failed. All of the part takes effect or nothing.
class SetPart {
public:
    virtual ~SetPart() = default;

    /// Checks each variable by itself.
    virtual SetOutcome check() = 0;

    /// Checks that the variables go together, and that they can be done as things are now.
    virtual SetOutcome prepare() = 0;

    /// Makes the change; the handler is called once at most. Logs it, or why it failed.
    virtual SetOutcome act() = 0;

    /// Takes the change back if it was made. Logs what was taken back, or that it failed.
    virtual SetOutcome undo() = 0;

    /// Another part failed before `act`: nothing more comes.
    virtual void abandon() {}

protected:
    SetPart() = default;
    SetPart(const SetPart&) = delete;
    SetPart& operator=(const SetPart&) = delete;
};

}  // namespace talvik
