#pragma once

#include "host/snmp/failure_log.h"
#include "host/snmp/handler_boundary.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/snmp_value.h"

#include <memory>
#include <optional>

class CKEL_SnmpContext;
class CSnmpHandler;

namespace talvik {

/// A scalar with the handler that knows its value. This is the boundary to the module: whatever a
/// handler does or throws ends here as "no answer" and a log line, or in the answer of `write`.
/// Used by the agent's thread only.
class ScalarSource {
public:
    /// The scalar must outlive this object.
    ScalarSource(const MibScalar& scalar, std::unique_ptr<CSnmpHandler> handler);
    ~ScalarSource();

    ScalarSource(const ScalarSource&) = delete;
    ScalarSource& operator=(const ScalarSource&) = delete;

    /// The value now; the handler is asked each time. Nothing when the handler failed or its answer
    /// has no cell that fits.
    std::optional<SnmpValue> query(const CKEL_SnmpContext& context);

    /// Hands `value`, which has the scalar's syntax, to the handler; one call of it.
    HandlerAnswer write(const CKEL_SnmpContext& context, const SnmpValue& value);

    const MibScalar& scalar() const { return scalar_; }

private:
    const MibScalar& scalar_;
    std::unique_ptr<CSnmpHandler> handler_;
    FailureLog failures_;
};

}  // namespace talvik
