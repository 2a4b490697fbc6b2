#pragma once

#include "host/platform/device_config_file.h"

namespace talvik {

/// The installed configuration; one without sections before `installDeviceConfig`.
const DeviceConfigFile& deviceConfig();

}  // namespace talvik
