#include "platform/basic_info.h"

#include "host/platform/device_config_store.h"

#include <charconv>

int CSNMPBasicImpl::device_type = 0;
std::string CSNMPBasicImpl::product_sn;

const char* CSNMPBasicImpl::getNodeCode()
{
    const auto* code = talvik::deviceConfig().find("BASIC_INFO", "NODE_CODE");
    return code == nullptr ? nullptr : code->c_str();
}

unsigned int CSNMPBasicImpl::getNodeType()
{
    unsigned int type = 0;
    const auto* text = talvik::deviceConfig().find("BASIC_INFO", "NODE_TYPE");
    if (text != nullptr) {
        std::from_chars(text->data(), text->data() + text->size(), type);
    }
    return type;
}
