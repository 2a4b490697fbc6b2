#include "host/platform/trap_store.h"

#include "host/platform/trap_results.h"
#include "tests/unit/host_platform/trap_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <atomic>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using namespace talvik::test;
using talvik::TrapStore;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace trap_result = talvik::trap_result;

constexpr auto kAny = TrapStore::kAnyIndex;

class TrapStoreTest : public testing::Test {
protected:
    void reopen()
    {
        store.reset();
        store = std::make_unique<TrapStore>(folder.path());
    }

    StoreFolder folder;
    std::unique_ptr<TrapStore> store = std::make_unique<TrapStore>(folder.path());
};

TEST_F(TrapStoreTest, BeginsEmptyInAFileOfItsOwnersOnly)
{
    EXPECT_THAT(store->all(), IsEmpty());
    struct stat facts = {};
    ASSERT_EQ(stat(folder.file().c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777, 0600U);
}

TEST_F(TrapStoreTest, TakesPermissionsOfOthersAway)
{
    store.reset();
    ASSERT_EQ(chmod(folder.file().c_str(), 0664), 0);

    reopen();

    struct stat facts = {};
    ASSERT_EQ(stat(folder.file().c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777, 0600U);
}

TEST_F(TrapStoreTest, KeepsEveryFieldOfACreatedDestination)
{
    tTrapDestInfo destination = destinationTo("traps.invalid.", 65535, "99");
    destination.version = 3;
    destination.type = 7;
    destination.user = "J\xc3\xbcrgen's \"user\"; --";

    EXPECT_EQ(store->create(destination, 2147483647), 0);

    const TrapRow expected{"2147483647", "traps.invalid.", 65535, 3, 7, destination.user};
    EXPECT_THAT(rowsOf(*store), ElementsAre(expected));
    reopen();
    EXPECT_THAT(rowsOf(*store), ElementsAre(expected));
}

TEST_F(TrapStoreTest, ListsByAscendingIndex)
{
    for (const unsigned index : {10U, 9U, 2U, 100U}) {
        ASSERT_EQ(store->create(destinationTo("192.0.2.1"), index), 0);
    }

    EXPECT_THAT(indexesOf(*store), ElementsAre("2", "9", "10", "100"));
    reopen();
    EXPECT_THAT(indexesOf(*store), ElementsAre("2", "9", "10", "100"));
}

TEST_F(TrapStoreTest, AnyIndexIsTheLowestFreeOne)
{
    const auto add = [&] { return store->create(destinationTo("192.0.2.1"), kAny); };
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 3), 0);
    ASSERT_EQ(add(), 0);
    ASSERT_EQ(add(), 0);
    EXPECT_THAT(indexesOf(*store), ElementsAre("1", "2", "3"));
    ASSERT_EQ(add(), 0);
    EXPECT_THAT(indexesOf(*store), ElementsAre("1", "2", "3", "4"));

    ASSERT_EQ(store->remove("3"), 0);
    ASSERT_EQ(store->remove("1"), 0);
    ASSERT_EQ(add(), 0);
    EXPECT_THAT(indexesOf(*store), ElementsAre("1", "2", "4"));
    reopen();
    ASSERT_EQ(add(), 0);
    ASSERT_EQ(add(), 0);
    EXPECT_THAT(indexesOf(*store), ElementsAre("1", "2", "3", "4", "5"));
}

TEST_F(TrapStoreTest, TheSameAddressAndPortMayBeThereTwice)
{
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), kAny), 0);
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), kAny), 0);

    EXPECT_THAT(indexesOf(*store), ElementsAre("1", "2"));
}

