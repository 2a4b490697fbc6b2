#pragma once

#include "tools/failure.h"
#include "tools/socket_client.h"

#include <json/json.h>

#include <functional>

namespace talvik::ctl {

/// {"socket": PATH}, for what a command adds to it.
Json::Value socketJson(const SocketOptions& options);

/// Prints why a command was not carried out: JSON to standard output, text to standard error.
void printFailure(const SocketOptions& options, const Failure& failure);

/// Runs `work` and returns the exit status: a `Failure` that leaves it is printed.
int orPrintFailure(const SocketOptions& options, const std::function<void()>& work);

}  // namespace talvik::ctl
