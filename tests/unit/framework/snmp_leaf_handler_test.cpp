#include "framework/snmp_leaf_handler.h"

#include "tests/support/allocation_probe.h"
#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using talvik::test::AllocationProbe;
using talvik::test::textOfThrown;

class Leaf : public CSnmpLeafHandler {
public:
    int OnSetLeaf(const CKEL_SnmpContext&, const Package&, Package&) override { return 0; }
    int queryLeaf(const CKEL_SnmpContext&, CTLVCell*& pCell) override { return query(pCell); }

    std::function<int(CTLVCell*&)> query;
};

CTLVCell* numberCell(unsigned short tag, unsigned value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
    return cell.release();
}

constexpr char kSecret[] = "a community name nobody may read";

CTLVCell* secretCell()
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set(7, kSecret);
    return cell.release();
}

class SnmpLeafHandler : public talvik::test::FakeHostTest {
protected:
    int ask() { return leaf.OnQueryLeaf(context, request, response); }

    Leaf leaf;
    Package request;
    Package response;
};

TEST_F(SnmpLeafHandler, AnswersWithOneRecordThatHoldsTheCellUnderTagZero)
{
    leaf.query = [](CTLVCell*& cell) {
        cell = numberCell(7, 1234);
        return 0;
    };

    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->ullRecordId, 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_EQ(response[0]->oTagIndex.total_size(), 32U);
    ASSERT_EQ(response[0]->pCells->size(), 1U);
    const CTLVCell* cell = (*response[0])[0];
    EXPECT_EQ(cell->usTagWord, 3);
    EXPECT_EQ(CTLVCell::ValueCast<unsigned int>()(cell), 1234U);
}

TEST_F(SnmpLeafHandler, AppendsAfterTheRecordsThatTheResponseHolds)
{
    response.oRecords.push_back(new CTLVRecordV3(5));
    leaf.query = [](CTLVCell*& cell) {
        cell = numberCell(7, 1);
        return 0;
    };

    ASSERT_EQ(ask(), 0);

    ASSERT_EQ(response.oRecords.size(), 2U);
    EXPECT_EQ(response[0]->ullRecordId, 5U);
}

TEST_F(SnmpLeafHandler, AFailedQueryIsMinusOneWhateverItsCode)
{
    leaf.query = [](CTLVCell*&) { return 5; };

    EXPECT_EQ(ask(), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

/// What a query made before it failed must not stay behind, neither in memory in use nor as bytes
/// in memory that is freed.
class SnmpLeafFailure : public SnmpLeafHandler {
protected:
    SnmpLeafFailure()
    {
        host.recording = false;
        leaf.query = [](CTLVCell*& cell) {
            cell = secretCell();
            return 0;
        };
    }

    /// Allocations that an answer takes, the place in the response last.
    std::size_t allocationsOfAnAnswer()
    {
        Package other;
        const AllocationProbe probe;
        leaf.OnQueryLeaf(context, request, other);
        return probe.allocations();
    }
};

TEST_F(SnmpLeafFailure, OfAQueryThatMadeACellFreesIt)
{
    leaf.query = [](CTLVCell*& cell) {
        cell = secretCell();
        return 5;
    };
    AllocationProbe probe;
    probe.watchFor(kSecret);

    EXPECT_EQ(ask(), -1);

    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(SnmpLeafHandler, ASuccessWithoutACellIsMinusOne)
{
    leaf.query = [](CTLVCell*&) { return 0; };

    EXPECT_EQ(ask(), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpLeafFailure, ByAnExceptionPassesItOnAndFreesTheCell)
{
    leaf.query = [](CTLVCell*& cell) -> int {
        cell = secretCell();
        throw std::runtime_error("lost");
    };
    AllocationProbe probe;
    probe.watchFor(kSecret);

    EXPECT_THROW(ask(), std::runtime_error);

    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(SnmpLeafFailure, OfAnAppendLeavesTheResponseUntouchedAndFreesTheCell)
{
    host.onCall("append", [] { throw std::bad_alloc(); });
    AllocationProbe probe;
    probe.watchFor(kSecret);

    EXPECT_THROW(ask(), std::bad_alloc);

    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_GT(probe.allocations(), 0U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(SnmpLeafFailure, OfAResponseThatCannotGrowFreesRecordAndCell)
{
    const auto last = allocationsOfAnAnswer() - 1;
    response.oRecords.reserve(1);
    response.oRecords.push_back(new CTLVRecordV3(5));
    AllocationProbe probe;
    probe.watchFor(kSecret);
    probe.failAfter(last);

    EXPECT_THROW(ask(), std::bad_alloc);

    EXPECT_TRUE(probe.failed());
    EXPECT_EQ(probe.allocations(), last);
    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->ullRecordId, 5U);
    EXPECT_EQ(probe.live(), 0);
    EXPECT_EQ(probe.freedWithBytes(), 0U);
}

TEST_F(SnmpLeafFailure, OfAnyAllocationLeavesTheResponseUntouchedAndNothingElse)
{
    const auto all = allocationsOfAnAnswer();
    for (std::size_t count = 0; count < all; ++count) {
        AllocationProbe probe;
        probe.watchFor(kSecret);
        probe.failAfter(count);

        EXPECT_THROW(ask(), std::bad_alloc) << "allocation " << count;

        EXPECT_TRUE(response.oRecords.empty());
        EXPECT_EQ(probe.live(), 0) << "allocation " << count;
        EXPECT_EQ(probe.freedWithBytes(), 0U) << "allocation " << count;
    }
}

TEST_F(SnmpLeafHandler, RefusesTableOperationsWithTheirTexts)
{
    EXPECT_EQ(textOfThrown([this] { leaf.OnQueryTable(context, request, response); }),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnQueryTable!");
    EXPECT_EQ(textOfThrown([this] { leaf.OnCreateTable(context, request, response); }),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnCreateTable!");
    EXPECT_EQ(textOfThrown([this] { leaf.OnModifyTable(context, request, response); }),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnModifyTable!");
    EXPECT_EQ(textOfThrown([this] { leaf.OnDeleteTable(context, request, response); }),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnDeleteTable!");
}

TEST_F(SnmpLeafHandler, HasTheCommonDefaults)
{
    EXPECT_EQ(leaf.strategy(), 0U);
    EXPECT_TRUE(leaf.isWholeTable());
    EXPECT_EQ(leaf.getSnmpOIDVersion(), 1);
}

}  // namespace
