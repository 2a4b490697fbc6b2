#include "platform/time_conversion.h"

#include <snmp_pp/snmp_pp.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>

namespace {

constexpr int kFirstYear = 0;  // of what two octets hold
constexpr int kLastYear = 65535;
constexpr int kYearOfTm = 1900;
constexpr int kSecondsAMinute = 60;
constexpr int kMinutesAnHour = 60;

/// A moment as DateAndTime has it.
struct LocalTime {
    unsigned year = 0;
    unsigned month = 1;
    unsigned day = 1;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    char direction = '+';  ///< of the zone from UTC
    unsigned hoursFromUtc = 0;
    unsigned minutesFromUtc = 0;
};

unsigned unsignedOf(int number)
{
    return static_cast<unsigned>(number);
}

/// A time that no DateAndTime has is the nearest one that there is, in UTC.
LocalTime localTimeOf(long seconds)
{
    const std::time_t time = seconds;
    std::tm parts{};
    const bool known = localtime_r(&time, &parts) != nullptr;
    if (!known || parts.tm_year < kFirstYear - kYearOfTm || parts.tm_year > kLastYear - kYearOfTm) {
        return seconds < 0 ? LocalTime{} : LocalTime{kLastYear, 12, 31, 23, 59, 59};
    }
    const bool west = parts.tm_gmtoff < 0;
    const auto minutes =
        static_cast<unsigned>((west ? -parts.tm_gmtoff : parts.tm_gmtoff) / kSecondsAMinute);
    return {unsignedOf(parts.tm_year + kYearOfTm),
            unsignedOf(parts.tm_mon + 1),
            unsignedOf(parts.tm_mday),
            unsignedOf(parts.tm_hour),
            unsignedOf(parts.tm_min),
            unsignedOf(parts.tm_sec),
            west ? '-' : '+',
            minutes / kMinutesAnHour,
            minutes % kMinutesAnHour};
}

unsigned char octet(unsigned value)
{
    return static_cast<unsigned char>(value);
}

/// Builds the text of a time. Two a notification: a printf format takes longer than the conversion.
class TextWriter {
public:
    /// With zeros in front up to `digits` digits.
    TextWriter& number(unsigned value, int digits)
    {
        char reversed[std::numeric_limits<unsigned>::digits10 + 1];
        int count = 0;
        for (; value != 0 || count < digits; value /= kTen) {
            reversed[count++] = static_cast<char>('0' + value % kTen);
        }
        while (count != 0) {
            sign(reversed[--count]);
        }
        return *this;
    }

    TextWriter& sign(char character)
    {
        text_[size_++] = character;
        return *this;
    }

    const char* get() const { return text_; }

private:
    static constexpr unsigned kTen = 10;

    char text_[64] = {};
    std::size_t size_ = 0;
};

}  // namespace

void CSnmpUtil::convertTime2DateTime(Snmp_pp::OctetStr& octets, long seconds)
{
    const LocalTime t = localTimeOf(seconds);
    const unsigned char bytes[] = {octet(t.year >> 8U),
                                   octet(t.year),
                                   octet(t.month),
                                   octet(t.day),
                                   octet(t.hour),
                                   octet(t.minute),
                                   octet(t.second),
                                   0,  // tenths of a second
                                   static_cast<unsigned char>(t.direction),
                                   octet(t.hoursFromUtc),
                                   octet(t.minutesFromUtc)};
    octets.set_data(bytes, sizeof bytes);
}

void CSnmpUtil::convertTime2DateTimeStr(Snmp_pp::OctetStr& octets, long seconds)
{
    const LocalTime t = localTimeOf(seconds);
    TextWriter text;
    text.number(t.year, 4).sign('-').number(t.month, 2).sign('-').number(t.day, 2).sign(',');
    text.number(t.hour, 2).sign(':').number(t.minute, 2).sign(':').number(t.second, 2);
    text.sign('.').sign('0').sign(',');  // tenths of a second
    text.sign(t.direction).number(t.hoursFromUtc, 2).sign(':').number(t.minutesFromUtc, 2);
    octets = text.get();
}
