#include "host/platform/trap_results.h"
#include "tests/unit/host_platform/trap_kit.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <sqlite3.h>

#include <cstring>

namespace {

using namespace talvik::test;
using talvik::TrapStore;
using testing::ElementsAre;
namespace trap_result = talvik::trap_result;

/// While this lives, SQLite's files are the system's, but syncs of write-ahead logs fail when told.
class FailingSyncs {
public:
    FailingSyncs()
    {
        system_ = sqlite3_vfs_find(nullptr);
        failing_ = 0;
        shim_ = *system_;
        shim_.zName = "failing-syncs";
        shim_.xOpen = &FailingSyncs::open;
        sqlite3_vfs_register(&shim_, 1);
    }

    ~FailingSyncs()
    {
        sqlite3_vfs_unregister(&shim_);
        sqlite3_vfs_register(system_, 1);
    }

    FailingSyncs(const FailingSyncs&) = delete;
    FailingSyncs& operator=(const FailingSyncs&) = delete;

    static void failNext(int count) { failing_ = count; }

private:
    static int open(sqlite3_vfs* /*shim*/, sqlite3_filename name, sqlite3_file* file, int flags,
                    int* outFlags)
    {
        const int result = system_->xOpen(system_, name, file, flags, outFlags);
        if (result == SQLITE_OK && (flags & SQLITE_OPEN_WAL) != 0) {
            systemMethods_ = file->pMethods;
            methods_ = *systemMethods_;
            methods_.xSync = &FailingSyncs::sync;
            file->pMethods = &methods_;
        }
        return result;
    }

    static int sync(sqlite3_file* file, int flags)
    {
        if (failing_ > 0) {
            --failing_;
            return SQLITE_IOERR_FSYNC;
        }
        return systemMethods_->xSync(file, flags);
    }

    static inline sqlite3_vfs* system_ = nullptr;
    static inline sqlite3_vfs shim_{};
    static inline const sqlite3_io_methods* systemMethods_ = nullptr;
    static inline sqlite3_io_methods methods_{};
    static inline int failing_ = 0;
};

/// A change whose commit fails only on syncing, `failures` times, and then an agent that is killed.
void failAndDie(const StoreFolder& folder, int failures)
{
    OtherProcess agent([&] {
        const FailingSyncs syncs;
        TrapStore store(folder.path());
        if (store.create(destinationTo("192.0.2.1"), 1) != 0) {
            _exit(2);
        }
        FailingSyncs::failNext(failures);
        if (store.create(destinationTo("192.0.2.2"), 2) != trap_result::kStoreFailed) {
            _exit(3);
        }
        _exit(0);
    });
    EXPECT_EQ(agent.wait(), 0);
}

TEST(FailedSync, LeavesNothingOfTheChangeForARestart)
{
    for (const int failures : {1, 2}) {
        const StoreFolder folder;
        failAndDie(folder, failures);

        EXPECT_THAT(indexesOf(TrapStore(folder.path())), ElementsAre("1")) << failures;
    }
}

TEST(FailedSync, IsFollowedByChangesThatLast)
{
    const StoreFolder folder;
    OtherProcess agent([&] {
        const FailingSyncs syncs;
        TrapStore store(folder.path());
        FailingSyncs::failNext(3);  // the change's, that of taking it back, and of the next trial
        const bool failed =
            store.create(destinationTo("192.0.2.1"), 1) == trap_result::kStoreFailed &&
            store.create(destinationTo("192.0.2.2"), 2) == trap_result::kStoreFailed;
        const bool done = store.create(destinationTo("192.0.2.3"), 3) == 0 &&
                          store.create(destinationTo("192.0.2.4"), 4) == 0;
        _exit(failed && done ? 0 : 1);
    });
    EXPECT_EQ(agent.wait(), 0);

    EXPECT_THAT(indexesOf(TrapStore(folder.path())), ElementsAre("3", "4"));
}

}  // namespace
