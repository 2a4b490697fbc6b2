#include "tools/receiver_actions.h"

#include "host/link/receiver_tags.h"
#include "tools/answer_cells.h"
#include "tools/receiver_output.h"
#include "tools/socket_output.h"
#include "tools/trap_output.h"

#include <algorithm>
#include <iostream>
#include <vector>

namespace talvik::ctl {

namespace {

ReceiverStatus receiverIn(const CTLVRecordV3& record)
{
    const AnswerCells cells(record);
    const auto word = [&cells](unsigned short tag) {
        return static_cast<std::uint32_t>(cells.number(tag));
    };
    ReceiverStatus status;
    status.index = word(receiver::kIndexTag);
    status.address = cells.text(receiver::kAddressTag);
    status.port = word(receiver::kPortTag);
    status.version = word(receiver::kVersionTag);
    status.type = word(receiver::kTypeTag);
    status.user = cells.text(receiver::kUserTag);
    status.inform = word(receiver::kInformTag) != 0;
    status.state = cells.text(receiver::kStateTag);
    status.sent = cells.number(receiver::kSentTag);
    status.failed = cells.number(receiver::kFailedTag);
    status.answered = cells.number(receiver::kAnsweredTag);
    status.givenUp = cells.number(receiver::kGivenUpTag);
    status.waiting = cells.number(receiver::kWaitingTag);
    return status;
}

std::vector<ReceiverStatus> receiversIn(const Package& answer)
{
    std::vector<ReceiverStatus> receivers;
    for (const auto* record : answer.oRecords) {
        receivers.push_back(receiverIn(*record));
    }
    std::sort(receivers.begin(), receivers.end(),
              [](const auto& a, const auto& b) { return a.index < b.index; });
    return receivers;
}

}  // namespace

std::vector<ReceiverStatus> receiversOf(SocketClient& client)
{
    Package answer;
    client.ask(
        {Peer::Agent, "SHOW_RECEIVERS", "show the trap receivers", false},
        [](backend::RecordBuilder&) {}, answer);
    return receiversIn(answer);
}

int runReceiverStatus(const ReceiverOptions& options)
{
    SocketClient client(options.socket);
    return orPrintFailure(options.socket, [&] {
        const auto receivers = receiversOf(client);
        auto value = socketJson(options.socket);
        value["receivers"] = receiversJson(receivers);
        std::cout << (options.socket.output.json
                          ? jsonText(value)
                          : receiverTableText(receivers, tableStyle(options.socket.output)));
    });
}

int runReceiverTest(const ReceiverOptions& options)
{
    SocketClient client(options.socket);
    return orPrintFailure(options.socket, [&] {
        Package answer;
        client.ask(
            {Peer::Agent, "SEND_TEST_TRAP",
             "send a test trap to receiver " + std::to_string(options.index)},
            [&options](backend::RecordBuilder& record) {
                record.u32(receiver::kIndexTag, options.index);
            },
            answer);
        auto value = socketJson(options.socket);
        value["index"] = options.index;
        std::cout << (options.socket.output.json
                          ? jsonText(value)
                          : "a test trap goes to receiver " + std::to_string(options.index) +
                                "; talvikctl trap status shows what becomes of it\n");
    });
}

}  // namespace talvik::ctl
