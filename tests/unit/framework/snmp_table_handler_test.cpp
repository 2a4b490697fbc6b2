#include "framework/snmp_table_handler.h"

#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using talvik::test::textOfThrown;

class Table : public CSnmpTableHandler {
public:
    int OnQueryTable(const CKEL_SnmpContext&, const Package&, Package&) override { return 0; }
};

class SnmpTableHandler : public talvik::test::FakeHostTest {
protected:
    Table table;
    Package request;
    Package response;
};

TEST_F(SnmpTableHandler, RefusesLeafOperationsWithTheirTexts)
{
    EXPECT_EQ(textOfThrown([this] { table.OnQueryLeaf(context, request, response); }),
              "CKEL_Exception: CSnmpTableHandler can't support leaf OnQueryLeaf!");
    EXPECT_EQ(textOfThrown([this] { table.OnSetLeaf(context, request, response); }),
              "CKEL_Exception: CSnmpTableHandler can't support leaf OnSetLeaf!");
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpTableHandler, ChangesThatAreNotOverriddenAreMinusOneAndTouchNothing)
{
    EXPECT_EQ(table.OnCreateTable(context, request, response), -1);
    EXPECT_EQ(table.OnModifyTable(context, request, response), -1);
    EXPECT_EQ(table.OnDeleteTable(context, request, response), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(SnmpTableHandler, HasTheCommonDefaults)
{
    EXPECT_EQ(table.strategy(), 0U);
    EXPECT_TRUE(table.isWholeTable());
    EXPECT_EQ(table.getSnmpOIDVersion(), 1);
}

}  // namespace
