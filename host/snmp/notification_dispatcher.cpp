#include "host/snmp/notification_dispatcher.h"

#include "framework/notify_msg_handler.h"
#include "framework/tlv_cell.h"
#include "framework/tlv_record.h"
#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/snmp/handler_boundary.h"
#include "host/snmp/trap_binding.h"
#include "platform/notify_handler.h"

#include <agent_pp/snmp_pp_ext.h>

#include <iomanip>
#include <memory>
#include <sstream>
#include <utility>

namespace talvik {

namespace {

constexpr unsigned short kAlarmIdTag = 1;
constexpr unsigned short kClearTimeTags[] = {6, 5};
constexpr unsigned short kEventFlagTag = 73;
constexpr std::uint64_t kRecordWithEventFlag = 0xD00C900B6;

/// The last argument of `getTrapOid`.
enum class Category : unsigned short { Fault = 1, Clear = 2, Event = 3 };

template <typename Number>
Number numberAt(const CTLVRecordV3& record, unsigned short tag)
{
    const auto* const cell = record[tag];
    cell->checkNumerical();
    return CTLVCell::ValueCast<Number>()(cell);
}

unsigned long long alarmIdOf(const CTLVRecordV3& record)
{
    return numberAt<unsigned long long>(record, kAlarmIdTag);
}

/// Reads 32 bits of each, as handlers do that put the category among the bindings.
Category categoryOf(const CTLVRecordV3& record)
{
    for (const auto tag : kClearTimeTags) {
        if (numberAt<unsigned int>(record, tag) != 0) {
            return Category::Clear;
        }
    }
    const bool isEvent = record.ullRecordId == kRecordWithEventFlag &&
                         numberAt<unsigned int>(record, kEventFlagTag) == 1;
    return isEvent ? Category::Event : Category::Fault;
}

/// Rows in the order of their numbers, whatever their number of digits.
std::string keyOf(const tTrapDestInfo& receiver)
{
    constexpr int kDigits = 10;
    std::ostringstream key;
    key << std::setw(kDigits) << std::setfill('0') << receiver.index;
    return key.str();
}

/// What a handler says of one record.
class Answer {
public:
    /// False when the handler makes no notification of it; its own log lines say why.
    bool build(INotifyMsgHandler& handler, const CTLVRecordV3& record)
    {
        Agentpp::Vbx* made = nullptr;
        int result = 0;
        const auto failure =
            callHandler([&] { result = handler.constructAlarmTrapVb(record, made); });
        bindings_.reset(made);
        if (failure) {
            problem_ = *failure;
        }
        return !failure && result == 0 && made != nullptr;
    }

    /// False with `problem()` when it cannot be sent.
    bool complete(INotifyMsgHandler& handler, const CTLVRecordV3& record,
                  const std::map<std::string, tTrapDestInfo>& receivers)
    {
        int count = 0;
        const auto failure = callHandler([&] {
            count = handler.getTrapVbLen();
            const auto category = static_cast<unsigned short>(categoryOf(record));
            trap_.id = toObjectId(handler.getTrapOid(alarmIdOf(record), category));
            handler.filterTrapMap(receivers, trap_.receivers);
        });
        if (failure) {
            problem_ = *failure;
            return false;
        }
        if (trap_.receivers.empty()) {
            return true;
        }
        if (trap_.id.size() < 2 || trap_.id.size() > kMaxObjectIdLength) {
            problem_ = "its OID has " + std::to_string(trap_.id.size()) +
                       " sub-identifiers, 2 to 128 are due (look at the alarm's \"alarmOid\" in "
                       "the catalogue)";
            return false;
        }
        return takeBindings(count);
    }

    Trap& trap() { return trap_; }
    const std::string& problem() const { return problem_; }

private:
    bool takeBindings(int count)
    {
        trap_.bindings.reserve(count > 0 ? static_cast<std::size_t>(count) : 0);
        for (int at = 0; at < count; ++at) {
            std::string problem;
            auto binding = toTrapBinding(bindings_[static_cast<std::size_t>(at)], problem);
            if (!binding) {
                problem_ = "binding " + std::to_string(at + 1) + ": " + problem;
                return false;
            }
            trap_.bindings.push_back(std::move(*binding));
        }
        return true;
    }

    std::unique_ptr<Agentpp::Vbx[]> bindings_;
    Trap trap_;
    std::string problem_;
};

std::string alarmOf(const CTLVRecordV3& record)
{
    std::string text = "an alarm record without a readable id";
    const auto ignored = callHandler([&] { text = "alarm " + std::to_string(alarmIdOf(record)); });
    static_cast<void>(ignored);  // the text says it
    return text;
}

}  // namespace

NotificationDispatcher::NotificationDispatcher(Sink sink) : sink_(std::move(sink)) {}

void NotificationDispatcher::setReceivers(const std::list<tTrapDestInfo>& receivers)
{
    receivers_.clear();
    for (const auto& receiver : receivers) {
        receivers_.emplace(keyOf(receiver), receiver);
    }
}

void NotificationDispatcher::dispatch(const CTLVRecordV3& record, const Delivery& delivery)
{
    for (auto* const handler : CNotifyHandler::instance()->handlers()) {
        offer(*handler, record, delivery);
    }
}

std::vector<NotificationHandlerHealth> NotificationDispatcher::handlers() const
{
    std::vector<NotificationHandlerHealth> all;
    for (auto* const handler : CNotifyHandler::instance()->handlers()) {
        NotificationHandlerHealth health;
        const auto ignored = callHandler([&] { health.base = toObjectId(handler->getBaseOid()); });
        static_cast<void>(ignored);  // an empty base says it
        const auto found = counters_.find(handler);
        if (found != counters_.end()) {
            health.counters = found->second;
        }
        all.push_back(std::move(health));
    }
    return all;
}

void NotificationDispatcher::offer(INotifyMsgHandler& handler, const CTLVRecordV3& record,
                                   const Delivery& delivery)
{
    Answer answer;
    const bool sendable =
        answer.build(handler, record) && answer.complete(handler, record, receivers_);
    if (!sendable) {
        ++counters_[&handler].refused;
        if (!answer.problem().empty() && lines_.take()) {
            hostLog()->error("no trap for {}: {}", alarmOf(record), oneLine(answer.problem()));
        }
        return;
    }
    ++counters_[&handler].built;
    if (!answer.trap().receivers.empty()) {
        sink_(std::move(answer.trap()), delivery);
    }
}

}  // namespace talvik
