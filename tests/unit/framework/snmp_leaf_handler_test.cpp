#include "framework/snmp_leaf_handler.h"

#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
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

TEST_F(SnmpLeafHandler, AFailedQueryThatMadeACellFreesIt)
{
    leaf.query = [](CTLVCell*& cell) {
        cell = numberCell(7, 1);
        return 5;
    };

    EXPECT_EQ(ask(), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpLeafHandler, ASuccessWithoutACellIsMinusOne)
{
    leaf.query = [](CTLVCell*&) { return 0; };

    EXPECT_EQ(ask(), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpLeafHandler, AnExceptionPassesOnAndTheCellIsFreed)
{
    leaf.query = [](CTLVCell*& cell) -> int {
        cell = numberCell(7, 1);
        throw std::runtime_error("lost");
    };

    EXPECT_THROW(ask(), std::runtime_error);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpLeafHandler, AnAppendThatFailsLeavesTheResponseUntouched)
{
    leaf.query = [](CTLVCell*& cell) {
        cell = numberCell(7, 1);
        return 0;
    };
    host.onCall("append", [] { throw std::bad_alloc(); });

    EXPECT_THROW(ask(), std::bad_alloc);
    EXPECT_TRUE(response.oRecords.empty());
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
