#include "fuzz/properties/notify_device.h"

#include "platform/basic_info.h"

const char* CSNMPBasicImpl::getNodeCode()
{
    return talvik::fuzz::kNodeCode;
}

int CSNMPBasicImpl::device_type = talvik::fuzz::kDeviceType;
std::string CSNMPBasicImpl::product_sn = talvik::fuzz::kProductSn;
