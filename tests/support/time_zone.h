#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace talvik::test {

/// The local time zone while this lives, as the variable TZ names it. For tests with one thread.
class TimeZone {
public:
    explicit TimeZone(const char* zone)
    {
        if (const char* former = std::getenv("TZ"); former != nullptr) {
            former_ = former;
        }
        install(zone);
    }

    ~TimeZone() { install(former_ ? former_->c_str() : nullptr); }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void install(const char* zone)
    {
        if (zone == nullptr) {
            unsetenv("TZ");
        } else {
            setenv("TZ", zone, 1);
        }
        tzset();
    }

    std::optional<std::string> former_;
};

}  // namespace talvik::test
