#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace brevant::platform::tabular {

/// An owned SQLite connection. Every failure throws a PlatformError numbered
/// ErrorNumber::SqliteBase + the SQLite result code, with source "SQLite" and a message naming
/// the file and what was being done.
class SqliteDatabase {
public:
    enum class Mode { ReadOnly, ReadWrite, Create };

    SqliteDatabase(const std::string& path, Mode mode);

    /// The terms of a connection someone else owns and keeps open (GDAL's, of a GeoPackage):
    /// its errors are numbered as the owner's and its transactions are the owner's, so that
    /// the owner's own bookkeeping of them stays true.
    struct Lender {
        /// Throws the owner's error; `code` is SQLite's result code, `message` says what was
        /// being done and ends with the database's own words.
        std::function<void(int code, const std::string& message)> fail;
        std::function<void()> begin;
        /// Throws when the owner cannot commit.
        std::function<void()> commit;
        /// Never throws.
        std::function<void()> rollback;
    };
    /// Uses `handle` without owning it; `name` stands for the file in messages.
    SqliteDatabase(sqlite3* handle, std::string name, Lender lender);

    /// A prepared statement, owned; bind parameters are one-based as in SQLite.
    class Statement {
    public:
        Statement(SqliteDatabase& db, std::string_view sql);

        Statement& bind(int index, std::string_view value);
        Statement& bind(int index, int64_t value);
        Statement& bind(int index, double value);
        Statement& bindNull(int index);
        /// Binds bytes as a blob, copied.
        Statement& bindBlob(int index, const void* data, std::size_t size);
        /// Steps once: true while a row is available.
        bool step();
        /// As step(); a failure says `doing` ("cannot store row 7 of") before the database.
        bool step(std::string_view doing);
        /// Resets for another run with new bindings.
        void reset();

        int columnCount() const;
        bool isNull(int column) const;
        int64_t int64(int column) const;
        double real(int column) const;
        std::string text(int column) const;

        /// Storage class of a column's value in the current row.
        enum class Storage { Integer, Real, Text, Blob, Null };
        Storage storage(int column) const;
        /// Name of a result column (its alias when the statement gives one).
        std::string columnName(int column) const;
        /// Declared type of the table column a result column reads; empty for expressions.
        std::string declaredType(int column) const;
        /// Table and column a result column reads; empty for expressions.
        std::string sourceTable(int column) const;
        std::string sourceColumn(int column) const;

    private:
        struct Finalizer {
            void operator()(sqlite3_stmt* statement) const;
        };
        SqliteDatabase& m_db;
        std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
    };

    /// Runs one or more statements that return no rows.
    void execute(std::string_view sql);
    /// A transaction from construction to commit(); destroyed uncommitted, it takes back what
    /// was stored since. Inside another transaction it is a savepoint: its commit keeps the
    /// changes for the enclosing one to commit or take back, its rollback takes back its own.
    class Transaction {
    public:
        explicit Transaction(SqliteDatabase& db);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        void commit();

    private:
        SqliteDatabase& m_db;
        bool m_outermost;
        bool m_done = false;
    };

    /// Runs `body` in one transaction: everything it stores is committed, or on any exception
    /// nothing is, and the exception goes on.
    void inTransaction(const std::function<void()>& body);
    const std::string& path() const { return m_path; }
    /// Rows changed since the database was opened, including changes made by triggers.
    int64_t totalChanges() const;
    /// Rows the last statement changed, not counting triggers.
    int64_t changes() const;
    /// Row identifier of the last row inserted through this connection.
    int64_t lastInsertRowid() const;

private:
    friend class Statement;
    [[noreturn]] void fail(int code, std::string_view doing) const;

    struct Closer {
        bool borrowed;
        void operator()(sqlite3* db) const;
    };
    std::string m_path;
    std::unique_ptr<sqlite3, Closer> m_db;
    std::optional<Lender> m_lender;
};

} // namespace brevant::platform::tabular
