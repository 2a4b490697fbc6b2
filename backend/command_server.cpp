#include "backend/command_server.h"

#include "backend/backend_log.h"
#include "host/startup_error.h"

#include <exception>
#include <utility>

namespace talvik::backend {

namespace {

void refuse(Package& reply, std::uint32_t code)
{
    reply.clear();
    setResult(reply.oHead, code);
}

}  // namespace

void CommandServer::add(std::uint64_t number, const std::string& name, Command command)
{
    addEntry(number, {name, [command = std::move(command)](const Package& request, Package& reply,
                                                           Connection*) {
                          return command(request, reply);
                      }});
}

void CommandServer::addForConnection(std::uint64_t number, const std::string& name,
                                     ConnectionCommand command)
{
    addEntry(number, {name, [name, command = std::move(command)](const Package& request, Package&,
                                                                 Connection* connection) {
                          if (connection == nullptr) {
                              backendLog()->warn("{} came by no connection of its own: send it "
                                                 "over the socket",
                                                 name);
                              return result::kBadRequest;
                          }
                          return command(*connection, request);
                      }});
}

void CommandServer::addEntry(std::uint64_t number, Entry added)
{
    const auto [entry, fresh] = commands_.try_emplace(number, added);
    if (!fresh) {
        throw StartupError(
            "the commands " + entry->second.name + " and " + added.name + " have the same number " +
            std::to_string(number) +
            ": give each its own in section \"COMMAND\" of the device configuration");
    }
}

void CommandServer::answer(const Package& request, Package& reply, Connection* connection) const
{
    reply.oHead = request.oHead;
    setKind(reply.oHead, MessageKind::Reply);
    const auto code = run(request, reply, connection);
    setResult(reply.oHead, code);
    if (code != result::kSuccess) {
        refuse(reply, code);
    }
}

std::uint32_t CommandServer::run(const Package& request, Package& reply,
                                 Connection* connection) const
{
    if (request.oRecords.empty()) {
        backendLog()->warn("request {} names no command: it has no record",
                           exchangeOf(request.oHead));
        return result::kNoCommand;
    }
    const auto number = request[0]->ullRecordId;
    const auto command = commands_.find(number);
    if (command == commands_.end()) {
        backendLog()->warn("request {} asks for command {}, which does not exist: do host and back "
                           "end read the same device configuration?",
                           exchangeOf(request.oHead), number);
        return result::kUnknownCommand;
    }
    try {
        return command->second.run(request, reply, connection);
    } catch (const std::exception& error) {
        backendLog()->error("command {} ({}) failed: {}", command->second.name, number,
                            error.what());
    } catch (...) {
        backendLog()->error("command {} ({}) failed: an exception without a text",
                            command->second.name, number);
    }
    return result::kCommandFailed;
}

Bytes CommandServer::serve(Bytes& wire, Connection* connection) const
{
    Package request;
    decodeInto(request, wire);
    if (kindOf(request.oHead) != MessageKind::Request) {
        throw ProtocolError("message kind " + std::to_string(request.oHead.usShort1) +
                            " where a request (1) is due");
    }
    Package reply;
    answer(request, reply, connection);
    try {
        return encoded(reply);
    } catch (const ProtocolError& error) {
        backendLog()->error("the answer to command {} is refused: {}", request[0]->ullRecordId,
                            error.what());
        refuse(reply, result::kAnswerTooLarge);
        return encoded(reply);
    }
}

}  // namespace talvik::backend
