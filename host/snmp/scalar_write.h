#pragma once

#include "host/snmp/request_context.h"
#include "host/snmp/scalar_source.h"
#include "host/snmp/set_part.h"

#include <functional>
#include <vector>

namespace talvik {

/// The part of one SET request that falls on one scalar. What it does cannot be taken back: `undo`
/// of what was done fails. Each attempt leaves a line in the log, whatever becomes of it: who
/// asked, what was to be written and the outcome.
class ScalarWrite : public SetPart {
public:
    /// `changed`, if there is one, is called after the handler has taken the value.
    ScalarWrite(ScalarSource& source, CKEL_SnmpContext context,
                std::vector<WrittenVariable> variables, const std::function<void()>& changed);

    SetOutcome check() override;
    SetOutcome prepare() override;
    SetOutcome act() override;
    SetOutcome undo() override;
    void abandon() override;

private:
    SetOutcome refuse(SetError error, std::size_t position);
    std::string describe() const;

    ScalarSource& source_;
    CKEL_SnmpContext context_;
    std::vector<WrittenVariable> variables_;
    const std::function<void()>& changed_;
    bool done_ = false;
    bool told_ = false;  ///< the log has the outcome
};

}  // namespace talvik
