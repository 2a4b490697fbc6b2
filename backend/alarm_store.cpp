#include "backend/alarm_store.h"

#include "backend/alarm_database.h"
#include "backend/alarm_record.h"
#include "backend/backend_log.h"
#include "host/platform/database_files.h"
#include "host/startup_error.h"

#include <algorithm>
#include <ctime>
#include <mutex>
#include <utility>

namespace talvik::backend {

namespace {

/// In place of a damaged file: an empty one whose serial numbers begin where none has been given
/// before, for at less than one alarm a second in the long run none can be as high as the time.
std::unique_ptr<AlarmDatabase> replace(const std::string& path, const std::string& damage)
{
    const auto aside = setDatabaseAside(path);
    const auto remedy = aside.readable ? "To see what it still holds: sqlite3 '" + aside.path +
                                             "' .dump. Report again what is still wrong"
                                       : "Report again what is still wrong";
    backendLog()->error("the alarms in {} are damaged: {}. The file was set aside as {}; no alarm "
                        "is active now, and none waits for the host. {}",
                        path, damage, aside.path, remedy);
    try {
        return std::make_unique<AlarmDatabase>(path);
    } catch (const DamagedFile& error) {
        throw StartupError("cannot make a new file for alarms in " + path + ": " + error.what());
    }
}

}  // namespace

/// The database and what is known of it without asking it.
class AlarmStore::Content {
public:
    Content(std::string path, const StoreLimits& limits) : path_(std::move(path)), limits_(limits)
    {
        try {
            database_ = std::make_unique<AlarmDatabase>(path_);
            totals_ = database_->totalsAtStart();
        } catch (const DamagedFile& error) {
            database_ = replace(path_, error.what());
            totals_.lastSerial =
                std::clamp<std::int64_t>(std::time(nullptr), 0, limits_.lastSerial - 1);
        }
    }

    void onChange(std::function<void()> callback) { changed_ = std::move(callback); }

    StoreAnswer add(alarm::Kind kind, const Alarm& what)
    {
        StoreAnswer answer;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            answer = addLocked(kind, what);
        }
        notify(answer.code);
        return answer;
    }

    std::uint32_t clear(std::uint32_t serial, const std::string& requester, std::uint64_t time)
    {
        std::uint32_t code = 0;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            code = clearLocked(serial, requester, time);
        }
        notify(code);
        return code;
    }

    ResendStep resend(std::uint32_t after, std::uint32_t last, std::size_t limit)
    {
        ResendStep step;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            step = resendLocked(after, last, limit);
        }
        notify(step.code);
        return step;
    }

    bool acknowledge(std::int64_t sequence)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        auto next = totals_;
        try {
            database_->change([&] { next.outbox -= database_->eraseNotifications(sequence); });
        } catch (const SqliteError& error) {
            if (!std::exchange(cannotErase_, true)) {
                logFailure("remove what the host has acknowledged", error,
                           "It is sent again to the next host that connects");
            }
            return false;
        }
        cannotErase_ = false;
        isFull_ = false;
        totals_ = next;
        return true;
    }

    template <typename Read>
    auto read(Read read) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return read(*database_, totals_);
    }

