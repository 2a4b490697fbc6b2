#include "tools/socket_output.h"

#include "tools/exit_status.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

#include <iostream>

namespace talvik::ctl {

Json::Value socketJson(const SocketOptions& options)
{
    Json::Value value;
    value["socket"] = validUtf8(options.socket);
    return value;
}

void printFailure(const SocketOptions& options, const Failure& failure)
{
    if (options.output.json) {
        auto value = failureJson(failure);
        value["socket"] = validUtf8(options.socket);
        std::cout << jsonText(value);
    } else {
        std::cerr << failureText(failure);
    }
}

int orPrintFailure(const SocketOptions& options, const std::function<void()>& work)
{
    try {
        work();
        return kExitGood;
    } catch (const Failure& failure) {
        printFailure(options, failure);
        return exitStatusOf(failure.kind());
    }
}

}  // namespace talvik::ctl
