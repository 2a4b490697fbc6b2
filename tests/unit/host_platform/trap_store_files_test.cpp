#include "host/platform/trap_results.h"
#include "host/platform/trap_store.h"
#include "host/startup_error.h"
#include "tests/unit/host_platform/trap_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <filesystem>
#include <random>

#include <sys/stat.h>

namespace {

using namespace talvik::test;
using talvik::StartupError;
using talvik::TrapStore;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kAny = TrapStore::kAnyIndex;
constexpr int kRows = 200;
constexpr std::size_t kPage = 4096;

std::string noise(std::size_t count)
{
    std::mt19937 random(4711);
    std::string octets;
    for (std::size_t i = 0; i < count; ++i) {
        octets += static_cast<char>(random());
    }
    return octets;
}

void overwrite(const std::string& path, std::size_t position, const std::string& octets)
{
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(position));
    file << octets;
}

void insertRow(const StoreFolder& folder, const std::string& values)
{
    folder.sql("PRAGMA ignore_check_constraints = ON; INSERT INTO destination VALUES(" + values +
               ")");
}

struct Damage {
    const char* name;
    void (*inflict)(const StoreFolder&);
    const char* reason;

    friend std::ostream& operator<<(std::ostream& os, const Damage& row) { return os << row.name; }
};

class DamagedTrapFile : public testing::TestWithParam<Damage> {
protected:
    DamagedTrapFile()
    {
        TrapStore(folder.path()).create(destinationTo("192.0.2.1"), 1);
        folder.addRows(2, kRows);
        GetParam().inflict(folder);
        before = folder.read(StoreFolder::kFile);
    }

    StoreFolder folder;
    std::string before;
};

TEST_P(DamagedTrapFile, IsSetAsideAsItIs)
{
    const LoggerCapture log("host");

    const TrapStore store(folder.path());

    EXPECT_THAT(store.all(), IsEmpty());
    EXPECT_TRUE(folder.read("trap-destinations.db.damaged-1") == before);
    EXPECT_THAT(
        log.lines(),
        ElementsAre(AllOf(HasSubstr("the trap destinations in " + folder.file() + " are damaged: "),
                          HasSubstr(GetParam().reason),
                          HasSubstr("set aside as " + folder.file() + ".damaged-1;"),
                          HasSubstr("sqlite3 '" + folder.file() + ".damaged-1' .dump | "))));
}

TEST_P(DamagedTrapFile, MakesWayForAListThatLasts)
{
    TrapStore(folder.path()).create(destinationTo("192.0.2.9"), kAny);

    const LoggerCapture log("host");
    EXPECT_THAT(rowsOf(TrapStore(folder.path())),
                ElementsAre(TrapRow{"1", "192.0.2.9", 162, 2, 3, "--"}));
    EXPECT_THAT(log.lines(), IsEmpty());
}

const Damage kDamages[] = {
    {"CutToOnePage", [](const StoreFolder& f) { std::filesystem::resize_file(f.file(), kPage); },
     "malformed"},
    {"CutInAPage",
     [](const StoreFolder& f) { std::filesystem::resize_file(f.file(), 2 * kPage + 100); },
     "malformed"},
    {"CutInTheHeader", [](const StoreFolder& f) { std::filesystem::resize_file(f.file(), 99); },
     "ends within its header"},
    {"OneOctet", [](const StoreFolder& f) { std::filesystem::resize_file(f.file(), 1); },
     "ends within its header"},
    {"Noise", [](const StoreFolder& f) { f.write(StoreFolder::kFile, noise(3 * kPage)); },
     "not a database"},
    {"Text", [](const StoreFolder& f) { f.write(StoreFolder::kFile, "no destinations\n"); },
     "ends within its header"},
    {"NoiseInTheFirstPage", [](const StoreFolder& f) { overwrite(f.file(), 100, noise(500)); },
     "malformed"},
    {"NoiseInAMiddlePage",
     [](const StoreFolder& f) { overwrite(f.file(), 3 * kPage, noise(kPage)); }, ""},
    {"ZeroesInTheLastPage",
     [](const StoreFolder& f) {
         overwrite(f.file(), std::filesystem::file_size(f.file()) - kPage,
                   std::string(kPage, '\0'));
     },
     "are damaged: Page 5: btreeInitPage() returns error"},
    {"TooLarge",
     [](const StoreFolder& f) {
         std::filesystem::resize_file(f.file(), (std::uintmax_t{64} << 20U) + 1);
     },
     "larger than 64 MiB"},
    {"OthersApplicationId", [](const StoreFolder& f) { f.sql("PRAGMA application_id = 7"); },
     "application_id"},
    {"NoApplicationId", [](const StoreFolder& f) { f.sql("PRAGMA application_id = 0"); },
     "application_id"},
    {"NoFormat", [](const StoreFolder& f) { f.sql("PRAGMA user_version = 0"); },
     "has not the table"},
    {"NoTable", [](const StoreFolder& f) { f.sql("DROP TABLE destination"); }, "has not the table"},
    {"OtherTable",
     [](const StoreFolder& f) { f.sql("ALTER TABLE destination ADD COLUMN remark TEXT"); },
     "has not the table"},
    {"RowThatBreaksTheTablesRule",
     [](const StoreFolder& f) { insertRow(f, "300, '192.0.2.1', 65536, 2, 1, '--'"); },
     "CHECK constraint failed"},
    {"RowWithNegativeIndex",
     [](const StoreFolder& f) { insertRow(f, "-1, '192.0.2.1', 162, 2, 1, '--'"); },
     "CHECK constraint failed"},
    {"RowWithUnspecifiedAddress",
     [](const StoreFolder& f) { insertRow(f, "300, '0.0.0.0', 162, 2, 1, '--'"); },
     "its row 300 is not acceptable: address \"0.0.0.0\""},
    {"RowWithNulInTheUser",
     [](const StoreFolder& f) {
         insertRow(f, "300, '192.0.2.1', 162, 2, 1, CAST(x'610062' AS TEXT)");
     },
     "its row 300 is not acceptable: user \"a\\x00b\""},
    {"RowTooMany",
     [](const StoreFolder& f) { f.addRows(kRows + 1, TrapStore::kMaxDestinations + 1); },
     "more than 4096 rows"},
};

