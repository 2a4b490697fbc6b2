#include "host/platform/device_config_store.h"

#include "host/startup_error.h"
#include "platform/basic_info.h"

#include <limits>
#include <string>
#include <utility>

namespace talvik {

namespace {

constexpr const char* kBasicInfo = "BASIC_INFO";

DeviceConfigFile& installed()
{
    static DeviceConfigFile file;
    return file;
}

/// A text that the MIB has as an SnmpAdminString.
const std::string& adminString(const DeviceConfigFile& file, const char* item)
{
    constexpr std::size_t kMaxOctets = 255;
    const auto& value = file.text(kBasicInfo, item);
    if (value.size() > kMaxOctets) {
        throw StartupError("device configuration " + file.path() + ": section \"" + kBasicInfo +
                           "\", item \"" + item + "\" has " + std::to_string(value.size()) +
                           " octets; managers take at most " + std::to_string(kMaxOctets));
    }
    return value;
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
    adminString(file, "NODE_CODE");
    auto serialNumber = adminString(file, "PRODUCT_SN");

    CSNMPBasicImpl::device_type = static_cast<int>(deviceType);
    CSNMPBasicImpl::product_sn = std::move(serialNumber);
    installed() = std::move(file);
}

}  // namespace talvik
