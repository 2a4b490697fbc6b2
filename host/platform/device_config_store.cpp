#include "host/platform/device_config_store.h"

#include "platform/basic_info.h"

#include <limits>
#include <utility>

namespace talvik {

namespace {

constexpr const char* kBasicInfo = "BASIC_INFO";

DeviceConfigFile& installed()
{
    static DeviceConfigFile file;
    return file;
}

}  // namespace

const DeviceConfigFile& deviceConfig()
{
    return installed();
}

void installDeviceConfig(DeviceConfigFile file)
{
    const auto deviceType =
        file.number(kBasicInfo, "DEVICE_TYPE",
                    static_cast<unsigned long long>(std::numeric_limits<int>::max()));
    file.number(kBasicInfo, "NODE_TYPE", std::numeric_limits<unsigned int>::max());
    file.text(kBasicInfo, "NODE_CODE");
    auto serialNumber = file.text(kBasicInfo, "PRODUCT_SN");

    CSNMPBasicImpl::device_type = static_cast<int>(deviceType);
    CSNMPBasicImpl::product_sn = std::move(serialNumber);
    installed() = std::move(file);
}

}  // namespace talvik
