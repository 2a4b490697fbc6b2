#include "host/platform/sqlite_database.h"

#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

namespace {

using talvik::SqliteDatabase;
using talvik::SqliteError;
using talvik::SqliteStatement;
using talvik::SqliteTransaction;
using testing::HasSubstr;

class SqliteDatabaseTest : public testing::Test {
protected:
    SqliteDatabaseTest() { database.run("CREATE TABLE t(id INTEGER PRIMARY KEY, name TEXT)"); }

    std::int64_t rows() { return database.number("SELECT count(*) FROM t"); }

    talvik::test::TempDir dir;
    const std::string file = dir.write("test.db", "");
    SqliteDatabase database{file, 0};
};

TEST_F(SqliteDatabaseTest, ATransactionThatIsNotCommittedIsUndone)
{
    {
        const SqliteTransaction transaction(database);
        database.run("INSERT INTO t VALUES(1, 'a')");
    }
    EXPECT_EQ(rows(), 0);

    SqliteTransaction next(database);
    database.run("INSERT INTO t VALUES(2, 'b')");
    next.commit();
    EXPECT_EQ(rows(), 1);
}

TEST_F(SqliteDatabaseTest, AStatementRunsAgainAfterItFailed)
{
    SqliteStatement insert(database, "INSERT INTO t VALUES(?1, ?2)");
    const std::string name("a\0b", 3);
    insert.bind(1, std::int64_t{1});
    insert.bind(2, name);
    EXPECT_FALSE(insert.step());
    EXPECT_EQ(database.changes(), 1);

    try {
        insert.step();
        FAIL() << "the key was there already";
    } catch (const SqliteError& error) {
        EXPECT_EQ(error.code(), SQLITE_CONSTRAINT);
        EXPECT_THAT(error.what(), HasSubstr("UNIQUE constraint failed: t.id"));
        EXPECT_FALSE(error.meansDamage());
    }

    insert.bind(1, std::int64_t{2});
    EXPECT_FALSE(insert.step());
    EXPECT_EQ(rows(), 2);
    EXPECT_EQ(database.text("SELECT name FROM t WHERE id = 2"), name);
}

TEST_F(SqliteDatabaseTest, AMissingFileIsNotMade)
{
    try {
        const SqliteDatabase missing(dir.path("missing.db"), 0);
        FAIL() << "it was opened";
    } catch (const SqliteError& error) {
        EXPECT_EQ(error.code(), SQLITE_CANTOPEN);
        EXPECT_THAT(error.what(), HasSubstr("No such file or directory"));
    }
}

TEST_F(SqliteDatabaseTest, AnotherConnectionsLockIsAFailure)
{
    SqliteDatabase other(file, 0);
    const SqliteTransaction transaction(other);

    try {
        const SqliteTransaction second(database);
        FAIL() << "both write";
    } catch (const SqliteError& error) {
        EXPECT_EQ(error.code(), SQLITE_BUSY);
    }
}

TEST_F(SqliteDatabaseTest, TriggersOfTheFileAreNotRun)
{
    database.run("CREATE TRIGGER more AFTER INSERT ON t BEGIN DELETE FROM t; END");

    database.run("INSERT INTO t VALUES(1, 'a')");

    EXPECT_EQ(rows(), 1);
}

}  // namespace
