#include "framework/debug_kit_guard.h"
#include "framework/tlv_package.h"
#include "platform/snmp_table_base.h"

#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"
#include "tests/support/fake_host_test.h"

#include <cstring>

// Where the fields of the shared classes stand, in bytes: a host compiled elsewhere counts on it.

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr std::ptrdiff_t kPointer = sizeof(void*);

template <typename Whole, typename Field>
std::ptrdiff_t offset(const Whole& whole, const Field& field)
{
    return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&whole);
}

class Layout : public talvik::test::FakeHostTest {};

TEST_F(Layout, OfARecordIsIdentifierListIndex)
{
    const CTLVRecordV3 record;

    EXPECT_EQ(offset(record, record.ullRecordId), 0);
    EXPECT_EQ(offset(record, record.pCells), 8);
    EXPECT_EQ(offset(record, record.oTagIndex), 8 + kPointer);
}

TEST_F(Layout, OfAPackageIsVtableRecordsHeader)
{
    const Package package;

    EXPECT_EQ(offset(package, package.oRecords), kPointer);
    EXPECT_EQ(offset(package, package.oHead), 4 * kPointer);
}

TEST_F(Layout, OfAGuardIsKitNameOutcome)
{
    const CKELDebugKitGuard guard(4, "name of the traced call");
    const char* bytes = reinterpret_cast<const char*>(&guard);

    const auto* name = reinterpret_cast<const std::string*>(bytes + kPointer);
    std::int32_t outcome = 0;
    std::memcpy(&outcome, bytes + kPointer + sizeof(std::string), sizeof outcome);
    EXPECT_EQ(*name, "name of the traced call");
    EXPECT_EQ(outcome, 1);
    EXPECT_EQ(sizeof guard, kPointer + sizeof(std::string) + kPointer);
}

class Table : public CSnmpTableBase {
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

TEST_F(Layout, OfTheTableEngineIsKindKeyNumberFlagRows)
{
    const Table table;
    const auto afterKey = static_cast<std::ptrdiff_t>(2 * kPointer + sizeof(std::string));

    EXPECT_EQ(offset(table, table.m_iRequestKind), kPointer);
    EXPECT_EQ(offset(table, table.m_sCurrentKey), 2 * kPointer);
    EXPECT_EQ(offset(table, table.m_uiBatch), afterKey);
    EXPECT_EQ(offset(table, table.m_bWholeTable), afterKey + 4);
    EXPECT_EQ(offset(table, table.m_oRows), afterKey + 8);
}

}  // namespace
