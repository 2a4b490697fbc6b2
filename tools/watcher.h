#pragma once

#include "tools/active_alarm.h"
#include "tools/failure.h"
#include "tools/receiver_status.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace talvik::ctl {

/// What came of asking once for a list; neither when it was not asked for.
template <typename Row>
struct Answered {
    std::optional<std::vector<Row>> rows;
    std::optional<Failure> failure;
};

/// One look at alarms, trap receivers or both.
struct Look {
    std::uint64_t time = 0;  ///< seconds since 1970
    Answered<ActiveAlarm> alarms;
    Answered<ReceiverStatus> receivers;

    /// Whether whoever was asked answered.
    bool isAnswered() const { return !alarms.failure && !receivers.failure; }
};

/// What a receiver counted since the look before.
struct CountedSince {
    std::uint64_t sent = 0;
    std::uint64_t failed = 0;
    std::uint64_t answered = 0;
    std::uint64_t givenUp = 0;
};

/// Something that is there, or came about since the look before.
struct Change {
    enum class Kind {
        Active,  ///< an alarm of the first look
        Raised,  ///< also one of which the look before knew nothing
        Cleared,
        Receiver,  ///< a receiver of the first look
        ReceiverAdded,
        ReceiverChanged,
        ReceiverRemoved,
        Away,  ///< no answer, when there was one before or at the first look
        Back,  ///< an answer, when there was none before
    };

    Kind kind = Kind::Active;
    bool ofAlarms = true;  ///< otherwise of receivers
    std::optional<ActiveAlarm> alarm = std::nullopt;
    std::optional<ReceiverStatus> receiver = std::nullopt;
    CountedSince counted = {};                      ///< of ReceiverChanged
    std::optional<Failure> failure = std::nullopt;  ///< of Away
};

/// Compares each look with the one before it.
class Watcher {
public:
    /// What is new. While there is no answer, what was known is kept.
    std::vector<Change> changesOf(const Look& look);

private:
    template <typename Row>
    using Known = std::map<std::uint32_t, Row>;

    void compareAlarms(const std::vector<ActiveAlarm>& rows, std::vector<Change>& changes);
    void compareReceivers(const std::vector<ReceiverStatus>& rows, std::vector<Change>& changes);

    std::optional<Known<ActiveAlarm>> alarms_;        // by serial number; none before an answer
    std::optional<Known<ReceiverStatus>> receivers_;  // by index; none before an answer
    bool alarmsAway_ = false;
    bool receiversAway_ = false;
};

}  // namespace talvik::ctl
