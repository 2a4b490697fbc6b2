#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace talvik {

/// Keeps a handler that fails request after request from flooding the log: the first failure, every
/// change of the reason, each thousandth failure and the recovery are logged.
class FailureLog {
public:
    /// `subject` is what the lines begin with, for example the table's name and OID.
    explicit FailureLog(std::string subject) : subject_(std::move(subject)) {}

    /// One failed call and why.
    void failed(const std::string& reason);

    /// One call that succeeded.
    void succeeded();

    /// A fault that did not fail the call: logged once for each text, and no more than 100 texts.
    void once(const std::string& problem);

private:
    std::string subject_;
    std::string reason_;
    std::uint64_t failures_ = 0;  ///< in a row
    std::set<std::string> reported_;
};

}  // namespace talvik