INSTANTIATE_TEST_SUITE_P(Table, DamagedTrapFile, testing::ValuesIn(kDamages),
                         [](const auto& row) { return row.param.name; });

/// A file whose last changes are in its log, as a killed agent leaves it.
class UntidyTrapFile : public testing::Test {
protected:
    UntidyTrapFile()
    {
        TrapStore(folder.path()).all();
        folder.addRows(1001, 1000 + kOlder);
        OtherProcess agent([this] {
            TrapStore store(folder.path());
            for (unsigned i = 1; i <= kCreated; ++i) {
                store.create(destinationTo("192.0.2.1", i), i);
            }
            _exit(0);
        });
        EXPECT_EQ(agent.wait(), 0);
    }

    /// How many of the first ones are there; whatever comes behind them must be there in full.
    std::size_t created() const
    {
        const auto rows = rowsOf(TrapStore(folder.path()));
        if (rows.size() < kOlder || std::get<0>(rows[rows.size() - kOlder]) != "1001") {
            throw std::runtime_error("rows are missing that were not in the log");
        }
        const auto count = rows.size() - kOlder;
        for (unsigned i = 1; i <= count; ++i) {
            EXPECT_EQ(rows[i - 1], (TrapRow{std::to_string(i), "192.0.2.1", i, 2, 3, "--"}));
        }
        return count;
    }

    static constexpr unsigned kOlder = 1000;
    static constexpr unsigned kCreated = 20;
    static constexpr const char* kLog = "trap-destinations.db-wal";

    StoreFolder folder;
};

TEST_F(UntidyTrapFile, IsReadWithItsLog)
{
    ASSERT_GT(folder.read(kLog).size(), kPage);

    EXPECT_EQ(created(), kCreated);
}

TEST_F(UntidyTrapFile, IsSetAsideWithItsLogAsItIs)
{
    overwrite(folder.file(), 10 * kPage, noise(kPage));  // one that the log has not
    const auto file = folder.read(StoreFolder::kFile);
    const auto log = folder.read(kLog);

    EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());

    EXPECT_TRUE(folder.read("trap-destinations.db.damaged-1") == file);
    EXPECT_TRUE(folder.read("trap-destinations.db.damaged-1-wal") == log);
}

TEST_F(UntidyTrapFile, WithADamagedLogIsSetAsideWithIt)
{
    const auto whole = folder.read(kLog);
    const auto file = folder.read(StoreFolder::kFile);
    int number = 0;
    for (const std::size_t position :
         {std::size_t{0}, std::size_t{17}, std::size_t{31}, std::size_t{32}, whole.size() / 2}) {
        SCOPED_TRACE("damaged at " + std::to_string(position));
        folder.write(StoreFolder::kFile, file);
        auto octets = whole;
        octets[position] = static_cast<char>(octets[position] ^ 0x55);
        folder.write(kLog, octets);
        const LoggerCapture log("host");

        EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());

        const auto aside = "trap-destinations.db.damaged-" + std::to_string(++number);
        EXPECT_TRUE(folder.read(aside) == file);
        EXPECT_TRUE(folder.read(aside + "-wal") == octets);
        EXPECT_THAT(log.lines(),
                    ElementsAre(AllOf(HasSubstr("write-ahead log is damaged"), HasSubstr(aside))));
    }
}

