#include "platform/device_config.h"

#include "host/platform/device_config_store.h"

CKELXmlConfig::CKELXmlConfig() = default;
CKELXmlConfig::~CKELXmlConfig() = default;

CKELXmlConfig* CKELXmlConfig::instance()
{
    static CKELXmlConfig config;
    return &config;
}

int CKELXmlConfig::getDeviceItem(const std::string& section, const std::string& key,
                                 std::string& value)
{
    const auto* found = talvik::deviceConfig().find(section, key);
    if (found == nullptr) {
        value.clear();
        return -1;
    }
    value = *found;
    return 0;
}
