#include "tests/contract/faults/gates.h"
#include "tests/contract/faults/operations.h"
#include "tests/support/allocation_probe.h"

#include <gmock/gmock.h>

#include <set>

// The module with a host of which each function throws once, in every operation that calls it.

namespace {

using namespace talvik;
using contract::hostSide;
using contract::Operation;
using contract::Outcome;
using contract::outcomeOf;
using contract::Visit;
using gates::Throws;

constexpr Throws kKinds[] = {Throws::KelException, Throws::BadAlloc, Throws::Int};

/// A function of the host that throws at one of its calls.
struct Fault {
    std::size_t gate;
    std::size_t call;
    std::size_t calls;  ///< that the operation makes
    Throws kind;

    std::string function() const { return gates::readable(gates::all()[gate]); }
    bool isLast() const { return call == calls; }

    friend std::ostream& operator<<(std::ostream& os, const Fault& fault)
    {
        return os << fault.function() << ", call " << fault.call << " of " << fault.calls << ", "
                  << gates::textOf(fault.kind);
    }
};

/// Functions that must not throw, or that no operation of the module's calls, each for a reason.
const std::set<std::string> kWithoutAFault = {
    "CTLVRecordV3::clear",                // runs in the destructor of a record
    "CKELDebugKitMgr::CKELDebugKitMgr",   // the host has made the manager by then
    "CKELDebugKitMgr::~CKELDebugKitMgr",  // and keeps it
    "CSnmpTableBase::GetTableInfo",       // the engine's own, for whole tables
};

void run(const Operation& operation, Visit& visit, Outcome& outcome)
{
    if (operation.arrange != nullptr) {
        const gates::Pause pause;
        operation.arrange(hostSide());
    }
    outcome = outcomeOf(operation, visit);
}

/// What the operation comes to without a fault, and how often it calls what.
std::vector<std::size_t> callsOf(const Operation& operation, Outcome& outcome)
{
    Visit visit;
    prepare(operation, visit);
    gates::reset();
    run(operation, visit, outcome);
    gates::disarm();
    return gates::counts();
}

/// The first and the last call of each function, each throwing all kinds of things.
std::vector<Fault> faultsIn(const std::vector<std::size_t>& calls)
{
    std::vector<Fault> faults;
    for (std::size_t gate = 0; gate < calls.size(); ++gate) {
        if (calls[gate] == 0 || kWithoutAFault.count(gates::readable(gates::all()[gate])) != 0) {
            continue;
        }
        for (const auto call : std::set<std::size_t>{1, calls[gate]}) {
            for (const auto kind : kKinds) {
                faults.push_back({gate, call, calls[gate], kind});
            }
        }
    }
    return faults;
}

/// The line that says that a call is left is written by a destructor, so it is lost and no more.
bool isLost(const Fault& fault)
{
    return fault.function() == "CKELDebugKit::trace" && fault.isLast();
}

/// What a notification handler calls while it reads the record: a `CKEL_Exception` makes no trap.
const std::set<std::string> kReading = {"KelUtility::StrToUint", "SnmpUtil::SplitToStr",
                                        "CTLVRecordV3::operator[]", "CTLVCell::toString"};

bool isAnswered(const Operation& operation, const Fault& fault)
{
    return std::string(operation.name).rfind("Construct", 0) == 0 &&
           fault.kind == Throws::KelException && kReading.count(fault.function()) != 0;
}

Outcome expected(const Operation& operation, const Fault& fault, const Outcome& undisturbed)
{
    if (isLost(fault)) {
        return undisturbed;
    }
    Outcome outcome;
    if (isAnswered(operation, fault)) {
        outcome.result = -1;
    } else {
        outcome.thrown = gates::textOf(fault.kind);
    }
    return outcome;
}

/// What became of the operation with a fault, and of the same operation after it.
struct Aftermath {
    bool came = false;
    Outcome disturbed;
    Outcome again;
};

Aftermath disturb(const Operation& operation, const Fault& fault)
{
    Aftermath aftermath;
    {
        Visit visit;
        prepare(operation, visit);
        gates::arm(fault.gate, fault.call, fault.kind);
        run(operation, visit, aftermath.disturbed);
        aftermath.came = gates::disarm();
        run(operation, visit, aftermath.again);
    }
    hostSide().forgetReports();
    return aftermath;
}

class HostFaults : public testing::TestWithParam<Operation> {};

TEST_P(HostFaults, EachPassesOrIsAnsweredAndLeavesNothingBehind)
{
    const auto& operation = GetParam();
    hostSide();
    Outcome undisturbed;
    const auto faults = faultsIn(callsOf(operation, undisturbed));
    ASSERT_FALSE(faults.empty());
    ASSERT_EQ(undisturbed.thrown, "");
    disturb(operation, faults.front());  // what is made once in a process

    for (const auto& fault : faults) {
        SCOPED_TRACE(fault);
        const test::AllocationProbe probe;
        {
            const auto aftermath = disturb(operation, fault);

            EXPECT_TRUE(aftermath.came);
            EXPECT_EQ(aftermath.disturbed, expected(operation, fault, undisturbed));
            // No lock is left behind, and nothing half made is taken for whole.
            EXPECT_EQ(aftermath.again, undisturbed);
        }
        EXPECT_EQ(probe.live(), 0) << "blocks stay behind after the unload";
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, HostFaults, testing::ValuesIn(contract::operations()),
                         [](const auto& row) { return row.param.name; });

TEST(HostFaultsTogether, ReachEveryFunctionThatTheModuleTakesFromItsHost)
{
    hostSide();
    std::set<std::string> reached = kWithoutAFault;
    for (const auto& operation : contract::operations()) {
        Outcome outcome;
        const auto calls = callsOf(operation, outcome);
        for (std::size_t gate = 0; gate < calls.size(); ++gate) {
            if (calls[gate] != 0) {
                reached.insert(gates::readable(gates::all()[gate]));
            }
        }
    }
    for (const auto& symbol : gates::all()) {
        EXPECT_EQ(reached.count(gates::readable(symbol)), 1U) << gates::readable(symbol);
    }
}

}  // namespace