TEST_F(UntidyTrapFile, WithALogThatEndsAnywhereIsAnEarlierList)
{
    const auto whole = folder.read(kLog);
    const auto file = folder.read(StoreFolder::kFile);
    const LoggerCapture log("host");
    std::size_t last = 0;
    for (std::size_t cut = 0; cut < whole.size(); cut += 997) {
        folder.write(StoreFolder::kFile, file);
        folder.write(kLog, whole.substr(0, cut));
        const auto count = created();
        EXPECT_GE(count, last);
        last = count;
    }
    EXPECT_GT(last, 0U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UntidyTrapFile, OpeningEmptiesTheLog)
{
    OtherProcess agent([this] {
        const TrapStore store(folder.path());
        _exit(0);
    });
    EXPECT_EQ(agent.wait(), 0);

    EXPECT_EQ(folder.read(kLog), "");
    EXPECT_EQ(created(), kCreated);
}

TEST_F(UntidyTrapFile, SettingItAsideThatWasCutShortIsCompleted)
{
    const auto log = folder.read(kLog);
    const auto file = folder.read(StoreFolder::kFile);
    folder.write("trap-destinations.db.damaged-1.moving", "");
    std::filesystem::rename(folder.file(), folder.file() + ".damaged-1");
    const LoggerCapture lines("host");

    EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());

    EXPECT_TRUE(folder.read("trap-destinations.db.damaged-1") == file);
    EXPECT_TRUE(folder.read("trap-destinations.db.damaged-1-wal") == log);
    EXPECT_FALSE(std::filesystem::exists(folder.file() + ".damaged-1.moving"));
    EXPECT_THAT(lines.lines(), ElementsAre(HasSubstr("setting it aside was cut short")));
}

TEST_F(UntidyTrapFile, ALogWhoseFileIsGoneIsSetAside)
{
    for (const bool removed : {true, false}) {
        const auto name = std::string("trap-destinations.db.damaged-") + (removed ? "1" : "2");
        const auto content = noise(kPage);
        folder.write(kLog, content);
        std::filesystem::remove(folder.file());
        if (!removed) {
            folder.write(StoreFolder::kFile, "");
        }
        const LoggerCapture log("host");

        EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());

        EXPECT_EQ(folder.read(name + "-wal"), content);
        EXPECT_THAT(log.lines(), ElementsAre(AllOf(HasSubstr("its own content is gone"),
                                                   HasSubstr("Restore it from a backup"))));
    }
}

TEST(TrapFile, EachDamagedOneGetsANameOfItsOwn)
{
    const StoreFolder folder;
    folder.write("trap-destinations.db.damaged-1-wal", "a log that was left over");
    for (const char* text : {"first", "second"}) {
        folder.write(StoreFolder::kFile, text);
        EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());
    }

    EXPECT_EQ(folder.read("trap-destinations.db.damaged-2"), "first");
    EXPECT_EQ(folder.read("trap-destinations.db.damaged-3"), "second");
}

TEST(TrapFile, WithoutContentIsDamaged)
{
    const StoreFolder folder;
    folder.write(StoreFolder::kFile, "");
    const LoggerCapture log("host");

    EXPECT_THAT(TrapStore(folder.path()).all(), IsEmpty());

    EXPECT_THAT(log.lines(), ElementsAre(AllOf(HasSubstr("its content is gone"),
                                               HasSubstr("Restore it from a backup"))));
    EXPECT_TRUE(std::filesystem::exists(folder.file() + ".damaged-1"));
}

TEST(TrapFile, IsThereInWholeBeforeTheFirstChange)
{
    const StoreFolder folder;
    folder.write("trap-destinations.db.new", "of an agent that was killed");
    OtherProcess agent([&] {
        const TrapStore store(folder.path());
        _exit(0);
    });
    EXPECT_EQ(agent.wait(), 0);
    std::filesystem::remove(folder.path("trap-destinations.db-wal"));

    talvik::SqliteDatabase database(folder.file(), 0);
    EXPECT_EQ(database.number("SELECT count(*) FROM sqlite_schema WHERE name = 'destination'"), 1);
    EXPECT_FALSE(std::filesystem::exists(folder.path("trap-destinations.db.new")));
}

TEST(TrapFile, WhoseLogIsRemovedTakesNoFurtherChange)
{
    const StoreFolder folder;
    TrapStore store(folder.path());
    EXPECT_EQ(store.create(destinationTo("192.0.2.1"), 1), 0);
    std::filesystem::remove(folder.path("trap-destinations.db-wal"));
    const LoggerCapture log("host");

    EXPECT_EQ(store.create(destinationTo("192.0.2.2"), 2), talvik::trap_result::kStoreFailed);

    EXPECT_THAT(indexesOf(store), ElementsAre("1"));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("its log was moved, removed or replaced")));
}

