#pragma once

#include "host/platform/trap_store.h"
#include "tests/contract/faults/visit.h"
#include "tests/support/temp_dir.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace talvik::contract {

/// What became of an operation: its result and what it answered, or what it threw.
struct Outcome {
    int result = 0;
    std::string answer;
    std::string thrown;  ///< as `gates::textOf` has it; empty when it returned

    friend bool operator==(const Outcome& a, const Outcome& b)
    {
        return a.result == b.result && a.answer == b.answer && a.thrown == b.thrown;
    }
    friend std::ostream& operator<<(std::ostream& os, const Outcome& outcome);
};

/// The reference host's side, one for the process: device configuration, catalogue, a back end that
/// knows one alarm, and a list of trap destinations.
class HostSide {
public:
    ~HostSide();

    HostSide(const HostSide&) = delete;
    HostSide& operator=(const HostSide&) = delete;

    /// The list has one destination, of index 17, whatever was done to it.
    void restoreDestinations();

    /// Drops what the host has noted of failed queries.
    void forgetReports();

private:
    friend HostSide& hostSide();

    HostSide();

    test::TempDir folder_;
    TrapStore* store_ = nullptr;
};

/// Set up at the first call.
HostSide& hostSide();

/// One thing that a host has a module do.
struct Operation {
    const char* name;
    enum class Needs { Nothing, Module, Handlers } needs;
    /// Returns the result; writes what was answered.
    std::function<int(Visit& visit, std::string& answer)> run;
    void (*arrange)(HostSide& host) = nullptr;  ///< before each run

    friend std::ostream& operator<<(std::ostream& os, const Operation& operation)
    {
        return os << operation.name;
    }
};

const std::vector<Operation>& operations();

/// Makes what `operation` needs of the module.
void prepare(const Operation& operation, Visit& visit);

/// Runs it and catches whatever it throws.
Outcome outcomeOf(const Operation& operation, Visit& visit);

}  // namespace talvik::contract
