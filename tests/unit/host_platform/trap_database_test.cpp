#include "host/platform/trap_database.h"

#include "host/platform/trap_store.h"
#include "tests/unit/host_platform/trap_kit.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace {

using namespace talvik::test;
using talvik::SqliteError;
using talvik::TrapDatabase;

/// The file is read anew.
TrapDatabase::Rows rowsIn(const StoreFolder& folder)
{
    return TrapDatabase::open(folder.file(), talvik::TrapStore::kMaxDestinations)->takeRows();
}

tTrapDestInfo ofKind(unsigned int version, unsigned int type)
{
    auto destination = destinationTo("192.0.2.1");
    destination.version = version;
    destination.type = type;
    return destination;
}

TEST(TrapDatabase, TakesEveryVersionAndType)
{
    const StoreFolder folder;
    auto database = TrapDatabase::open(folder.file(), talvik::TrapStore::kMaxDestinations);
    std::uint32_t index = 0;

    for (const unsigned int version : {1U, 2U, 3U}) {
        for (const unsigned int type : {1U, 2U, 3U, 7U}) {
            database->insert(++index, ofKind(version, type));
        }
    }

    database.reset();
    const auto rows = rowsIn(folder);
    ASSERT_EQ(rows.size(), 12U);
    EXPECT_EQ(rows.at(1).type, 1U);
    EXPECT_EQ(rows.at(12).version, 3U);
    EXPECT_EQ(rows.at(12).type, 7U);
}

TEST(TrapDatabase, RefusesOtherVersionsAndTypesByItself)
{
    const StoreFolder folder;
    auto database = TrapDatabase::open(folder.file(), talvik::TrapStore::kMaxDestinations);

    for (const auto& refused :
         {ofKind(0, 1), ofKind(4, 1), ofKind(1, 0), ofKind(1, 4), ofKind(1, 6), ofKind(1, 8)}) {
        try {
            database->insert(1, refused);
            ADD_FAILURE() << "version " << refused.version << ", type " << refused.type;
        } catch (const SqliteError& error) {
            EXPECT_EQ(error.code(), SQLITE_CONSTRAINT);
        }
    }

    database.reset();
    EXPECT_TRUE(rowsIn(folder).empty());
}

}  // namespace