TEST(TrapFile, MayHaveOtherTablesBesideItsOwn)
{
    const StoreFolder folder;
    TrapStore(folder.path()).create(destinationTo("192.0.2.1"), 4);
    folder.sql("CREATE TABLE remark(text); INSERT INTO remark VALUES('ours')");

    EXPECT_THAT(indexesOf(TrapStore(folder.path())), ElementsAre("4"));
}

/// What opening the store in `folder` is refused with; empty when it is not.
std::string refusalOf(const StoreFolder& folder)
{
    try {
        const TrapStore store(folder.path());
    } catch (const StartupError& error) {
        return error.what();
    }
    return {};
}

TEST(TrapFile, OfALaterReleaseIsRefusedAndKept)
{
    const StoreFolder folder;
    TrapStore(folder.path()).create(destinationTo("192.0.2.1"), 4);
    folder.sql("PRAGMA user_version = 2; ALTER TABLE destination ADD COLUMN remark TEXT");
    const auto before = folder.read(StoreFolder::kFile);

    EXPECT_THAT(refusalOf(folder), AllOf(HasSubstr(folder.file()),
                                         HasSubstr("later release (format 2, this one knows "
                                                   "1)"),
                                         HasSubstr("start that release")));

    EXPECT_EQ(folder.read(StoreFolder::kFile), before);
    EXPECT_FALSE(std::filesystem::exists(folder.path("trap-destinations.db.damaged-1")));
}

TEST(TrapFile, ThatIsNoFileIsRefused)
{
    const StoreFolder folder;
    std::filesystem::create_directory(folder.file());

    EXPECT_THAT(refusalOf(folder), AllOf(HasSubstr(folder.file()), HasSubstr("no regular file")));
}

TEST(TrapFile, BehindALinkIsRefused)
{
    const StoreFolder folder;
    std::filesystem::create_symlink(folder.write("elsewhere", ""), folder.file());

    EXPECT_THAT(refusalOf(folder), HasSubstr("no regular file"));
}

TEST(TrapFile, InAFolderThatIsMissingIsRefused)
{
    const StoreFolder folder;
    std::filesystem::remove_all(folder.path());

    EXPECT_THAT(refusalOf(folder), AllOf(HasSubstr("cannot create " + folder.file()),
                                         HasSubstr("No such file or directory")));
}

TEST(TrapFile, ThatMayNotBeReadIsRefused)
{
    constexpr uid_t kNobody = 65534;
    const StoreFolder folder;
    TrapStore(folder.path()).create(destinationTo("192.0.2.1"), 4);
    const auto before = folder.read(StoreFolder::kFile);
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(chmod(folder.file().c_str(), geteuid() == 0 ? 0600 : 0), 0);
    Pipe pipe;

    OtherProcess agent([&] {
        // An owner could give itself the right back, and the superuser needs none.
        if (geteuid() == 0 && setresuid(kNobody, kNobody, kNobody) != 0) {
            _exit(2);
        }
        pipe.write(refusalOf(folder) + "\n");
    });

    const auto refusal = pipe.readToEnd();
    EXPECT_EQ(agent.wait(), 0);
    if (geteuid() == 0) {
        EXPECT_THAT(refusal,
                    AllOf(HasSubstr("cannot use the trap destinations in " + folder.file()),
                          HasSubstr("Permission denied"),
                          HasSubstr("must be able to read and write")));
        EXPECT_EQ(folder.read(StoreFolder::kFile), before);
    } else {
        EXPECT_EQ(refusal, "\n");  // its own file: made readable again
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("trap-destinations.db.damaged-1")));
}

TEST(TrapFile, InUseByAnotherProcessIsRefused)
{
    const StoreFolder folder;
    Pipe ready;
    OtherProcess agent([&] {
        const TrapStore store(folder.path());
        ready.write("r");
        pause();
    });
    ASSERT_EQ(ready.read(), "r");

    EXPECT_THAT(refusalOf(folder),
                AllOf(HasSubstr(folder.file()), HasSubstr("in use by another process")));

    agent.kill();
    EXPECT_EQ(refusalOf(folder), "");
}

TEST(TrapFile, OnlyReadByAnotherProcessIsRefusedToo)
{
    const StoreFolder folder;
    TrapStore(folder.path()).create(destinationTo("192.0.2.1"), 4);
    Pipe ready;
    OtherProcess reader([&] {
        talvik::SqliteDatabase database(folder.file(), 1000);
        database.run("BEGIN");
        database.number("SELECT count(*) FROM destination");
        ready.write("r");
        pause();
    });
    ASSERT_EQ(ready.read(), "r");

    EXPECT_THAT(refusalOf(folder), HasSubstr("in use by another process"));

    reader.kill();
    EXPECT_THAT(indexesOf(TrapStore(folder.path())), ElementsAre("4"));
}

}  // namespace
