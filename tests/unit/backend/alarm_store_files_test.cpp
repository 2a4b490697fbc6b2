#include "backend/alarm_store.h"

#include "host/platform/sqlite_database.h"
#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/host_platform/trap_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <utility>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::SqliteDatabase;
using talvik::StartupError;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

struct Damage {
    const char* name;
    void (*inflict)(const std::string& file);
    const char* reason;

    friend std::ostream& operator<<(std::ostream& os, const Damage& row) { return os << row.name; }
};

void change(const std::string& file, const char* sql)
{
    SqliteDatabase database(file, 1000);
    database.run(sql);
}

/// The size of a file and how it begins: one of the damages is a file of a gigabyte, all holes.
std::pair<std::uintmax_t, std::string> sizeAndBegin(const std::string& file)
{
    constexpr std::uintmax_t kBegin = 65536;
    const auto size = fs::file_size(file);
    std::string begin(std::min(size, kBegin), '\0');
    std::ifstream(file, std::ios::binary)
        .read(begin.data(), static_cast<std::streamsize>(begin.size()));
    return {size, begin};
}

class DamagedAlarmFile : public testing::TestWithParam<Damage> {};

TEST_P(DamagedAlarmFile, IsSetAsideAndMakesWayForAStoreWithNewSerialNumbers)
{
    const TempDir dir;
    const auto file = dir.path("alarms.db");
    AlarmStore(file).raise(alarmOf(1));
    GetParam().inflict(file);
    const auto before = sizeAndBegin(file);
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    const LoggerCapture log("backend");

    std::uint32_t serial = 0;
    {
        AlarmStore store(file);
        EXPECT_THAT(outboxOf(store), IsEmpty());
        EXPECT_EQ(store.countActive(), 0U);
        serial = store.raise(alarmOf(2)).serial;
    }

    EXPECT_GT(serial, now);
    EXPECT_TRUE(sizeAndBegin(file + ".damaged-1") == before);
    EXPECT_THAT(log.lines(),
                ElementsAre(AllOf(HasSubstr("the alarms in " + file + " are damaged: "),
                                  HasSubstr(GetParam().reason),
                                  HasSubstr("set aside as " + file + ".damaged-1;"))));
    EXPECT_EQ(AlarmStore(file).raise(alarmOf(3)).serial, serial + 1);
    EXPECT_EQ(log.lines().size(), 1U);
}

const Damage kDamages[] = {
    {"Noise", [](const std::string& file) { std::ofstream(file) << std::string(8192, 'n'); },
     "not a database"},
    {"Empty", [](const std::string& file) { fs::resize_file(file, 0); }, "its content is gone"},
    {"Cut", [](const std::string& file) { fs::resize_file(file, 5000); }, "malformed"},
    {"LargerThanItCanGrow",
     [](const std::string& file) { fs::resize_file(file, (std::uintmax_t{1} << 30U) + 1); },
     "larger than 1024 MiB"},
    {"AnotherProgramsFile",
     [](const std::string& file) { change(file, "PRAGMA application_id = 7"); }, "application_id"},
    {"NoOutbox", [](const std::string& file) { change(file, "DROP TABLE outbox"); },
     "has not the tables"},
    {"OtherActiveAlarms",
     [](const std::string& file) { change(file, "ALTER TABLE active ADD COLUMN remark TEXT"); },
     "has not the tables"},
    {"NoLastSerialNumber", [](const std::string& file) { change(file, "DELETE FROM counter"); },
     "last serial number is gone"},
    {"SerialNumberThatWasNotGiven",
     [](const std::string& file) { change(file, "UPDATE active SET serial = 2"); },
     "was not given yet"},
    {"SerialNumberThatCannotBe",
     [](const std::string& file) {
         change(file, "PRAGMA ignore_check_constraints = ON; UPDATE counter SET last_serial = -1");
     },
     "CHECK constraint failed"},
};

INSTANTIATE_TEST_SUITE_P(Files, DamagedAlarmFile, testing::ValuesIn(kDamages),
                         [](const auto& row) { return row.param.name; });

class AlarmFile : public testing::Test {
protected:
    std::string refusal() const
    {
        try {
            const AlarmStore store(file_);
        } catch (const StartupError& error) {
            return error.what();
        }
        return "not refused";
    }

    TempDir dir_;
    const std::string file_ = dir_.path("alarms.db");
};

TEST_F(AlarmFile, OfALaterReleaseIsLeftAlone)
{
    AlarmStore(file_).raise(alarmOf(1));
    change(file_, "PRAGMA user_version = 2");

    EXPECT_THAT(refusal(), AllOf(HasSubstr("the alarms in " + file_), HasSubstr("later release")));
    EXPECT_FALSE(fs::exists(file_ + ".damaged-1"));
}

TEST_F(AlarmFile, CanBeOpenOnce)
{
    const AlarmStore store(file_);
    const OtherProcess other([&] {
        if (refusal().find("in use by another process") == std::string::npos) {
            throw std::runtime_error("not refused");
        }
    });
    EXPECT_EQ(const_cast<OtherProcess&>(other).wait(), 0);
}