TEST_F(TrapStoreTest, ModifyReplacesTheWholeRow)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1", 1), 1), 0);
    ASSERT_EQ(store->create(destinationTo("192.0.2.2", 2), 2), 0);
    tTrapDestInfo changed = destinationTo("2001:db8::9", 9, "2");
    changed.version = 1;
    changed.type = 2;
    changed.user = "operator";

    EXPECT_EQ(store->modify(changed), 0);

    const TrapRow first{"1", "192.0.2.1", 1, 2, 3, "--"};
    const TrapRow second{"2", "2001:db8::9", 9, 1, 2, "operator"};
    EXPECT_THAT(rowsOf(*store), ElementsAre(first, second));
    reopen();
    EXPECT_THAT(rowsOf(*store), ElementsAre(first, second));
}

TEST_F(TrapStoreTest, RemoveTakesOneRow)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 2), 0);

    EXPECT_EQ(store->remove("1"), 0);

    EXPECT_THAT(indexesOf(*store), ElementsAre("2"));
    reopen();
    EXPECT_THAT(indexesOf(*store), ElementsAre("2"));
}

TEST_F(TrapStoreTest, ATakenIndexKeepsItsDestination)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 5), 0);

    EXPECT_EQ(store->create(destinationTo("192.0.2.2"), 5), trap_result::kIndexTaken);

    EXPECT_THAT(rowsOf(*store), ElementsAre(TrapRow{"5", "192.0.2.1", 162, 2, 3, "--"}));
}

TEST_F(TrapStoreTest, AnIndexBeyondTheRangeIsInvalid)
{
    for (const unsigned index : {0U, 2147483648U, kAny - 1}) {
        EXPECT_EQ(store->create(destinationTo("192.0.2.1"), index), trap_result::kIndexInvalid)
            << index;
    }
    EXPECT_THAT(store->all(), IsEmpty());
}

TEST_F(TrapStoreTest, AnUnknownOrMalformedIndexIsUnknown)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);

    for (const char* index : {"2", "", "01", "+1", "1 ", "0", "2147483648", "4294967297"}) {
        EXPECT_EQ(store->modify(destinationTo("192.0.2.2", 9, index)), trap_result::kIndexUnknown)
            << index;
        EXPECT_EQ(store->remove(index), trap_result::kIndexUnknown) << index;
    }
    EXPECT_THAT(rowsOf(*store), ElementsAre(TrapRow{"1", "192.0.2.1", 162, 2, 3, "--"}));
}

TEST_F(TrapStoreTest, RefusesFieldsThatAreNotAcceptable)
{
    struct Case {
        const char* named;
        void (*spoil)(tTrapDestInfo&);
    };
    const Case cases[] = {
        {"address \"0.0.0.0\"", [](tTrapDestInfo& d) { d.address = "0.0.0.0"; }},
        {"address \"a\\x1Bb\"",
         [](tTrapDestInfo& d) {
             d.address = "a\x1b"
                         "b";
         }},
        {"port 65536", [](tTrapDestInfo& d) { d.port = 65536; }},
        {"version 4", [](tTrapDestInfo& d) { d.version = 4; }},
        {"type 5", [](tTrapDestInfo& d) { d.type = 5; }},
        {"user \"\"", [](tTrapDestInfo& d) { d.user = ""; }},
    };
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);

    for (const auto& row : cases) {
        const LoggerCapture log("host");
        auto destination = destinationTo("192.0.2.2", 9, "1");
        row.spoil(destination);
        EXPECT_EQ(store->create(destination, kAny), trap_result::kRefused) << row.named;
        EXPECT_EQ(store->modify(destination), trap_result::kRefused) << row.named;
        EXPECT_THAT(log.lines(), ElementsAre(AllOf(HasSubstr("create"), HasSubstr(row.named)),
                                             AllOf(HasSubstr("change"), HasSubstr(row.named))));
    }
    EXPECT_THAT(rowsOf(*store), ElementsAre(TrapRow{"1", "192.0.2.1", 162, 2, 3, "--"}));
}

