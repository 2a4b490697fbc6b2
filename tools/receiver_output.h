#pragma once

#include "tools/receiver_status.h"
#include "tools/text_table.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace talvik::ctl {

/// A table for people, header and one line a receiver; "no trap receivers" when there are none.
std::string receiverTableText(const std::vector<ReceiverStatus>& receivers,
                              const TableStyle& style = {});

/// Whether a receiver's state is a reason to look after it.
bool isInTrouble(const ReceiverStatus& receiver);

/// [{"index", "address", "port", "version", "versionCode", "type", "typeCode", "user", "inform",
/// "state", "sent", "failed", "answered", "givenUp", "waiting"}].
Json::Value receiversJson(const std::vector<ReceiverStatus>& receivers);
Json::Value receiverJson(const ReceiverStatus& receiver);

}  // namespace talvik::ctl
