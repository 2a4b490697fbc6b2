#include "handlers/command_number.h"

#include "platform/device_config.h"

#include <cstdlib>

long long talvik::commandNumber(const std::string& key)
{
    std::string value;
    CKELXmlConfig::instance()->getDeviceItem("COMMAND", key, value);
    return std::strtoll(value.c_str(), nullptr, 10);
}
