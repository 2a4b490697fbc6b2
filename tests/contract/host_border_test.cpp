#include "tests/contract/handler_slots.h"
#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include "framework/kel_exception.h"
#include "host/link/backend_link.h"
#include "host/link/configuration_link.h"
#include "host/platform/device_config_file.h"
#include "platform/debug_kit_mgr.h"
#include "tests/support/request_context.h"
#include "tests/support/throw_text.h"

#include <ace/Singleton.h>
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <functional>

// As a host does: the instantiation is exported, so that a module's own yields to it.
template class __attribute__((visibility("default")))
ACE_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;
template class __attribute__((visibility("default")))
ACE_Unmanaged_Singleton<CKELDebugKitMgr, ACE_Thread_Mutex>;

namespace {

using talvik::contract::callHandler;
using talvik::contract::HandlerSlot;
using talvik::contract::imageOf;
using talvik::contract::LoadedModule;
using talvik::contract::operationAt;
using talvik::contract::OwnedHandlers;
using talvik::contract::virtualEntry;
using talvik::test::textOfThrown;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::SizeIs;
using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr const char* kTopology = "1.3.6.1.4.1.99999.2.91.9.1";

/// Where a package's operations stand in its table.
enum PackageSlot : std::size_t { Decode = 2, EncodeIntoNewBuffer, EncodeIntoBuffer, Clear, Dump };

/// A back end that shows a test the packages that the module made.
class InspectingLink : public talvik::BackendLink {
public:
    using Inspection = std::function<int(Package& request, Package& answer)>;

    explicit InspectingLink(Inspection inspection) : inspection_(std::move(inspection)) {}

    int exchange(Package& request, Package& answer) override
    {
        return inspection_(request, answer);
    }
    std::string name() const override { return "inspecting"; }

private:
    Inspection inspection_;
};

/// The topology handler of the loaded module, called as code compiled elsewhere calls it: by slot.
class HostBorder : public testing::Test {
protected:
    HostBorder()
    {
        talvik::installDeviceConfig(talvik::DeviceConfigFile::load(TALVIK_DEVICE_FILE));
        answerWith([](Package&, Package&) { return 0; });
    }

    ~HostBorder() override { talvik::installBackendLink(nullptr); }

    static void answerWith(InspectingLink::Inspection inspection)
    {
        talvik::installBackendLink(std::make_unique<InspectingLink>(std::move(inspection)));
    }

    int callPackages(HandlerSlot slot)
    {
        return callHandler(topology, slot, context, request, response);
    }

    /// What the program catches of a call that the module refuses.
    std::string refusalOf(HandlerSlot slot)
    {
        return textOfThrown([&] { callPackages(slot); });
    }

    LoadedModule loaded;
    OwnedHandlers handlers{loaded.module()};
    CSnmpHandler& topology = handlers.at(kTopology);
    CKEL_SnmpContext context;
    Package request;
    Package response;
};

TEST_F(HostBorder, EveryOperationOfTheHandlersTableIsTheModulesOwn)
{
    for (std::size_t slot = 0; slot <= HandlerSlot::GetSnmpOidVersion; ++slot) {
        EXPECT_EQ(imageOf(virtualEntry(&topology, slot)), LoadedModule::file()) << "slot " << slot;
    }
}

TEST_F(HostBorder, LeafOperationsAreRefusedWithAnExceptionThatTheHostCatches)
{
    EXPECT_EQ(refusalOf(HandlerSlot::OnQueryLeaf),
              "CKEL_Exception: CSnmpTableHandler can't support leaf OnQueryLeaf!");
    EXPECT_EQ(refusalOf(HandlerSlot::OnSetLeaf),
              "CKEL_Exception: CSnmpTableHandler can't support leaf OnSetLeaf!");
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(HostBorder, TheExceptionIsTheModulesObjectAndSaysWhatBySlot)
{
    bool caught = false;
    try {
        callPackages(HandlerSlot::OnSetLeaf);
    } catch (const std::exception& error) {
        caught = true;
        EXPECT_EQ(imageOf(virtualEntry(&error, 2)), LoadedModule::file());
        EXPECT_STREQ(operationAt<const char*>(&error, 2)(&error),
                     "CKEL_Exception: CSnmpTableHandler can't support leaf OnSetLeaf!");
    }
    EXPECT_TRUE(caught);
}

TEST_F(HostBorder, ChangesThatTheTableDoesNotSupportFailAndTouchNothing)
{
    EXPECT_EQ(callPackages(HandlerSlot::OnCreateTable), -1);
    EXPECT_EQ(callPackages(HandlerSlot::OnModifyTable), -1);
    EXPECT_EQ(callPackages(HandlerSlot::OnDeleteTable), -1);
    EXPECT_TRUE(response.oRecords.empty());
}

TEST_F(HostBorder, TheHandlerSaysHowItIsDriven)
{
    EXPECT_EQ(operationAt<unsigned long long>(&topology, HandlerSlot::Strategy)(&topology), 0U);
    EXPECT_TRUE(operationAt<bool>(&topology, HandlerSlot::IsWholeTable)(&topology));
    EXPECT_EQ(operationAt<int>(&topology, HandlerSlot::GetSnmpOidVersion)(&topology), 1);
}

TEST_F(HostBorder, AQueryAnswersOneRowThatTheHostCanRead)
{
    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);

    ASSERT_THAT(response.oRecords, SizeIs(1));
    const auto& row = *response[0];
    EXPECT_EQ(row.ullRecordId, CTLVRecordV3::NO_RECORD_ID);
    EXPECT_THAT(*row.pCells, SizeIs(8));
    EXPECT_EQ(row[1]->toString(), "TALVIK-0001");
    EXPECT_EQ(row[4]->toString(), "192.168.2.10");
    EXPECT_EQ(row[8]->toString(), "1");
}

TEST_F(HostBorder, ABackEndThatRefusesOnlyTurnsTheStatus)
{
    answerWith([](Package&, Package&) { return 7; });

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);
    ASSERT_THAT(response.oRecords, SizeIs(1));
    EXPECT_EQ((*response[0])[8]->toString(), "2");
}