private:
    StoreAnswer addLocked(alarm::Kind kind, const Alarm& what)
    {
        if (!hasRoom(1)) {
            return {result::kOutboxFull, 0};
        }
        if (totals_.lastSerial >= limits_.lastSerial) {
            backendLog()->error("an alarm is refused: the serial numbers in {} are used up", path_);
            return {result::kStoreFailed, 0};
        }
        auto next = totals_;
        const ActiveAlarm entry{static_cast<std::uint32_t>(++next.lastSerial), what};
        const bool done = change("report an alarm", [&] {
            database_->setLastSerial(next.lastSerial);
            if (kind == alarm::Kind::Event) {
                remember(next, kind, entry, 0, "");
            } else {
                database_->insertActive(entry);
                ++next.active;
            }
            send(next, alarmRecord(kind, entry));
        });
        if (!done) {
            return {result::kStoreFailed, 0};
        }
        totals_ = next;
        return {result::kSuccess, entry.serial};
    }

    std::uint32_t clearLocked(std::uint32_t serial, const std::string& requester,
                              std::uint64_t time)
    {
        auto next = totals_;
        auto code = result::kSuccess;
        const bool done = change("clear an alarm", [&] {
            const auto found = database_->active(serial);
            if (!found) {
                code = result::kNoSuchAlarm;
                return;
            }
            if (!hasRoom(1)) {
                code = result::kOutboxFull;
                return;
            }
            database_->eraseActive(serial);
            --next.active;
            remember(next, alarm::Kind::Fault, *found, time, requester);
            send(next, alarmRecord(alarm::Kind::Clear, *found, time));
        });
        totals_ = done ? next : totals_;
        return done ? code : result::kStoreFailed;
    }

    ResendStep resendLocked(std::uint32_t after, std::uint32_t last, std::size_t limit)
    {
        auto next = totals_;
        ResendStep step;
        const bool done = change("send active alarms again", [&] {
            auto page = database_->activeAfter(after, limit);
            page.erase(std::find_if(page.begin(), page.end(),
                                    [last](const auto& entry) { return entry.serial > last; }),
                       page.end());
            if (!hasRoom(static_cast<std::int64_t>(page.size()))) {
                step.code = result::kOutboxFull;
                return;
            }
            for (const auto& entry : page) {
                send(next, alarmRecord(alarm::Kind::Fault, entry));
                step.lastSerial = entry.serial;
                ++step.count;
            }
        });
        if (!done) {
            return {result::kStoreFailed, 0, 0};
        }
        totals_ = next;
        return step;
    }

    bool hasRoom(std::int64_t notifications)
    {
        if (totals_.outbox + notifications <= limits_.outbox) {
            return true;
        }
        if (!std::exchange(isFull_, true)) {
            backendLog()->error("alarms are refused: {} notifications wait in {} for a host, no "
                                "more are kept. Start the host, or find out why it does not "
                                "acknowledge; further refusals are not logged until it does",
                                totals_.outbox, path_);
        }
        return false;
    }

    void send(AlarmTotals& next, const std::string& record)
    {
        database_->insertNotification(++next.lastSequence, record);
        ++next.outbox;
    }

    void remember(AlarmTotals& next, alarm::Kind kind, const ActiveAlarm& what,
                  std::uint64_t clearTime, const std::string& requester)
    {
        database_->insertHistory(static_cast<unsigned>(kind), what, clearTime, requester);
        ++next.history;
        next.historyOctets +=
            static_cast<std::int64_t>(requester.size() + what.alarm.parameters.size());
        while (next.history > limits_.history || next.historyOctets > limits_.historyOctets) {
            next.historyOctets -= database_->eraseOldestHistory();
            --next.history;
        }
    }

    /// Runs `work` as one change. False, with a line in the log, if it failed.
    bool change(const char* what, const std::function<void()>& work)
    {
        try {
            database_->change(work);
            return true;
        } catch (const SqliteError& error) {
            logFailure(what, error, "Nothing was changed");
            return false;
        }
    }

    void logFailure(const char* what, const SqliteError& error, const char* consequence) const
    {
        backendLog()->error("cannot {} in {}: {}. {}{}", what, path_, error.what(), consequence,
                            error.meansDamage()
                                ? "; restart the back end: it checks the file and sets it aside"
                                : "");
    }

    void notify(std::uint32_t code) const
    {
        if (code == result::kSuccess && changed_) {
            changed_();
        }
    }

    const std::string path_;
    const StoreLimits limits_;
    std::function<void()> changed_;
    mutable std::mutex mutex_;
    std::unique_ptr<AlarmDatabase> database_;  ///< under mutex_
    AlarmTotals totals_;                       ///< under mutex_: what is committed
    bool isFull_ = false;                      ///< under mutex_: said so in the log
    bool cannotErase_ = false;                 ///< under mutex_: said so in the log
};

AlarmStore::AlarmStore(const std::string& path, const StoreLimits& limits)
    : content_(std::make_unique<Content>(path, limits))
{
}

AlarmStore::~AlarmStore() = default;

void AlarmStore::onChange(std::function<void()> callback)
{
    content_->onChange(std::move(callback));
}

StoreAnswer AlarmStore::raise(const Alarm& alarm)
{
    return content_->add(alarm::Kind::Fault, alarm);
}

StoreAnswer AlarmStore::reportEvent(const Alarm& alarm)
{
    return content_->add(alarm::Kind::Event, alarm);
}

std::uint32_t AlarmStore::clear(std::uint32_t serial, const std::string& requester,
                                std::uint64_t time)
{
    return content_->clear(serial, requester, time);
}

std::vector<ActiveAlarm> AlarmStore::pageOfActive(std::uint32_t afterSerial,
                                                  std::size_t limit) const
{
    return content_->read(
        [&](AlarmDatabase& database, auto&) { return database.activeAfter(afterSerial, limit); });
}

std::uint32_t AlarmStore::countActive() const
{
    return content_->read(
        [](auto&, const AlarmTotals& totals) { return static_cast<std::uint32_t>(totals.active); });
}

std::uint32_t AlarmStore::lastSerial() const
{
    return content_->read([](auto&, const AlarmTotals& totals) {
        return static_cast<std::uint32_t>(totals.lastSerial);
    });
}

ResendStep AlarmStore::resend(std::uint32_t afterSerial, std::uint32_t lastSerial,
                              std::size_t limit)
{
    return content_->resend(afterSerial, lastSerial, limit);
}

std::vector<Notification> AlarmStore::nextNotifications(std::int64_t afterSequence,
                                                        std::size_t limit, std::size_t octets) const
{
    return content_->read([&](AlarmDatabase& database, auto&) {
        return database.notificationsAfter(afterSequence, limit, octets);
    });
}

bool AlarmStore::acknowledge(std::int64_t sequence)
{
    return content_->acknowledge(sequence);
}

}  // namespace talvik::backend
