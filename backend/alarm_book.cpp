#include "backend/alarm_book.h"

#include "backend/alarm_record.h"
#include "backend/backend_log.h"
#include "host/platform/database_files.h"
#include "host/startup_error.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <utility>

namespace talvik::backend {

namespace {

constexpr auto kAnyOctets = std::numeric_limits<std::size_t>::max();

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

AlarmBook::AlarmBook(std::string path, const StoreLimits& limits)
    : path_(std::move(path)),
      limits_(limits)
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

StoreAnswer AlarmBook::add(alarm::Kind kind, const Alarm& what)
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

std::uint32_t AlarmBook::clear(std::uint32_t serial, const std::string& requester,
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

ResendStep AlarmBook::resend(std::uint32_t after, std::uint32_t last, std::size_t limit)
{
    auto next = totals_;
    ResendStep step;
    const bool done = change("send active alarms again", [&] {
        auto page = database_->activeAfter(after, limit, kAnyOctets).alarms;
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

bool AlarmBook::acknowledge(std::int64_t sequence)
{
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

bool AlarmBook::hasRoom(std::int64_t notifications)
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

void AlarmBook::send(AlarmTotals& next, const std::string& record)
{
    database_->insertNotification(++next.lastSequence, record);
    ++next.outbox;
}

void AlarmBook::remember(AlarmTotals& next, alarm::Kind kind, const ActiveAlarm& what,
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
bool AlarmBook::change(const char* what, const std::function<void()>& work)
{
    try {
        database_->change(work);
        return true;
    } catch (const SqliteError& error) {
        logFailure(what, error, "Nothing was changed");
        return false;
    }
}

void AlarmBook::logFailure(const char* what, const SqliteError& error,
                           const char* consequence) const
{
    backendLog()->error(
        "cannot {} in {}: {}. {}{}", what, path_, error.what(), consequence,
        error.meansDamage() ? "; restart the back end: it checks the file and sets it aside" : "");
}

}  // namespace talvik::backend
