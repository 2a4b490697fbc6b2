#pragma once

#include "host/snmp/line_budget.h"

#include <spdlog/common.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace talvik {

/// Keeps a handler that fails request after request from flooding the log: the first failure, every
/// change of the reason, each thousandth failure and the recovery are logged, as far as
/// `LineBudget` allows. A change that it does not allow is logged later, if it still holds then.
class FailureLog {
public:
    /// `subject` is what the lines begin with, for example the table's name and OID.
    explicit FailureLog(std::string subject, LineBudget budget = LineBudget())
        : subject_(std::move(subject)),
          budget_(std::move(budget))
    {
    }

    /// One failed call and why.
    void failed(const std::string& reason);

    /// One call that succeeded.
    void succeeded();

    /// A fault that did not fail the call: logged once for each text, and no more than 100 texts.
    void once(const std::string& problem);

private:
    bool write(spdlog::level::level_enum level, const std::string& text);

    std::string subject_;
    LineBudget budget_;
    std::optional<std::string> logged_;  ///< the reason that the log tells; none when it works
    std::uint64_t failures_ = 0;         ///< since the log told that it works
    std::set<std::string> reported_;
};

}  // namespace talvik