TEST_F(TrapStoreTest, AFullListTakesNoMore)
{
    store.reset();
    folder.addRows(2, TrapStore::kMaxDestinations);  // one less than it takes
    reopen();

    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), kAny), 0);
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), kAny), trap_result::kListFull);
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), 5000), trap_result::kListFull);
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), 7), trap_result::kIndexTaken);
    EXPECT_EQ(store->all().size(), TrapStore::kMaxDestinations);
    EXPECT_EQ(store->remove("7"), 0);
    EXPECT_EQ(store->create(destinationTo("192.0.2.1"), kAny), 0);
    EXPECT_EQ(store->all().size(), TrapStore::kMaxDestinations);
    reopen();
    EXPECT_EQ(store->all().size(), TrapStore::kMaxDestinations);
}

/// While this lives, no file of this process grows beyond `octets`.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t octets) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{octets, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST_F(TrapStoreTest, AFailedWriteChangesNothing)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);
    const auto before = rowsOf(*store);
    const LoggerCapture log("host");

    {
        const FileSizeLimit limit(1);
        EXPECT_EQ(store->create(destinationTo("192.0.2.2"), kAny), trap_result::kStoreFailed);
        EXPECT_EQ(store->modify(destinationTo("192.0.2.3", 9, "1")), trap_result::kStoreFailed);
        EXPECT_EQ(store->remove("1"), trap_result::kStoreFailed);
    }

    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("cannot create trap destination 2 in " + folder.file()),
                            HasSubstr("cannot change trap destination 1"),
                            HasSubstr("cannot remove trap destination 1")));
    EXPECT_EQ(rowsOf(*store), before);
    // No transaction was left open, and the file holds none of it.
    EXPECT_EQ(store->create(destinationTo("192.0.2.4"), kAny), 0);
    reopen();
    EXPECT_THAT(rowsOf(*store),
                ElementsAre(before.front(), TrapRow{"2", "192.0.2.4", 162, 2, 3, "--"}));
}

TEST_F(TrapStoreTest, AFileThatWasTakenAwayTakesNoChange)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);
    ASSERT_EQ(std::rename(folder.file().c_str(), folder.path("elsewhere").c_str()), 0);
    const LoggerCapture log("host");

    EXPECT_EQ(store->remove("1"), trap_result::kStoreFailed);

    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("was moved, removed or replaced")));
    EXPECT_THAT(indexesOf(*store), ElementsAre("1"));
    ASSERT_EQ(std::rename(folder.path("elsewhere").c_str(), folder.file().c_str()), 0);
    EXPECT_EQ(store->remove("1"), 0);
}

TEST_F(TrapStoreTest, AnEndLeavesTheFileAlone)
{
    ASSERT_EQ(store->create(destinationTo("192.0.2.1"), 1), 0);

    store.reset();

    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(names, ElementsAre(StoreFolder::kFile));
}

TEST_F(TrapStoreTest, ThreadsShareIt)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 12;
    std::atomic<int> failures{0};
    const auto expect = [&](bool holds) { failures += holds ? 0 : 1; };
    const auto work = [&](unsigned own) {
        for (unsigned round = 1; round <= kRounds; ++round) {
            const unsigned kept = own * 1000 + round;
            const unsigned passing = own * 1000 + 500;
            expect(store->create(destinationTo("192.0.2.1", own), kept) == 0);
            expect(store->create(destinationTo("192.0.2.2", own), passing) == 0);
            expect(store->modify(destinationTo("192.0.2.3", 100 + own, std::to_string(kept))) == 0);
            expect(!store->all().empty());
            expect(store->remove(std::to_string(passing)) == 0);
            expect(store->create(destinationTo("192.0.2.4", own), kAny) == 0);
        }
    };

    std::vector<std::thread> threads;
    for (unsigned i = 1; i <= kThreads; ++i) {
        threads.emplace_back(work, i);
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(failures, 0);
    const auto rows = rowsOf(*store);
    EXPECT_EQ(rows.size(), 2U * kThreads * kRounds);
    EXPECT_EQ(std::get<0>(rows[kThreads * kRounds - 1]), std::to_string(kThreads * kRounds));
    reopen();
    EXPECT_EQ(rowsOf(*store), rows);
}

}  // namespace
