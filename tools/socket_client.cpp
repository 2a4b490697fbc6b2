#include "tools/socket_client.h"

#include "backend/system_commands.h"
#include "backend/unix_address.h"
#include "host/startup_error.h"
#include "tools/progress.h"

#include <chrono>

namespace talvik::ctl {

namespace {

const SocketOptions& checked(const SocketOptions& options)
{
    if (!backend::unixAddress(options.socket)) {
        throw StartupError(backend::unixAddressRefusal(options.socket));
    }
    return options;
}

SocketLimits limitsOf(const SocketOptions& options)
{
    const std::chrono::milliseconds timeout(options.timeoutMs);
    SocketLimits limits;
    limits.connect = timeout;
    limits.exchange = timeout;
    limits.penalty = std::chrono::milliseconds(0);  // whoever asks again wants an answer
    return limits;
}

}  // namespace

SocketClient::SocketClient(const SocketOptions& options)
    : options_(checked(options)),
      config_(DeviceConfigFile::load(options.device)),
      link_(options.socket, limitsOf(options))
{
}

void SocketClient::ask(const RequestName& name, const AddCells& addCells, Package& answer)
{
    const auto number = backend::commandNumber(config_, name.command);
    Package request;
    backend::RecordBuilder record(request, number);
    addCells(record);
    const Progress::Span span(name.task + ": waiting for an answer");
    const int code = link_.exchange(request, answer);
    if (code != 0) {
        throw refusalOf({name.peer, name.task, name.command, number, options_.socket,
                         options_.device, code, name.changes, link_.lastFailure()});
    }
}

}  // namespace talvik::ctl