TEST_F(AlarmFile, IsForItsOwnerOnly)
{
    const AlarmStore store(file_);

    EXPECT_EQ(fs::status(file_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(AlarmFile, ThatWasMovedTakesNothingAnyMore)
{
    const LoggerCapture log("backend");
    AlarmStore store(file_);
    store.raise(alarmOf(1));
    fs::rename(file_, dir_.path("elsewhere"));

    EXPECT_EQ(store.raise(alarmOf(2)).code, result::kStoreFailed);
    EXPECT_EQ(store.clear(1, "me", 2000), result::kStoreFailed);
    EXPECT_EQ(store.resend(0, 1, 10).code, result::kStoreFailed);
    EXPECT_FALSE(store.acknowledge(1));
    EXPECT_FALSE(store.acknowledge(1));
    EXPECT_EQ(log.lines().size(), 4U) << "a failure to remove is said once";

    fs::rename(dir_.path("elsewhere"), file_);
    EXPECT_EQ(store.raise(alarmOf(2)).serial, 2U);
    EXPECT_TRUE(store.acknowledge(1));
    EXPECT_THAT(outboxOf(store), ElementsAre(faultOf(2, alarmOf(2)).octets()));
}

TEST_F(AlarmFile, HasALogThatStaysSmallAfterAPageThatWasCutShort)
{
    constexpr int kAlarms = 300;
    constexpr std::uintmax_t kMebibyte = 1 << 20;
    AlarmStore store(file_);
    const auto longest = alarmOf(1, std::string(32768, 'p'));
    store.raise(longest);
    store.raise(longest);
    ASSERT_EQ(store.pageOfActive(0, 9, 1).alarms.size(), 1U);

    for (int i = 0; i < kAlarms; ++i) {
        ASSERT_EQ(store.raise(longest).code, result::kSuccess);
    }

    EXPECT_LT(fs::file_size(file_ + "-wal"), 6 * kMebibyte)
        << "an alarm adds more than 64 KiB, and what is read keeps the log";
    EXPECT_EQ(store.pageOfActive(1, 9, 1).alarms.size(), 1U);
}

TEST_F(AlarmFile, CopiedWhileItIsOpenHoldsAllThatWasAnswered)
{
    AlarmStore store(file_);
    for (std::uint64_t id = 1; id <= 20; ++id) {
        store.raise(alarmOf(id));
    }
    store.acknowledge(store.nextNotifications(0, 5, SIZE_MAX).back().sequence);
    const auto copy = dir_.path("copy.db");
    fs::copy_file(file_, copy);
    fs::copy_file(file_ + "-wal", copy + "-wal");

    const AlarmStore copied(copy);

    EXPECT_EQ(serialsOf(copied), serialsOf(store));
    EXPECT_EQ(outboxOf(copied), outboxOf(store));
    EXPECT_EQ(copied.lastSerial(), 20U);
    EXPECT_FALSE(fs::exists(copy + ".damaged-1"));
}

/// The life of a back end: raises, clears and acknowledges, and says each serial number that it has
/// answered.
void reportUntilKilled(const std::string& file, const Pipe& answered)
{
    AlarmStore store(file);
    for (;;) {
        const auto serial = store.raise(alarmOf(1)).serial;
        answered.write("+");
        if (serial % 3 == 0) {
            store.clear(serial, "me", 2000);
        }
        if (serial % 5 == 0) {
            store.acknowledge(store.nextNotifications(0, 2, SIZE_MAX).back().sequence);
        }
    }
}

TEST_F(AlarmFile, HoldsAllThatWasAnsweredAfterAKill)
{
    constexpr int kRounds = 20;
    const auto seed = std::random_device()();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    std::uint32_t last = 0;
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        Pipe pipe;
        OtherProcess other([&] { reportUntilKilled(file_, pipe); });
        pipe.closeWriter();
        std::size_t answered = 0;
        const auto enough = random() % 60 + 1;
        while (answered < enough) {
            const auto more = pipe.read();
            ASSERT_FALSE(more.empty()) << "it ended by itself";
            answered += more.size();
        }
        other.kill();
        answered += pipe.readToEnd().size();

        AlarmStore store(file_);

        const auto given = store.lastSerial() - last;
        EXPECT_GE(given, answered);
        EXPECT_LE(given, answered + 1) << "the last one was on disk and not yet answered";
        last = store.lastSerial();
        auto serials = serialsOf(store);
        EXPECT_TRUE(std::is_sorted(serials.begin(), serials.end()));
        for (auto serial = last - given + 1; serial <= last; ++serial) {
            const bool isActive = std::binary_search(serials.begin(), serials.end(), serial);
            EXPECT_TRUE(isActive || serial % 3 == 0) << serial << " is lost";
        }
    }
    EXPECT_FALSE(fs::exists(file_ + ".damaged-1"));
}

}  // namespace