/// Header with the defaults and 10 bytes of records; then the record 4001 without cells.
const std::vector<unsigned char> kWwnCommand = {
    0x55, 0x55, 0x55, 0x55, 3,    0,    0,    0,    0,    0,    0,  0, 0xFF, 0xFF,
    0xFF, 0xFF, 0xFD, 0xFF, 0x01, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 10, 0, 0,    0,  //
    0xA1, 0x0F, 0,    0,    0,    0,    0,    0,    0,    0,
};

TEST_F(HostBorder, EveryOperationOfAPackagesTableIsTheModulesOwn)
{
    std::vector<std::string> images;
    answerWith([&](Package& command, Package&) {
        for (std::size_t slot = 0; slot <= Dump; ++slot) {
            images.push_back(imageOf(virtualEntry(&command, slot)));
        }
        return 0;
    });

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);
    EXPECT_EQ(images, std::vector<std::string>(Dump + 1, LoadedModule::file()));
}

TEST_F(HostBorder, APackageOfTheModuleEncodesBySlot)
{
    std::vector<unsigned char> intoNewBuffer;
    std::vector<unsigned char> intoBuffer(kWwnCommand.size());
    unsigned intoShortBuffer = 0;
    answerWith([&](Package& command, Package&) {
        unsigned char* made = nullptr;
        const auto size =
            operationAt<unsigned, unsigned char*&>(&command, EncodeIntoNewBuffer)(&command, made);
        intoNewBuffer.assign(made, made + size);
        delete[] made;

        const auto encode =
            operationAt<unsigned, unsigned char*, unsigned>(&command, EncodeIntoBuffer);
        encode(&command, intoBuffer.data(), static_cast<unsigned>(intoBuffer.size()));
        unsigned char tooSmall[37];
        intoShortBuffer = encode(&command, tooSmall, sizeof tooSmall);
        return 0;
    });

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);
    EXPECT_THAT(intoNewBuffer, ElementsAreArray(kWwnCommand));
    EXPECT_THAT(intoBuffer, ElementsAreArray(kWwnCommand));
    EXPECT_EQ(intoShortBuffer, 0xFFFFFFFFU);
}

TEST_F(HostBorder, APackageOfTheModuleDecodesAndClearsBySlot)
{
    unsigned consumed = 0;
    std::vector<std::uint64_t> ids;
    std::size_t recordsAfterClear = 99;
    auto wire = kWwnCommand;
    answerWith([&](Package&, Package& answer) {
        const auto decode = operationAt<unsigned, unsigned char*, unsigned>(&answer, Decode);
        consumed = decode(&answer, wire.data(), static_cast<unsigned>(wire.size()));
        for (const auto* record : answer.oRecords) {
            ids.push_back(record->ullRecordId);
        }
        operationAt<void>(&answer, Clear)(&answer);
        recordsAfterClear = answer.oRecords.size();
        return 0;
    });

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);
    EXPECT_EQ(consumed, 10U);
    EXPECT_THAT(ids, ElementsAre(4001U));
    EXPECT_EQ(recordsAfterClear, 0U);
}

TEST_F(HostBorder, APackageOfTheModuleDumpsBySlot)
{
    std::string text;
    answerWith([&](Package& command, Package&) {
        std::ostringstream os;
        operationAt<void, std::ostringstream&>(&command, Dump)(&command, os);
        text = os.str();
        return 0;
    });

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);
    EXPECT_EQ(text.substr(0, 2), "{\n");
    EXPECT_EQ(text.substr(text.size() - 2), "}\n");
}

constexpr const char* kManagerPointer =
    "_ZN23ACE_Unmanaged_SingletonI15CKELDebugKitMgr16ACE_Thread_MutexE10singleton_E";

TEST_F(HostBorder, HostAndModuleShareOneDebugKitManager)
{
    auto* const modulesOwn = static_cast<void**>(dlsym(loaded.image(), kManagerPointer));
    auto* const hosts = static_cast<void**>(dlsym(RTLD_DEFAULT, kManagerPointer));
    ASSERT_NE(modulesOwn, nullptr)
        << "the module exports no singleton that could be merged with the host's";
    ASSERT_NE(hosts, nullptr) << "this program exports no singleton";

    ASSERT_EQ(callPackages(HandlerSlot::OnQueryTable), 0);

    EXPECT_NE(*hosts, nullptr) << "the module's log lines went past the host's manager";
    EXPECT_EQ(*modulesOwn, nullptr) << "the module made a manager of its own";
}

}  // namespace
