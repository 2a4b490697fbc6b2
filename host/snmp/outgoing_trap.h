#pragma once

#include "host/snmp/trap_content.h"
#include "host/snmp/trap_encoder.h"

#include <map>
#include <string>

namespace talvik {

/// A notification on its way to several receivers, with the messages made of it so far.
class OutgoingTrap {
public:
    explicit OutgoingTrap(TrapContent content);

    const TrapContent& content() const { return content_; }

    /// The alarm's serial number as text; empty for a notification that is not about an alarm.
    const std::string& serial() const { return serial_; }

    /// The message of that kind, encoded at the first call only while all receivers have their
    /// turn, at every call later. Null, with the reason in `problem`, when it cannot be encoded.
    /// Valid until the next call of this or of `endTurn`.
    const std::string* message(const TrapMessageKind& kind, std::string& problem);

    /// Every receiver had its turn. Those for which it waits may need it much later: no message is
    /// kept for them, as there may be very many, and keys may change.
    void endTurn();

private:
    TrapContent content_;
    std::string serial_;
    bool turnEnded_ = false;
    std::map<TrapMessageKind, std::string> messages_;
};

}  // namespace talvik
