#include "platform/time_conversion.h"

#include "tests/support/time_zone.h"

#include <gtest/gtest.h>
#include <snmp_pp/snmp_pp.h>

#include <ctime>
#include <limits>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace {

using talvik::test::TimeZone;

constexpr long kLongest = std::numeric_limits<long>::max();
constexpr long kShortest = std::numeric_limits<long>::min();
constexpr long kLastSecondOf65535 = 2005949145599;
constexpr long kFirstSecondOf0 = -62167219200;

std::string dateAndTime(long seconds)
{
    Snmp_pp::OctetStr octets("what was there before");
    CSnmpUtil::convertTime2DateTime(octets, seconds);
    return octets.as_string();
}

std::string displayText(long seconds)
{
    Snmp_pp::OctetStr octets("what was there before");
    CSnmpUtil::convertTime2DateTimeStr(octets, seconds);
    return octets.as_string();
}

struct Moment {
    const char* name;
    const char* zone;
    long seconds;
    std::vector<unsigned char> octets;
    const char* text;

    friend std::ostream& operator<<(std::ostream& os, const Moment& row) { return os << row.name; }
};

class TimeConversion : public testing::TestWithParam<Moment> {};

TEST_P(TimeConversion, GivesOctetsAndTextOfTheSameMoment)
{
    const TimeZone zone(GetParam().zone);

    EXPECT_EQ(dateAndTime(GetParam().seconds),
              std::string(GetParam().octets.begin(), GetParam().octets.end()));
    EXPECT_EQ(displayText(GetParam().seconds), GetParam().text);
}

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";

const Moment kMoments[] = {
    {"Beginning",
     "UTC0",
     0,
     {0x07, 0xB2, 1, 1, 0, 0, 0, 0, '+', 0, 0},
     "1970-01-01,00:00:00.0,+00:00"},
    {"Winter",
     kBerlin,
     1795272000,
     {0x07, 0xEA, 11, 21, 15, 40, 0, 0, '+', 1, 0},
     "2026-11-21,15:40:00.0,+01:00"},
    {"Summer",
     kBerlin,
     1782907200,
     {0x07, 0xEA, 7, 1, 14, 0, 0, 0, '+', 2, 0},
     "2026-07-01,14:00:00.0,+02:00"},
    {"WestByAHalfHour",
     "NST3:30",
     1795272000,
     {0x07, 0xEA, 11, 21, 11, 10, 0, 0, '-', 3, 30},
     "2026-11-21,11:10:00.0,-03:30"},
    {"EastByThreeQuarters",
     "<+0545>-5:45",
     59,
     {0x07, 0xB2, 1, 1, 5, 45, 59, 0, '+', 5, 45},
     "1970-01-01,05:45:59.0,+05:45"},
    {"FurthestEast",
     "<+14>-14",
     0,
     {0x07, 0xB2, 1, 1, 14, 0, 0, 0, '+', 14, 0},
     "1970-01-01,14:00:00.0,+14:00"},
    {"LessThanAnHourWest",
     "<-0030>0:30",
     0,
     {0x07, 0xB1, 12, 31, 23, 30, 0, 0, '-', 0, 30},
     "1969-12-31,23:30:00.0,-00:30"},
    {"BeforeTheBeginning",
     "UTC0",
     -1,
     {0x07, 0xB1, 12, 31, 23, 59, 59, 0, '+', 0, 0},
     "1969-12-31,23:59:59.0,+00:00"},
    {"Beyond32Bits",
     "UTC0",
     4294967296,
     {0x08, 0x3A, 2, 7, 6, 28, 16, 0, '+', 0, 0},
     "2106-02-07,06:28:16.0,+00:00"},
    {"LastOfTwoOctets",
     "UTC0",
     kLastSecondOf65535,
     {0xFF, 0xFF, 12, 31, 23, 59, 59, 0, '+', 0, 0},
     "65535-12-31,23:59:59.0,+00:00"},
    {"BehindTheLast",
     "UTC0",
     kLastSecondOf65535 + 1,
     {0xFF, 0xFF, 12, 31, 23, 59, 59, 0, '+', 0, 0},
     "65535-12-31,23:59:59.0,+00:00"},
    {"BehindTheLastByItsZone",
     kBerlin,
     kLastSecondOf65535,
     {0xFF, 0xFF, 12, 31, 23, 59, 59, 0, '+', 0, 0},
     "65535-12-31,23:59:59.0,+00:00"},
    {"Longest",
     "UTC0",
     kLongest,
     {0xFF, 0xFF, 12, 31, 23, 59, 59, 0, '+', 0, 0},
     "65535-12-31,23:59:59.0,+00:00"},
    {"FirstOfTwoOctets",
     "UTC0",
     kFirstSecondOf0,
     {0, 0, 1, 1, 0, 0, 0, 0, '+', 0, 0},
     "0000-01-01,00:00:00.0,+00:00"},
    {"BeforeTheFirst",
     "UTC0",
     kFirstSecondOf0 - 1,
     {0, 0, 1, 1, 0, 0, 0, 0, '+', 0, 0},
     "0000-01-01,00:00:00.0,+00:00"},
    {"Shortest",
     kBerlin,
     kShortest,
     {0, 0, 1, 1, 0, 0, 0, 0, '+', 0, 0},
     "0000-01-01,00:00:00.0,+00:00"},
};

INSTANTIATE_TEST_SUITE_P(Moments, TimeConversion, testing::ValuesIn(kMoments),
                         [](const auto& row) { return row.param.name; });

TEST(TimeConversionThreads, ConvertAtOnce)
{
    const TimeZone zone(kBerlin);
    std::vector<std::string> texts(8);
    std::vector<std::thread> threads;
    for (auto& text : texts) {
        threads.emplace_back([&text] {
            for (int round = 0; round < 200; ++round) {
                text = displayText(1795272000);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(texts, std::vector<std::string>(8, "2026-11-21,15:40:00.0,+01:00"));
}

}  // namespace
