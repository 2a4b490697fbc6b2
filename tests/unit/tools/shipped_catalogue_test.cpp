#include "tests/support/built_tree.h"
#include "tools/catalogue/catalogue_check.h"
#include "tools/catalogue/catalogue_files.h"
#include "tools/catalogue/expansion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

using namespace talvik::ctl;
using talvik::test::sourceFile;

const std::string kDefinitions = sourceFile("etc/alarm-definitions.json");
const std::string kEnumerations = sourceFile("etc/alarm-enumerations.json");

class ShippedCatalogue : public testing::Test {
protected:
    const JsonDocument definitions_ = JsonDocument::load(kDefinitions);
    const JsonDocument enumerations_ = JsonDocument::load(kEnumerations);
};

TEST_F(ShippedCatalogue, HasNothingToFind)
{
    const auto result = checkCatalogue(definitions_, &enumerations_);

    for (const auto& finding : result.findings.list()) {
        ADD_FAILURE() << finding.place.file << ':' << finding.place.line << ": " << finding.message;
    }
    EXPECT_EQ(result.alarms, 81u);
    EXPECT_EQ(result.enumerations, 11u);
}

TEST_F(ShippedCatalogue, HasAlarmsWithAndWithoutAnOidOfTheirOwn)
{
    Findings findings;
    std::set<std::string> oids;
    std::size_t without = 0;
    for (const auto& alarm : readDefinitions(definitions_, findings)) {
        const auto& oid = alarm.of(Member::AlarmOid).text;
        without += oid.empty() ? 1U : 0U;
        if (!oid.empty()) {
            EXPECT_TRUE(oids.insert(oid).second) << oid << " is used twice";
        }
    }
    EXPECT_EQ(without, 8u);
    EXPECT_EQ(oids.size(), 73u);
}

/// Ids that the current alarm table leaves out: events, which do not last.
TEST_F(ShippedCatalogue, HasTheEvents)
{
    Findings findings;
    auto alarms = readDefinitions(definitions_, findings);
    for (int id = 507010006; id <= 507010010; ++id) {
        EXPECT_TRUE(std::any_of(alarms.begin(), alarms.end(), [id](const auto& alarm) {
            return alarm.of(Member::EventId).text == std::to_string(id);
        })) << id;
    }
}

struct Sample {
    const char* name;
    std::uint64_t id;
    const char* params;
    const char* title;
    const char* location;
    const char* detail;
    const char* suggestion;

    friend std::ostream& operator<<(std::ostream& os, const Sample& row) { return os << row.name; }
};

class ShippedAlarm : public testing::TestWithParam<Sample> {};

TEST_P(ShippedAlarm, ReadsAsItsAuthorMeantIt)
{
    const auto& sample = GetParam();

    const auto shown = expandAlarm(kDefinitions, kEnumerations, sample.id, sample.params);

    ASSERT_TRUE(shown.shown);
    EXPECT_EQ(shown.shownId, sample.id);
    EXPECT_EQ(shown.name, sample.title);
    EXPECT_EQ(shown.location, sample.location);
    EXPECT_EQ(shown.detail, sample.detail);
    EXPECT_EQ(shown.suggestion, sample.suggestion);
    EXPECT_TRUE(shown.log.empty()) << shown.log.front().text;
}

const Sample kSamples[] = {
    {"ValueMap", 501010001, "DAE000,7,2102350TLV,1", "Disk failed", "Enclosure DAE000, slot 7",
     "Disk 7 in enclosure DAE000 (serial number 2102350TLV) has failed: too many media errors.",
     "Replace the disk with one of the same type and at least the same capacity. Its amber lamp is "
     "lit. Reconstruction starts by itself."},
    {"Enumeration", 504010001, "CTE0,1,2", "Power supply failed", "Enclosure CTE0, power supply 1",
     "Power supply 1 of enclosure CTE0 is too warm (above 70 °C).",
     "Check the power cable, then replace the power supply. Do not remove the other one."},
    {"BeyondAscii", 502010002, "DAE000,2,48,10,42", "Enclosure temperature too high",
     "Enclosure DAE000, sensor 2",
     "Sensor 2 of enclosure DAE000 reads 48 °C; the normal range is 10–42 °C.",
     "Check air conditioning and fans. The enclosure switches itself off at 55 °C."},
    {"EmptyParameter", 507010001, "12,vol&#44;1,,0", "Replication interrupted",
     "Replication pair 12", "Pair 12 (local volume vol,1, remote array --) is interrupted.",
     "Check the link to the remote array, then start synchronisation."},
    {"MissingParameters", 501010007, "DAE000,3", "Disk responds slowly", "Enclosure DAE000, slot 3",
     "Disk 3 in enclosure DAE000 took -- µs on average to answer; comparable disks take -- µs.",
     "Watch the disk. Replace it if the alarm comes back within a day."},
    {"Event", 507010007, "admin,192.168.2.20,3,0", "Login refused", "User admin",
     "Login of user admin from 192.168.2.20 was refused for the 3. time: wrong password.",
     "If this repeats, find out who works at that address."},
    {"EnumerationInEveryText", 508010002, "3,2027-01-31", "Licence expired", "Licence encryption",
     "The licence for encryption expired on 2027-01-31. encryption keeps running but cannot be "
     "changed.",
     "Import a new licence."},
};

INSTANTIATE_TEST_SUITE_P(Samples, ShippedAlarm, testing::ValuesIn(kSamples),
                         [](const auto& row) { return row.param.name; });

}  // namespace
