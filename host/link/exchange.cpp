#include "host/link/exchange.h"

#include <string>

namespace talvik {

namespace {

void checkIsReplyTo(const TLVMsgHeadV3& head, std::uint32_t number)
{
    if (backend::kindOf(head) != backend::MessageKind::Reply) {
        throw backend::ProtocolError("message kind " + std::to_string(head.usShort1) +
                                     " where a reply (2) is due");
    }
    if (backend::exchangeOf(head) != number) {
        throw backend::ProtocolError("a reply to exchange " +
                                     std::to_string(backend::exchangeOf(head)) + " where " +
                                     std::to_string(number) + " is due");
    }
}

/// Cannot fail half-way: the room is made first.
void moveInto(Package& answer, Package& reply)
{
    answer.oRecords.reserve(answer.oRecords.size() + reply.oRecords.size());
    answer.oRecords.insert(answer.oRecords.end(), reply.oRecords.begin(), reply.oRecords.end());
    reply.oRecords.clear();
    answer.oHead = reply.oHead;
}

}  // namespace

backend::Bytes requestBytes(Package& request, std::uint32_t number)
{
    const auto head = request.oHead;
    backend::setKind(request.oHead, backend::MessageKind::Request);
    backend::setExchange(request.oHead, number);
    struct Restore {
        Package& package;
        const TLVMsgHeadV3& head;
        ~Restore()
        {
            const auto dataLen = package.oHead.uiDataLen;
            package.oHead = head;
            package.oHead.uiDataLen = dataLen;
        }
    } restore{request, head};
    return backend::encoded(request);
}

int takeReply(backend::Bytes& wire, std::uint32_t number, Package& answer)
{
    Package reply;
    backend::decodeInto(reply, wire);
    checkIsReplyTo(reply.oHead, number);
    const auto code = backend::resultOf(reply.oHead);
    if (code == backend::result::kSuccess) {
        moveInto(answer, reply);
    }
    return static_cast<int>(code);
}

}  // namespace talvik
