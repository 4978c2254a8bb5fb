#include "TabularFixture.h"
#include "platform/tabular/SqliteDatabase.h"

#include <sqlite3.h>
#include <stdexcept>
#include <vector>

namespace brevant::platform::tabular::test {
namespace {

class SqliteTransactionTest : public TabularFixture {
protected:
    void add(SqliteDatabase& db, const std::string& code)
    {
        SqliteDatabase::Statement insert(db, "INSERT INTO RegionUnits (Code) VALUES (?1)");
        insert.bind(1, code).step();
    }
    /// The unit codes as another connection sees them.
    std::string codes() const
    {
        return stored("SELECT group_concat(Code, ',') FROM (SELECT Code FROM RegionUnits "
                      "ORDER BY rowid)")
            .toString();
    }
};

TEST_F(SqliteTransactionTest, OnlyACommittedTransactionKeepsWhatItStored)
{
    SqliteDatabase db(databasePath(), SqliteDatabase::Mode::ReadWrite);
    {
        SqliteDatabase::Transaction transaction(db);
        add(db, "lost");
    }
    {
        SqliteDatabase::Transaction transaction(db);
        add(db, "kept");
        transaction.commit();
    }
    EXPECT_THROW(db.inTransaction([&] {
        add(db, "thrown");
        throw std::runtime_error("the body fails");
    }),
                 std::runtime_error);
    EXPECT_EQ(codes(), "06001,kept");
}

TEST_F(SqliteTransactionTest, ANestedTransactionKeepsOrTakesBackOnlyItsOwnPart)
{
    SqliteDatabase db(databasePath(), SqliteDatabase::Mode::ReadWrite);
    {
        SqliteDatabase::Transaction outer(db);
        add(db, "outer");
        {
            SqliteDatabase::Transaction dropped(db);
            add(db, "dropped");
        }
        db.inTransaction([&] { add(db, "inner"); });
        EXPECT_EQ(codes(), "06001") << "nothing is visible before the outermost commit";
        outer.commit();
    }
    EXPECT_EQ(codes(), "06001,outer,inner");
    {
        SqliteDatabase::Transaction outer(db);
        SqliteDatabase::Transaction inner(db);
        add(db, "undone");
        inner.commit();
    }
    EXPECT_EQ(codes(), "06001,outer,inner") << "the enclosing rollback takes a committed savepoint";
    // Back outside any transaction: another outermost one opens and commits.
    db.inTransaction([&] { add(db, "after"); });
    EXPECT_EQ(codes(), "06001,outer,inner,after");
}

TEST_F(SqliteTransactionTest, ABorrowedConnectionFailsAndTransactsAsItsLenderDoes)
{
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open_v2(databasePath().c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr),
              SQLITE_OK);
    std::vector<std::string> calls;
    SqliteDatabase::Lender lender;
    lender.fail = [&](int code, const std::string& message) {
        calls.push_back("fail " + std::to_string(code));
        throw std::runtime_error(message);
    };
    lender.begin = [&] {
        calls.push_back("begin");
        sqlite3_exec(handle, "BEGIN", nullptr, nullptr, nullptr);
    };
    lender.commit = [&] {
        calls.push_back("commit");
        sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr);
    };
    lender.rollback = [&] {
        calls.push_back("rollback");
        sqlite3_exec(handle, "ROLLBACK", nullptr, nullptr, nullptr);
    };
    {
        SqliteDatabase db(handle, "the units table", lender);
        try {
            SqliteDatabase::Statement(db, "SELECT Code FROM Nowhere");
            ADD_FAILURE() << "a statement on a missing table was prepared";
        } catch (const std::runtime_error& e) {
            EXPECT_TRUE(mentions(e, "cannot prepare \"SELECT Code FROM Nowhere\" on the units "
                                    "table: no such table: Nowhere"))
                << e.what();
        }
        db.execute("CREATE UNIQUE INDEX UnitCode ON RegionUnits (Code)");
        SqliteDatabase::Statement twice(db, "INSERT INTO RegionUnits (Code) VALUES ('06001')");
        try {
            twice.step("cannot add a unit to");
            ADD_FAILURE() << "a duplicate code was stored";
        } catch (const std::runtime_error& e) {
            EXPECT_TRUE(mentions(e, "cannot add a unit to the units table: UNIQUE constraint"))
                << e.what();
        }
        {
            SqliteDatabase::Transaction transaction(db);
            add(db, "lost");
        }
        {
            SqliteDatabase::Transaction transaction(db);
            add(db, "kept");
            transaction.commit();
        }
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"fail 1", "fail 19", "begin", "rollback", "begin",
                                               "commit"}));
    EXPECT_EQ(codes(), "06001,kept");
    EXPECT_EQ(sqlite3_exec(handle, "SELECT 1", nullptr, nullptr, nullptr), SQLITE_OK)
        << "the lender's connection stays open";
    sqlite3_close(handle);
}

} // namespace
} // namespace brevant::platform::tabular::test
