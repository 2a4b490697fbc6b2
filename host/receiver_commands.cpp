#include "host/receiver_commands.h"

#include "backend/system_commands.h"
#include "framework/tlv_cell.h"
#include "framework/tlv_record.h"
#include "host/link/receiver_tags.h"
#include "host/platform/host_log.h"
#include "host/snmp/standard_notifications.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace talvik {

namespace {

using backend::Package;

constexpr std::chrono::milliseconds kLoopLimit{800};  // talvikctl waits a second by default

class RecordMaker {
public:
    explicit RecordMaker(std::uint64_t id) : record_(std::make_unique<CTLVRecordV3>(id)) {}

    void text(unsigned short tag, const std::string& value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set(tag, value.c_str());
        append(std::move(cell));
    }

    template <typename Number>
    void number(unsigned short tag, Number value)
    {
        auto cell = std::make_unique<CTLVCell>();
        cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
        append(std::move(cell));
    }

    void appendTo(Package& package)
    {
        package.oRecords.push_back(record_.get());
        static_cast<void>(record_.release());
    }

private:
    void append(std::unique_ptr<CTLVCell> cell)
    {
        record_->append(cell.get());
        static_cast<void>(cell.release());
    }

    std::unique_ptr<CTLVRecordV3> record_;
};

std::uint32_t indexOf(const tTrapDestInfo& row)
{
    return static_cast<std::uint32_t>(std::stoul(row.index));
}

void appendReceiver(Package& reply, std::uint64_t command, const ReceiverStatus& status)
{
    const auto& row = status.receiver;
    RecordMaker record(command);
    record.number(receiver::kIndexTag, indexOf(row));
    record.text(receiver::kAddressTag, row.address);
    record.number(receiver::kPortTag, std::uint32_t{row.port});
    record.number(receiver::kVersionTag, std::uint32_t{row.version});
    record.number(receiver::kTypeTag, std::uint32_t{row.type});
    record.text(receiver::kUserTag, row.user);
    record.number(receiver::kInformTag, std::uint32_t{status.inform ? 1U : 0U});
    record.text(receiver::kStateTag, status.state);
    record.number(receiver::kSentTag, status.sent);
    record.number(receiver::kFailedTag, status.failed);
    record.number(receiver::kAnsweredTag, status.answered);
    record.number(receiver::kGivenUpTag, status.givenUp);
    record.number(receiver::kWaitingTag, status.waiting);
    record.appendTo(reply);
}

/// What both commands need.
struct Agent {
    LoopCalls& calls;
    TrapSender& sender;
    const std::function<void()>& refresh;

    /// Runs `work` on the loop's thread, with all receivers known. False when the loop is too busy.
    template <typename Work>
    bool run(Work work) const
    {
        const auto withAll = [&] {
            refresh();
            work();
        };
        return calls.run(withAll, kLoopLimit);
    }
};

std::uint32_t show(const Package& request, Package& reply, const Agent& agent)
{
    std::vector<ReceiverStatus> receivers;
    if (!agent.run([&] { receivers = agent.sender.status(); })) {
        return receiver::kAgentBusy;
    }
    for (const auto& status : receivers) {
        appendReceiver(reply, request[0]->ullRecordId, status);
    }
    return backend::result::kSuccess;
}

/// Nothing when the request names none.
std::optional<std::uint32_t> indexIn(const Package& request)
{
    const auto& record = *request[0];
    if (record.find(receiver::kIndexTag) == record.pCells->end()) {
        return std::nullopt;
    }
    const auto* const cell = record[receiver::kIndexTag];
    cell->checkNumerical();
    return CTLVCell::ValueCast<unsigned int>()(cell);
}

bool sendTestTrap(TrapSender& sender, std::uint32_t index)
{
    const auto receivers = sender.status();
    const auto found =
        std::find_if(receivers.begin(), receivers.end(), [index](const ReceiverStatus& status) {
            return indexOf(status.receiver) == index;
        });
    if (found == receivers.end()) {
        return false;
    }
    hostLog()->info("a test trap goes to receiver {} ({} port {})", index, found->receiver.address,
                    found->receiver.port);
    sender.send(testTrap(found->receiver), nullptr);
    return true;
}

std::uint32_t test(const Package& request, const Agent& agent)
{
    const auto index = indexIn(request);
    if (!index) {
        hostLog()->warn("SEND_TEST_TRAP: the request has no cell {}, the receiver's index",
                        receiver::kIndexTag);
        return backend::result::kBadRequest;
    }
    bool found = false;
    if (!agent.run([&] { found = sendTestTrap(agent.sender, *index); })) {
        return receiver::kAgentBusy;
    }
    return found ? backend::result::kSuccess : receiver::kNoSuchReceiver;
}

}  // namespace

void addReceiverCommands(backend::CommandServer& server, const DeviceConfigFile& config,
                         LoopCalls& calls, TrapSender& sender, const std::function<void()>& refresh)
{
    server.add(backend::commandNumber(config, "SHOW_RECEIVERS"), "SHOW_RECEIVERS",
               [&calls, &sender, refresh](const Package& request, Package& reply) {
                   return show(request, reply, {calls, sender, refresh});
               });
    server.add(backend::commandNumber(config, "SEND_TEST_TRAP"), "SEND_TEST_TRAP",
               [&calls, &sender, refresh](const Package& request, Package& /*reply*/) {
                   return test(request, {calls, sender, refresh});
               });
}

}  // namespace talvik
