#include "tests/contract/handler_slots.h"
#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include "framework/kel_exception.h"
#include "host/platform/trap_store.h"
#include "tests/support/request_context.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

namespace {

using talvik::contract::callHandler;
using talvik::contract::HandlerSlot;
using talvik::contract::imageOf;
using talvik::contract::LoadedModule;
using talvik::contract::operationAt;
using talvik::contract::OwnedHandlers;
using talvik::contract::virtualEntry;
using testing::IsEmpty;
using testing::SizeIs;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr const char* kTrapDestinations = "1.3.6.1.4.1.99999.2.91.10.4.1";
constexpr int kRefused = 0x3000003;
constexpr int kIndexTaken = 0x1000020;
constexpr int kStoreFailed = 0x1000023;

/// The trap destination handler of the loaded module, called by slot, on the reference host's list.
class TrapBorder : public testing::Test {
protected:
    TrapBorder()
    {
        request.oRecords.push_back(new CTLVRecordV3);
        talvik::installTrapStore(std::make_unique<talvik::TrapStore>(folder.path()));
    }

    ~TrapBorder() override { talvik::installTrapStore(nullptr); }

    int call(HandlerSlot slot) { return callHandler(traps, slot, context, request, response); }

    void text(unsigned short tag, const char* value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set(tag, value);
        request[0]->append(cell.release());
    }

    void number(unsigned short tag, unsigned value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
        request[0]->append(cell.release());
    }

    /// One destination under the index that the request's header names.
    int createAt(unsigned index)
    {
        request[0]->clear();
        text(1, "192.0.2.1");
        number(2, 162);
        request.oHead.uiWord3 = index;
        return call(HandlerSlot::OnCreateTable);
    }

    talvik::test::TempDir folder;
    LoadedModule loaded;
    OwnedHandlers handlers{loaded.module()};
    CSnmpHandler& traps = handlers.at(kTrapDestinations);
    CKEL_SnmpContext context;
    Package request;
    Package response;
};

TEST_F(TrapBorder, EveryOperationOfTheHandlersTableIsTheModulesOwn)
{
    for (std::size_t slot = 0; slot <= HandlerSlot::GetSnmpOidVersion; ++slot) {
        EXPECT_EQ(imageOf(virtualEntry(&traps, slot)), LoadedModule::file()) << "slot " << slot;
    }
}

TEST_F(TrapBorder, TheHandlerSaysHowItIsDriven)
{
    EXPECT_EQ(operationAt<unsigned long long>(&traps, HandlerSlot::Strategy)(&traps), 0U);
    EXPECT_TRUE(operationAt<bool>(&traps, HandlerSlot::IsWholeTable)(&traps));
    EXPECT_EQ(operationAt<int>(&traps, HandlerSlot::GetSnmpOidVersion)(&traps), 1);
}

TEST_F(TrapBorder, AnEmptyListIsAnEmptyTable)
{
    EXPECT_EQ(call(HandlerSlot::OnQueryTable), 0);
    EXPECT_THAT(response.oRecords, IsEmpty());
}

TEST_F(TrapBorder, ADestinationMadeByTheModuleIsReadByTheHost)
{
    ASSERT_EQ(createAt(17), 0);
    ASSERT_EQ(call(HandlerSlot::OnQueryTable), 0);

    ASSERT_THAT(response.oRecords, SizeIs(1));
    const auto& row = *response[0];
    EXPECT_THAT(*row.pCells, SizeIs(8));
    const char* const expected[] = {"192.0.2.1", "162", "1", "17", "2", "192.0.2.1", "1", "--"};
    for (unsigned short tag = 1; tag <= 8; ++tag) {
        EXPECT_EQ(row[tag]->toString(), expected[tag - 1]) << "tag " << tag;
    }
}

TEST_F(TrapBorder, AModifyAndADeleteReachTheHostsList)
{
    ASSERT_EQ(createAt(17), 0);
    request[0]->clear();
    text(1, "192.0.2.2");
    number(2, 1162);
    text(4, "17");

    ASSERT_EQ(call(HandlerSlot::OnModifyTable), 0);
    ASSERT_EQ(call(HandlerSlot::OnQueryTable), 0);
    ASSERT_THAT(response.oRecords, SizeIs(1));
    EXPECT_EQ((*response[0])[6]->toString(), "192.0.2.2");
    EXPECT_EQ((*response[0])[2]->toString(), "1162");

    response.clear();
    ASSERT_EQ(call(HandlerSlot::OnDeleteTable), 0);
    ASSERT_EQ(call(HandlerSlot::OnQueryTable), 0);
    EXPECT_THAT(response.oRecords, IsEmpty());
}

TEST_F(TrapBorder, TheHostsResultComesBackUnchanged)
{
    ASSERT_EQ(createAt(17), 0);
    EXPECT_EQ(createAt(17), kIndexTaken);
}

TEST_F(TrapBorder, AHostWithoutAListFailsEachOperationInItsOwnWay)
{
    talvik::installTrapStore(nullptr);

    EXPECT_EQ(createAt(17), kStoreFailed);
    EXPECT_EQ(call(HandlerSlot::OnQueryTable), -1);
    EXPECT_EQ(call(HandlerSlot::OnDeleteTable), -1);
    EXPECT_THAT(response.oRecords, IsEmpty());
}

TEST_F(TrapBorder, ARefusalComesBackAsItsCode)
{
    number(2, 162);
    EXPECT_EQ(call(HandlerSlot::OnCreateTable), kRefused);
    EXPECT_EQ(call(HandlerSlot::OnModifyTable), kRefused);
    EXPECT_EQ(call(HandlerSlot::OnDeleteTable), kRefused);
}

TEST_F(TrapBorder, ACellOfTheWrongKindIsAnExceptionThatTheHostCatches)
{
    std::string caught = "nothing thrown";
    text(2, "162");
    try {
        call(HandlerSlot::OnCreateTable);
    } catch (const CKEL_Exception& error) {
        caught = error.what();
    }
    EXPECT_EQ(caught, "CKEL_Exception: CTLVCell isn't numerical type! tag equal to 2");
}

TEST_F(TrapBorder, AMissingPortIsTheHostsExceptionPassedThroughTheModule)
{
    std::string caught = "nothing thrown";
    text(1, "192.0.2.1");
    try {
        call(HandlerSlot::OnCreateTable);
    } catch (const CKEL_Exception& error) {
        caught = error.what();
    }
    EXPECT_EQ(caught, "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to 2");
}

}  // namespace
