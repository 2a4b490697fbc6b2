#include "tests/support/allocation_probe.h"
#include "tests/unit/trap/trap_handler_test.h"

#include <new>

// What every operation leaves behind when something that it calls throws, and what it traces.

namespace {

using talvik::test::AllocationProbe;

struct Operation {
    const char* name;
    int (CTalvikTrapAddrHandler::*run)(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                       CTLVPackageV3<TLVMsgHeadV3>&);
    std::vector<const char*> guards;  ///< operations traced, in the order entered
    std::vector<const char*> calls;   ///< of the host, each of which may throw
};

std::ostream& operator<<(std::ostream& os, const Operation& row)
{
    return os << row.name;
}

class TrapOperation : public talvik::test::TrapHandlerTest,
                      public testing::WithParamInterface<Operation> {
protected:
    TrapOperation()
    {
        listed({"17", "a-name-that-is-no-short-string.example.net", 162, 2, 1, "--"});
        listed({"18", "192.0.2.2", 162, 2, 1, "a-user-that-is-no-short-string"});
        // No match for a delete, so that it goes on to the index.
        text(1, "another-name-that-is-no-short-string.example.net");
        number(2, 162);
        text(4, "an-index-that-is-no-short-string");
        number(5, 2);
        text(6, "a-third-name-that-is-no-short-string.example.net");
        number(7, 1);
        text(8, "a-user-that-is-no-short-string");
        host.calls.clear();
    }

    int run(Package& answer) { return (handler.*GetParam().run)(context, request, answer); }

    /// From here on nothing is recorded, and what the host makes on its first use is there.
    void prepareForCounting()
    {
        host.recording = false;
        Package answer;
        run(answer);
    }
};

TEST_P(TrapOperation, TracesEachOperationWithModuleFour)
{
    Package answer;
    run(answer);

    Calls entered;
    for (const auto& line : host.texts("trace")) {
        if (line.rfind("enter ", 0) == 0) {
            entered.push_back(line);
        }
    }
    ASSERT_EQ(entered.size(), GetParam().guards.size());
    for (std::size_t i = 0; i < entered.size(); ++i) {
        EXPECT_EQ(entered[i], std::string("enter ") + GetParam().guards[i] + "...");
    }
    for (const auto& line : host.log) {
        EXPECT_EQ(line.moduleId, 4U);
    }
    expectBalancedTraces();
}

TEST_P(TrapOperation, PassesOnWhatTheHostThrows)
{
    for (const char* call : GetParam().calls) {
        host.reset();
        host.onCall(call, [] { throw std::bad_alloc(); });
        Package answer;

        EXPECT_THROW(run(answer), std::bad_alloc) << call;

        EXPECT_TRUE(answer.oRecords.empty()) << call;
        EXPECT_EQ(trapHost.changes.size(), 0U) << call;
        expectBalancedTraces();
    }
}

TEST_P(TrapOperation, LeavesNothingAllocatedWhenTheHostThrows)
{
    prepareForCounting();
    for (const char* call : GetParam().calls) {
        host.onCall(call, [] { throw std::bad_alloc(); });
        AllocationProbe probe;
        {
            Package answer;
            EXPECT_THROW(run(answer), std::bad_alloc) << call;
        }
        EXPECT_GT(probe.allocations(), 0U) << call;
        EXPECT_EQ(probe.live(), 0) << call;
        host.onCall(call, [] {});
    }
}

TEST_P(TrapOperation, IsBalancedWhicheverAllocationFails)
{
    prepareForCounting();
    bool failed = true;
    std::size_t count = 0;
    for (; failed; ++count) {
        AllocationProbe probe;
        probe.failAfter(count);
        bool answered = false;
        {
            Package answer;
            try {
                answered = run(answer) == 0;
            } catch (const std::bad_alloc&) {
            }
            failed = probe.failed();

            EXPECT_TRUE(answered || failed) << "allocation " << count;
            for (const CTLVRecordV3* row : answer.oRecords) {
                EXPECT_EQ(row->pCells->size(), 8U) << "allocation " << count;
            }
        }
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
    }
    EXPECT_GT(count, 5U);
}

#define TALVIK_PACKAGES                                                                            \
    "(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&, CTLVPackageV3<TLVMsgHeadV3>&)"

constexpr const char* kCheckParam =
    "bool CTalvikTrapAddrHandler::CheckParam(const CTLVPackageV3<TLVMsgHeadV3>&)";
constexpr const char* kCommonOperation =
    "void CTalvikTrapAddrHandler::CommonOperation(const CTLVPackageV3<TLVMsgHeadV3>&, "
    "tTrapDestInfo&)";
constexpr const char* kMakePackage =
    "void CTalvikTrapAddrHandler::makeIntTrapPackage(const tTrapDestInfo&, CTLVRecordV3&)";

const Operation kOperations[] = {
    {"Query",
     &CTalvikTrapAddrHandler::OnQueryTable,
     {"virtual int CTalvikTrapAddrHandler::OnQueryTable" TALVIK_PACKAGES, kMakePackage,
      kMakePackage},
     {"getAllTrapAddr", "TestDomainConnectivity", "set_i", "append"}},
    {"Create",
     &CTalvikTrapAddrHandler::OnCreateTable,
     {"virtual int CTalvikTrapAddrHandler::OnCreateTable" TALVIK_PACKAGES, kCheckParam,
      kCommonOperation},
     {"CheckTrapVerOK", "CheckTrapTypeOK", "CheckIPAddrOK", "CheckTrapUserOK", "CheckTrapPortOK",
      "createTrapAddr"}},
    {"Modify",
     &CTalvikTrapAddrHandler::OnModifyTable,
     {"virtual int CTalvikTrapAddrHandler::OnModifyTable" TALVIK_PACKAGES, kCheckParam,
      kCommonOperation},
     {"CheckTrapVerOK", "CheckTrapTypeOK", "CheckIPAddrOK", "CheckTrapUserOK", "CheckTrapIndOK",
      "CheckTrapPortOK", "modifyTrapAddr"}},
    {"Delete",
     &CTalvikTrapAddrHandler::OnDeleteTable,
     {"virtual int CTalvikTrapAddrHandler::OnDeleteTable" TALVIK_PACKAGES},
     {"getAllTrapAddr", "CheckTrapIndOK", "deleteTrapAddr"}},
};

INSTANTIATE_TEST_SUITE_P(Operations, TrapOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

class TrapQueryFailure : public talvik::test::TrapHandlerTest,
                         public testing::WithParamInterface<const char*> {};

TEST_P(TrapQueryFailure, HalfWayThroughARowKeepsTheRowsBeforeAndFreesTheRest)
{
    listed({"17", "192.0.2.1", 162, 2, 1, "--"});
    listed({"18", "192.0.2.2", 162, 2, 1, "--"});
    host.recording = false;
    query();
    response.clear();
    response.oRecords.shrink_to_fit();
    int left = 8 + 3;
    host.onCall(GetParam(), [&left] {
        if (left-- == 0) {
            throw std::bad_alloc();
        }
    });
    const AllocationProbe probe;

    EXPECT_THROW(query(), std::bad_alloc);

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->pCells->size(), 8U);
    EXPECT_GT(probe.live(), 0);
    response.clear();
    response.oRecords.shrink_to_fit();
    EXPECT_EQ(probe.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(Calls, TrapQueryFailure, testing::Values("set_i", "append"));

}  // namespace
