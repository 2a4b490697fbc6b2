#include "platform/snmp_table_base.h"

#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/octet.h"
#include "tests/support/fake_host_test.h"

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

class BatchTable : public CSnmpTableBase {
public:
    int preGetRspCell(const CTLVRecordV3&) override { return 0; }
    int postGetRspCell(const CTLVRecordV3&) override { return 0; }
    void fillReqRecord(CTLVRecordV3*) override {}
    void fillRspRecord(const CTLVRecordV3&, CTLVRecordV3*) override {}
    std::string getIndexOfRecord(const CTLVRecordV3&) override { return {}; }
    std::string getMibKey(const Agentpp::Oidx&) override { return {}; }

    using CSnmpTableBase::m_bWholeTable;
    using CSnmpTableBase::m_iRequestKind;
    using CSnmpTableBase::m_oRows;
    using CSnmpTableBase::m_sCurrentKey;
    using CSnmpTableBase::m_uiBatch;
};

class SnmpTableBase : public talvik::test::FakeHostTest {
protected:
    BatchTable table;
};

TEST_F(SnmpTableBase, StartsWithoutAKeyAndWithoutRows)
{
    EXPECT_EQ(table.m_sCurrentKey, CSnmpTableBase::INVALID_KEY);
    EXPECT_EQ(table.m_uiBatch, 0U);
    EXPECT_FALSE(table.m_bWholeTable);
    EXPECT_TRUE(table.m_oRows.oRecords.empty());
}

TEST_F(SnmpTableBase, WholeTableIsTheFlag)
{
    EXPECT_FALSE(table.isWholeTable());
    table.m_bWholeTable = true;
    EXPECT_TRUE(table.isWholeTable());
}

TEST_F(SnmpTableBase, AQueryIsAllowedByDefault)
{
    EXPECT_TRUE(table.checkOKBeforeQueryTable(context));
}

TEST_F(SnmpTableBase, TheNextRowIsNotLookedForByDefault)
{
    Package request;
    Package response;
    request.oRecords.push_back(new CTLVRecordV3(1));

    EXPECT_EQ(table.GetNextRspInfo("key", request, response), 0);
    EXPECT_EQ(request.oRecords.size(), 1U);
    EXPECT_TRUE(response.oRecords.empty());
}

}  // namespace
