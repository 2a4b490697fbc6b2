#pragma once

#include "tools/receiver_status.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace talvik::ctl {

/// A table for people, header and one line a receiver; "no trap receivers" when there are none.
std::string receiverTableText(const std::vector<ReceiverStatus>& receivers);

/// [{"index", "address", "port", "version", "versionCode", "type", "typeCode", "user", "inform",
/// "state", "sent", "failed", "answered", "givenUp", "waiting"}].
Json::Value receiversJson(const std::vector<ReceiverStatus>& receivers);

}  // namespace talvik::ctl
