#pragma once

#include "backend/alarm.h"
#include "backend/alarm_book.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace talvik::backend {

/// The active alarms, their history and the notifications that the host has not acknowledged, kept
/// on disk: a change has reached the disk before its call returns, its notification in the same
/// transaction. After a kill or a power cut the store is as before the change or as after it.
/// Callable from any thread; calls are serialised. What fails to change is logged and answered with
/// a code; what fails to read throws `SqliteError`.
class AlarmStore {
public:
    /// The file's name in its directory.
    static constexpr const char* kFileName = "alarms.db";

    /// Opens, or makes, `path`. A file that is damaged is set aside beside it under a new name,
    /// with an error line that says so, and an empty store takes its place. Throws `StartupError`
    /// when the file cannot be used although it is whole: unreadable, in use, or of a later
    /// release. `DurableDatabase::kInMemory` makes a store that ends with the object.
    explicit AlarmStore(const std::string& path, const StoreLimits& limits = StoreLimits());

    AlarmStore(const AlarmStore&) = delete;
    AlarmStore& operator=(const AlarmStore&) = delete;

    /// `callback` is called, on the thread that changed it, whenever the outbox has grown. It must
    /// not call the store. Set it before other threads know the store.
    void onChange(std::function<void()> callback) { changed_ = std::move(callback); }

    /// Makes `alarm` active and gives it the next serial number: 1 to 2^32 - 1, ever ascending,
    /// across restarts too.
    StoreAnswer raise(const Alarm& alarm);

    /// As `raise`, for what never becomes active.
    StoreAnswer reportEvent(const Alarm& alarm);

    /// Ends the active alarm `serial`; `requester` says who asked for it, `time` is in seconds
    /// since 1970.
    std::uint32_t clear(std::uint32_t serial, const std::string& requester, std::uint64_t time);

    /// The first active alarms with a greater serial number, as they are at one moment: at most
    /// `limit`, and none whose parameters begin beyond `octets` of them.
    ActivePage pageOfActive(std::uint32_t afterSerial, std::size_t limit, std::size_t octets) const;

    std::uint32_t countActive() const;

    /// The serial number that was given last, 0 for none.
    std::uint32_t lastSerial() const;

    /// Puts the next active alarms after `afterSerial` and up to `lastSerial` into the outbox once
    /// more, `limit` at most.
    ResendStep resend(std::uint32_t afterSerial, std::uint32_t lastSerial, std::size_t limit);

    /// The first notifications with a greater sequence, ascending: at most `limit`, and none that
    /// begins beyond `octets` of records.
    std::vector<Notification> nextNotifications(std::int64_t afterSequence, std::size_t limit,
                                                std::size_t octets) const;

    /// Removes the notifications up to `sequence`; false, with a line in the log for the first
    /// time, when that failed.
    bool acknowledge(std::int64_t sequence);

private:
    /// Runs `work` on the book alone; says that the outbox has grown when its code is success.
    template <typename Work>
    auto change(Work work);

    mutable std::mutex mutex_;
    mutable AlarmBook book_;  ///< under mutex_
    std::function<void()> changed_;
};

}  // namespace talvik::backend
