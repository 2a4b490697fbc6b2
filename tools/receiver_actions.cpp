#include "tools/receiver_actions.h"

#include "host/link/receiver_tags.h"
#include "tools/answer_cells.h"
#include "tools/failure.h"
#include "tools/progress.h"
#include "tools/receiver_output.h"
#include "tools/safe_text.h"
#include "tools/socket_output.h"
#include "tools/trap_output.h"
#include "tools/trap_test_outcome.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
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

std::optional<ReceiverStatus> receiverOf(SocketClient& client, std::uint32_t index)
{
    const auto all = receiversOf(client);
    const auto found = std::find_if(all.begin(), all.end(),
                                    [index](const auto& each) { return each.index == index; });
    return found == all.end() ? std::nullopt : std::make_optional(*found);
}

void sendTest(SocketClient& client, std::uint32_t index)
{
    Package answer;
    client.ask(
        {Peer::Agent, "SEND_TEST_TRAP", "send a test trap to receiver " + std::to_string(index)},
        [index](backend::RecordBuilder& record) { record.u32(receiver::kIndexTag, index); },
        answer);
}

/// What became of a test, and the receiver as it is then.
struct Tested {
    TestOutcome outcome = TestOutcome::Open;
    ReceiverStatus receiver;
};

std::string titleOf(const ReceiverStatus& receiver)
{
    return "receiver " + std::to_string(receiver.index) + " (" + receiver.address + " port " +
           std::to_string(receiver.port) + ")";
}

std::string stateOf(const ReceiverStatus& receiver)
{
    return isInTrouble(receiver) ? ": " + receiver.state : std::string();
}

[[noreturn]] void failTest(const Tested& tested, unsigned waited)
{
    const auto& receiver = tested.receiver;
    const auto what = titleOf(receiver) + std::string(" did not get the test ") +
                      (receiver.inform ? "inform" : "trap");
    if (tested.outcome == TestOutcome::Failed) {
        throw Failure(Failure::Kind::Refused, what + stateOf(receiver),
                      "talvikctl trap list and the agent's log tell more; if no user or setting is "
                      "missing, " +
                          std::string(receiver.inform
                                          ? "make sure that the receiver listens there and knows "
                                            "the community or the user"
                                          : "make sure that there is a way to that address"));
    }
    throw Failure(Failure::Kind::NoAnswer,
                  what + " within " + std::to_string(waited) + " s" + stateOf(receiver),
                  "it may still get it: talvikctl trap status shows what becomes of it, --wait "
                  "SECONDS waits longer");
}

/// Asks until the outcome is known or the time is over. Throws `Failure` when that is no good one.
Tested outcomeOf(SocketClient& client, const ReceiverOptions& options, const ReceiverStatus& before)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kAskEvery(100);
    const auto end = Clock::now() + std::chrono::seconds(options.waitSeconds);
    const Progress::Span span("waiting for what becomes of the test");
    Tested tested;
    for (;;) {
        const auto now = receiverOf(client, options.index);
        if (!now) {
            throw Failure(Failure::Kind::Refused,
                          "receiver " + std::to_string(options.index) +
                              " was removed before it got the test",
                          "take an index that talvikctl trap status shows");
        }
        tested = {testOutcome(before, *now), *now};
        if (tested.outcome != TestOutcome::Open || Clock::now() >= end) {
            break;
        }
        std::this_thread::sleep_for(kAskEvery);
    }
    if (tested.outcome == TestOutcome::Open || tested.outcome == TestOutcome::Failed) {
        failTest(tested, options.waitSeconds);
    }
    return tested;
}

void printOutcome(const ReceiverOptions& options, const Tested& tested)
{
    if (options.socket.output.json) {
        auto value = socketJson(options.socket);
        value["index"] = options.index;
        value["outcome"] = outcomeName(tested.outcome);
        std::cout << jsonText(value);
    } else if (tested.outcome == TestOutcome::Acknowledged) {
        std::cout << printable(titleOf(tested.receiver)) << " acknowledged the test inform\n";
    } else if (tested.outcome == TestOutcome::Sent) {
        std::cout << "the test trap to " << printable(titleOf(tested.receiver))
                  << " was handed to the network; whether it arrived, only the receiver tells\n";
    } else {
        std::cout << "a test trap goes to receiver " << options.index
                  << "; talvikctl trap status shows what becomes of it\n";
    }
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
        const bool waits = options.waitSeconds != 0;
        const auto before = waits ? receiverOf(client, options.index) : std::nullopt;
        sendTest(client, options.index);
        if (waits) {
            printOutcome(options, outcomeOf(client, options, before.value_or(ReceiverStatus())));
        } else {
            printOutcome(options, {TestOutcome::Open, {}});
        }
    });
}

}  // namespace talvik::ctl
