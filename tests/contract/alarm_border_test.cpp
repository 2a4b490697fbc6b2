#include "tests/contract/handler_slots.h"
#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include "framework/kel_exception.h"
#include "host/platform/device_config_file.h"
#include "host/platform/installation_root.h"
#include "platform/snmp_table_base.h"
#include "tests/support/alarm_cells.h"
#include "tests/support/cell_bytes.h"

#include <agent_pp/snmp_pp_ext.h>
#include <gmock/gmock.h>

#include <set>

namespace {

using namespace std::string_literals;
using talvik::contract::HandlerSlot;
using talvik::contract::imageOf;
using talvik::contract::LoadedModule;
using talvik::contract::operationAt;
using talvik::contract::OwnedHandlers;
using talvik::contract::virtualEntry;
using talvik::test::AlarmCells;
using talvik::test::CellBytes;
using talvik::test::cellsOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kCurrentAlarms = "1.3.6.1.4.1.99999.2.91.10.1.1";
constexpr unsigned long long kDiskFailed = 501010001;

/// Where the operations of a table that is driven in batches stand behind a handler's own.
enum BatchedSlot : std::size_t {
    PreGetRspCell = HandlerSlot::GetSnmpOidVersion + 1,
    PostGetRspCell,
    GetTableInfo,
    GetBatchTableInfo,
    GetBatchTableInfoI,
    FillReqRecord,
    FillRspRecord,
    GetIndexOfRecord,
    GetMibKey,
    QueryRecordValidation,
    CheckOkBeforeQueryTable,
    SendBatchPackage,
    GetNextRspInfo,
    UseDateAndTime
};

/// The current alarm table of the loaded module, called by slot, on the sample catalogue.
class AlarmBorder : public testing::Test {
protected:
    AlarmBorder()
    {
        talvik::installDeviceConfig(talvik::DeviceConfigFile::load(TALVIK_DEVICE_FILE));
        talvik::installInstallationRoot(TALVIK_SOURCE_DIR);
        handlers = std::make_unique<OwnedHandlers>(loaded.module());
        alarms = &handlers->at(kCurrentAlarms);
    }

    ~AlarmBorder() override { talvik::installInstallationRoot(""); }

    void fillRow(const AlarmCells& cells, CTLVRecordV3& row)
    {
        const auto record = cells.record();
        operationAt<void, const CTLVRecordV3&, CTLVRecordV3*>(alarms, FillRspRecord)(alarms,
                                                                                     *record, &row);
    }

    std::string keyOf(const char* oid)
    {
        return operationAt<std::string, const Agentpp::Oidx&>(alarms, GetMibKey)(
            alarms, Agentpp::Oidx(oid));
    }

    static AlarmCells diskFailed()
    {
        return AlarmCells()
            .cell(0, CTLVCell::TLV_UINT, "\x01")
            .wide(1, kDiskFailed)
            .text(8, "1,7,SN1,0");
    }

    LoadedModule loaded;
    std::unique_ptr<OwnedHandlers> handlers;
    CSnmpHandler* alarms = nullptr;
};

TEST_F(AlarmBorder, TheEngineIsTheHostsAndAllElseTheModules)
{
    const std::set<std::size_t> engine = {HandlerSlot::OnQueryTable, GetTableInfo,
                                          GetBatchTableInfo,         GetBatchTableInfoI,
                                          QueryRecordValidation,     SendBatchPackage};
    const auto ofThisProgram = imageOf(reinterpret_cast<const void*>(&imageOf));
    for (std::size_t slot = 0; slot <= UseDateAndTime; ++slot) {
        EXPECT_EQ(imageOf(virtualEntry(alarms, slot)),
                  engine.count(slot) != 0 ? ofThisProgram : LoadedModule::file())
            << "slot " << slot;
    }
}

TEST_F(AlarmBorder, TheHandlerSaysHowItIsDriven)
{
    EXPECT_FALSE(operationAt<bool>(alarms, HandlerSlot::IsWholeTable)(alarms));
    EXPECT_TRUE(operationAt<bool>(alarms, UseDateAndTime)(alarms));
    EXPECT_EQ(operationAt<unsigned long long>(alarms, HandlerSlot::Strategy)(alarms), 0U);
}

TEST_F(AlarmBorder, AHostMayDeriveItsViewFromTheTableEngine)
{
    EXPECT_NE(dynamic_cast<CSnmpTableBase*>(alarms), nullptr);
}

TEST_F(AlarmBorder, TheFirstRequestIsThatOfAGetWithoutAKey)
{
    CTLVRecordV3 request;

    operationAt<void, CTLVRecordV3*>(alarms, FillReqRecord)(alarms, &request);

    EXPECT_EQ(request.ullRecordId, 4002U);
    EXPECT_THAT(cellsOf(request),
                ElementsAre(CellBytes{3, 3, "\0\0\0\0"s}, CellBytes{9, 3, "\x01\0\0\0"s}));
}

TEST_F(AlarmBorder, ARowIsReadByTheHost)
{
    CTLVRecordV3 row;

    fillRow(diskFailed(), row);

    ASSERT_THAT(*row.pCells, SizeIs(12));
    EXPECT_EQ(row[1]->toString(), "TALVIK-0001");
    EXPECT_EQ(row[7]->toString(), "501010001");
    EXPECT_EQ(row[8]->sDataLen, 11U);
    EXPECT_EQ(row[9]->toString(), "42");
    EXPECT_EQ(row[12]->toString(), "501010001");
}

TEST_F(AlarmBorder, AClearHasNoRow)
{
    CTLVRecordV3 row;

    fillRow(diskFailed().cell(0, CTLVCell::TLV_UINT, "\x08"), row);

    EXPECT_THAT(*row.pCells, IsEmpty());
}

TEST_F(AlarmBorder, ACellOfTheWrongKindIsAnExceptionThatTheHostCatches)
{
    std::string caught = "nothing thrown";
    CTLVRecordV3 row;
    try {
        fillRow(diskFailed().text(2, "3"), row);
    } catch (const CKEL_Exception& error) {
        caught = error.what();
    }
    EXPECT_EQ(caught, "CKEL_Exception: CTLVCell isn't numerical type! tag equal to 2");
    EXPECT_THAT(*row.pCells, IsEmpty());
}

TEST_F(AlarmBorder, KeysAreThoseOfTheHost)
{
    EXPECT_EQ(keyOf("91.10.1.1.1.4.42"), "42");
    EXPECT_EQ(keyOf("91.10.1.1.1.4"), CSnmpTableBase::INVALID_KEY);
    const auto record = diskFailed().record();
    EXPECT_EQ(
        (operationAt<std::string, const CTLVRecordV3&>(alarms, GetIndexOfRecord)(alarms, *record)),
        "42");
}

}  // namespace
