#pragma once

#include "host/snmp/trap_content.h"
#include "host/snmp/trap_encoder.h"

#include <map>
#include <string>
#include <utility>

namespace talvik {

/// A notification on its way to several receivers, with the messages made of it so far.
class OutgoingTrap {
public:
    explicit OutgoingTrap(TrapContent content) : content_(std::move(content)) {}

    const TrapContent& content() const { return content_; }

    /// The message of that kind, encoded at the first call only. Null, with the reason in
    /// `problem`, when it cannot be encoded. Valid as long as this object.
    const std::string* message(const TrapMessageKind& kind, std::string& problem)
    {
        const auto made = messages_.find(kind);
        if (made != messages_.end()) {
            return &made->second;
        }
        auto octets = encodeTrap(content_, kind, problem);
        return octets ? &messages_.emplace(kind, std::move(*octets)).first->second : nullptr;
    }

private:
    TrapContent content_;
    std::map<TrapMessageKind, std::string> messages_;
};

}  // namespace talvik
