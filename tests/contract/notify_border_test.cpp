#include "tests/contract/loaded_module.h"
#include "tests/contract/vtable.h"

#include "framework/tlv_record.h"
#include "host/platform/device_config_file.h"
#include "host/platform/installation_root.h"
#include "platform/basic_info.h"
#include "platform/notify_handler.h"
#include "trap/trap_dest_info.h"

#include <agent_pp/snmp_pp_ext.h>
#include <gmock/gmock.h>

#include <memory>

namespace {

using talvik::contract::imageOf;
using talvik::contract::LoadedModule;
using talvik::contract::operationAt;
using talvik::contract::virtualEntry;
using testing::ElementsAre;
using testing::SizeIs;
using Destinations = std::map<std::string, tTrapDestInfo>;

constexpr unsigned long long kDiskFailed = 501010001;

/// Where a notification handler's operations stand in its table.
enum NotifySlot : std::size_t {
    ConstructAlarmTrapVb = 2,
    GetTrapOid,
    GetBaseOid,
    UseDateAndTime,
    GetTrapVbLen,
    FilterTrapMap
};

/// The notification handlers of the loaded module, called by slot, on the sample catalogue.
class NotifyBorder : public testing::Test {
protected:
    NotifyBorder()
    {
        talvik::installDeviceConfig(talvik::DeviceConfigFile::load(TALVIK_DEVICE_FILE));
        talvik::installInstallationRoot(TALVIK_SOURCE_DIR);
    }

    ~NotifyBorder() override { talvik::installInstallationRoot(""); }

    static std::unique_ptr<CTLVRecordV3> diskFailed()
    {
        auto record = std::make_unique<CTLVRecordV3>(1);
        number(*record, 1, kDiskFailed);
        number(*record, 2, 3);
        number(*record, 3, 42);
        number(*record, 4, 1000);
        number(*record, 5, 0);
        number(*record, 6, 0);
        auto cell = std::make_unique<CTLVCell>();
        cell->set(8, "1,7,SN1,0");
        record->append(cell.release());
        return record;
    }

    static void number(CTLVRecordV3& record, unsigned short tag, unsigned long long value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
        record.append(cell.release());
    }

    const INotifyMsgHandler* handler(std::size_t index)
    {
        return loaded.notifyHandlers().at(index);
    }

    std::string trapOid(std::size_t index, unsigned short arg)
    {
        const auto operation = operationAt<Agentpp::Oidx&, unsigned long long, unsigned short>(
            handler(index), GetTrapOid);
        return operation(handler(index), kDiskFailed, arg).get_printable();
    }

    /// OID and printable value of each binding that the handler makes.
    std::vector<std::pair<std::string, std::string>> bindings(std::size_t index)
    {
        const auto record = diskFailed();
        Agentpp::Vbx* made = nullptr;
        const auto construct = operationAt<int, const CTLVRecordV3&, Agentpp::Vbx*&>(
            handler(index), ConstructAlarmTrapVb);
        EXPECT_EQ(construct(handler(index), *record, made), 0);
        const std::unique_ptr<Agentpp::Vbx[]> owned(made);
        std::vector<std::pair<std::string, std::string>> found;
        const int count = operationAt<int>(handler(index), GetTrapVbLen)(handler(index));
        for (int i = 0; i < count; ++i) {
            found.emplace_back(made[i].get_printable_oid(), made[i].get_printable_value());
        }
        return found;
    }

    std::vector<std::string> chosen(std::size_t index)
    {
        Destinations all;
        for (const unsigned type : {0U, 1U, 2U, 3U, 7U}) {
            auto& destination = all["key" + std::to_string(9 - type)];
            destination.type = type;
            destination.index = std::to_string(type);
        }
        std::list<tTrapDestInfo> found;
        operationAt<void, const Destinations&, std::list<tTrapDestInfo>&>(
            handler(index), FilterTrapMap)(handler(index), all, found);
        std::vector<std::string> indexes;
        for (const auto& destination : found) {
            indexes.push_back(destination.index);
        }
        return indexes;
    }

    LoadedModule loaded;
};

TEST_F(NotifyBorder, TheFactoryRegistersTwoHandlersBehindWhatIsThere)
{
    const auto& all = CNotifyHandler::instance()->handlers();
    const auto before = all.size();

    const LoadedModule second;

    EXPECT_THAT(second.notifyHandlers(), SizeIs(2));
    ASSERT_THAT(all, SizeIs(before + 2));
    EXPECT_EQ(*std::prev(all.end(), 2), second.notifyHandlers()[0]);
    EXPECT_EQ(all.back(), second.notifyHandlers()[1]);
}

TEST_F(NotifyBorder, TheFirstServesFixedTrapsAndTheSecondTheAlarmsOwn)
{
    ASSERT_THAT(loaded.notifyHandlers(), SizeIs(2));
    EXPECT_EQ(trapOid(0, 2), "1.3.6.1.4.1.99999.2.91.10.2.1.0.1");
    EXPECT_EQ(trapOid(1, 2), "1.3.6.1.4.1.99999.2.251.20.1.2.2.1.1.2");
}

TEST_F(NotifyBorder, EveryOperationOfBothTablesIsTheModulesOwn)
{
    for (const auto* each : loaded.notifyHandlers()) {
        for (std::size_t slot = 0; slot <= FilterTrapMap; ++slot) {
            EXPECT_EQ(imageOf(virtualEntry(each, slot)), LoadedModule::file()) << "slot " << slot;
        }
    }
}

TEST_F(NotifyBorder, TheHandlersSayHowTheirTrapsLook)
{
    const char* const bases[] = {"1.3.6.1.4.1.99999.2.91.10.3.1.1",
                                 "1.3.6.1.4.1.99999.2.251.20.1.3"};
    for (std::size_t i = 0; i < 2; ++i) {
        const auto base = operationAt<Agentpp::Oidx&>(handler(i), GetBaseOid);
        EXPECT_STREQ(base(handler(i)).get_printable(), bases[i]);
        EXPECT_EQ(operationAt<bool>(handler(i), UseDateAndTime)(handler(i)), i == 0);
        EXPECT_EQ(operationAt<int>(handler(i), GetTrapVbLen)(handler(i)), 14);
    }
}

TEST_F(NotifyBorder, BindingsOfBothAreTheHostsToReadAndFree)
{
    const auto first = bindings(0);
    const auto second = bindings(1);

    ASSERT_THAT(first, SizeIs(14));
    ASSERT_THAT(second, SizeIs(14));
    EXPECT_EQ(first[0].first, "1.3.6.1.4.1.99999.2.91.10.3.1.1.1.0");
    EXPECT_EQ(second[13].first, "1.3.6.1.4.1.99999.2.251.20.1.3.14.0");
    EXPECT_EQ(first[0].second, "TALVIK-0001");
    EXPECT_EQ(first[1].second, "Enclosure 1, slot 7");
    EXPECT_EQ(first[3].second, "Disk failed");
    EXPECT_EQ(first[4].second, "2");
    EXPECT_EQ(first[12].second, std::to_string(CSNMPBasicImpl::device_type));
    EXPECT_EQ(first[13].second, CSNMPBasicImpl::product_sn);
    EXPECT_EQ(second[7].second.substr(0, 5), "1970-");
}

TEST_F(NotifyBorder, DestinationsAreChosenByType)
{
    EXPECT_THAT(chosen(0), ElementsAre("3", "1"));
    EXPECT_THAT(chosen(1), ElementsAre("7"));
}

}  // namespace
