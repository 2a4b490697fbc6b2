#include "tests/contract/handler_slots.h"
#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include "host/link/backend_link.h"
#include "host/link/configuration_link.h"
#include "host/platform/device_config_file.h"
#include "tests/support/cell_bytes.h"
#include "tests/support/request_context.h"
#include "tests/support/throw_text.h"

#include <gmock/gmock.h>

namespace {

using namespace std::string_literals;
using talvik::contract::callHandler;
using talvik::contract::HandlerSlot;
using talvik::contract::imageOf;
using talvik::contract::LoadedModule;
using talvik::contract::OwnedHandlers;
using talvik::contract::virtualEntry;
using talvik::test::CellBytes;
using talvik::test::cellsOf;
using talvik::test::textOfThrown;
using testing::ElementsAre;
using testing::SizeIs;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr const char* kClearAlarm = "1.3.6.1.4.1.99999.2.91.10.1.2";
constexpr std::size_t kQueryLeaf = HandlerSlot::GetSnmpOidVersion + 1;

/// A back end that keeps what a test looks at, and answers `result`.
class KeepingLink : public talvik::BackendLink {
public:
    struct Kept {
        std::uint64_t recordId = 0;
        std::uint32_t word3 = 0;
        std::vector<CellBytes> cells;
        std::size_t commands = 0;
        int result = 0;
    };

    explicit KeepingLink(Kept& kept) : kept_(kept) {}

    int exchange(Package& request, Package&) override
    {
        kept_.recordId = request[0]->ullRecordId;
        kept_.word3 = request.oHead.uiWord3;
        kept_.cells = cellsOf(*request[0]);
        ++kept_.commands;
        return kept_.result;
    }
    std::string name() const override { return "keeping"; }

private:
    Kept& kept_;
};

/// The clear-alarm leaf of the loaded module, called by slot.
class ClearAlarmBorder : public testing::Test {
protected:
    ClearAlarmBorder()
    {
        talvik::installDeviceConfig(talvik::DeviceConfigFile::load(TALVIK_DEVICE_FILE));
        talvik::installBackendLink(std::make_unique<KeepingLink>(backEnd));
    }

    ~ClearAlarmBorder() override { talvik::installBackendLink(nullptr); }

    void name(std::uint32_t serial)
    {
        request.oRecords.push_back(new CTLVRecordV3);
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_UINT, 0, &serial, sizeof serial);
        request[0]->append(cell.release());
    }

    int call(HandlerSlot slot) { return callHandler(leaf, slot, context, request, response); }

    std::string refusalOf(HandlerSlot slot)
    {
        return textOfThrown([&] { call(slot); });
    }

    KeepingLink::Kept backEnd;
    LoadedModule loaded;
    OwnedHandlers handlers{loaded.module()};
    CSnmpHandler& leaf = handlers.at(kClearAlarm);
    CKEL_SnmpContext context;
    Package request;
    Package response;
};

TEST_F(ClearAlarmBorder, EveryOperationOfTheHandlersTableIsTheModulesOwn)
{
    for (std::size_t slot = 0; slot <= kQueryLeaf; ++slot) {
        EXPECT_EQ(imageOf(virtualEntry(&leaf, slot)), LoadedModule::file()) << "slot " << slot;
    }
}

TEST_F(ClearAlarmBorder, ASetReachesTheBackEnd)
{
    name(42);
    request.oHead.uiWord3 = 0x7F000001;

    ASSERT_EQ(call(HandlerSlot::OnSetLeaf), 0);

    EXPECT_EQ(backEnd.recordId, 4003U);
    EXPECT_EQ(backEnd.word3, 0x7F000001U);
    EXPECT_THAT(backEnd.cells,
                ElementsAre(CellBytes{3, 3, "\x2A\0\0\0"s}, CellBytes{7, 2, "SNMP_AGENT\0"s}));
}

TEST_F(ClearAlarmBorder, TheBackEndsResultComesBackUnchanged)
{
    name(42);
    backEnd.result = 0x1000012;

    EXPECT_EQ(call(HandlerSlot::OnSetLeaf), 0x1000012);
}

TEST_F(ClearAlarmBorder, ASetWithoutARecordIsAnExceptionThatTheHostCatches)
{
    EXPECT_EQ(refusalOf(HandlerSlot::OnSetLeaf), "CKEL_Exception: record don't exist, index is 0");
    EXPECT_EQ(backEnd.commands, 0U);
}

TEST_F(ClearAlarmBorder, AGetAnswersZeroWithoutTheBackEnd)
{
    ASSERT_EQ(call(HandlerSlot::OnQueryLeaf), 0);

    ASSERT_THAT(response.oRecords, SizeIs(1));
    EXPECT_THAT(cellsOf(*response[0]), ElementsAre(CellBytes{0, 3, "\0\0\0\0"s}));
    EXPECT_EQ(backEnd.commands, 0U);
}

TEST_F(ClearAlarmBorder, TableOperationsAreRefused)
{
    EXPECT_EQ(refusalOf(HandlerSlot::OnQueryTable),
              "CKEL_Exception: CSnmpLeafHandler can't support leaf OnQueryTable!");
}

}  // namespace
