#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace talvik::ctl {

/// Why a command was not carried out: `what()` says what failed and where, `advice()` what to do.
class Failure : public std::runtime_error {
public:
    enum class Kind {
        Connection,  ///< no answer, or none that can be used: the next request would fail too
        NoAnswer,    ///< as Connection, but a request was sent: it may have been carried out
        UnknownRow,  ///< there is no such row
        Refused,     ///< the agent answered and did not do it
    };

    Failure(Kind kind, const std::string& reason, std::string advice)
        : std::runtime_error(reason),
          kind_(kind),
          advice_(std::move(advice))
    {
    }

    Kind kind() const { return kind_; }
    const std::string& advice() const { return advice_; }

private:
    Kind kind_;
    std::string advice_;
};

}  // namespace talvik::ctl
