#include "backend/alarm_store.h"

namespace talvik::backend {

namespace {

std::uint32_t codeOf(std::uint32_t code)
{
    return code;
}

template <typename Answer>
std::uint32_t codeOf(const Answer& answer)
{
    return answer.code;
}

}  // namespace

AlarmStore::AlarmStore(const std::string& path, const StoreLimits& limits) : book_(path, limits) {}

template <typename Work>
auto AlarmStore::change(Work work)
{
    const auto answer = [&] {
        const std::lock_guard<std::mutex> lock(mutex_);
        return work(book_);
    }();
    if (codeOf(answer) == result::kSuccess && changed_) {
        changed_();
    }
    return answer;
}

StoreAnswer AlarmStore::raise(const Alarm& alarm)
{
    return change([&](AlarmBook& book) { return book.add(alarm::Kind::Fault, alarm); });
}

StoreAnswer AlarmStore::reportEvent(const Alarm& alarm)
{
    return change([&](AlarmBook& book) { return book.add(alarm::Kind::Event, alarm); });
}

std::uint32_t AlarmStore::clear(std::uint32_t serial, const std::string& requester,
                                std::uint64_t time)
{
    return change([&](AlarmBook& book) { return book.clear(serial, requester, time); });
}

ResendStep AlarmStore::resend(std::uint32_t afterSerial, std::uint32_t lastSerial,
                              std::size_t limit)
{
    return change([&](AlarmBook& book) { return book.resend(afterSerial, lastSerial, limit); });
}

bool AlarmStore::acknowledge(std::int64_t sequence)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return book_.acknowledge(sequence);
}

ActivePage AlarmStore::pageOfActive(std::uint32_t afterSerial, std::size_t limit,
                                    std::size_t octets) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return book_.database().activeAfter(afterSerial, limit, octets);
}

std::uint32_t AlarmStore::countActive() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<std::uint32_t>(book_.totals().active);
}

std::uint32_t AlarmStore::lastSerial() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<std::uint32_t>(book_.totals().lastSerial);
}

std::vector<Notification> AlarmStore::nextNotifications(std::int64_t afterSequence,
                                                        std::size_t limit, std::size_t octets) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return book_.database().notificationsAfter(afterSequence, limit, octets);
}

}  // namespace talvik::backend
