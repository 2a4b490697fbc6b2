#pragma once

namespace talvik::fuzz {

/// The device whose alarms the alarm record target reads.
constexpr const char* kNodeCode = "NODE";
constexpr int kDeviceType = 812;
constexpr const char* kProductSn = "SN";

}  // namespace talvik::fuzz
