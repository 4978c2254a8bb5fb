#pragma once

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

    /// A prepared statement, owned; bind parameters are one-based as in SQLite.
    class Statement {
    public:
        Statement(SqliteDatabase& db, std::string_view sql);

        Statement& bind(int index, std::string_view value);
        Statement& bind(int index, int64_t value);
        Statement& bind(int index, double value);
        Statement& bindNull(int index);
        /// Steps once: true while a row is available.
        bool step();
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
    /// Runs `body` in one transaction: everything it stores is committed, or on any exception
    /// nothing is, and the exception goes on.
    void inTransaction(const std::function<void()>& body);
    const std::string& path() const { return m_path; }
    /// Rows changed since the database was opened, including changes made by triggers.
    int64_t totalChanges() const;
    /// Row identifier of the last row inserted through this connection.
    int64_t lastInsertRowid() const;

private:
    friend class Statement;
    [[noreturn]] void fail(int code, std::string_view doing) const;

    struct Closer {
        void operator()(sqlite3* db) const;
    };
    std::string m_path;
    std::unique_ptr<sqlite3, Closer> m_db;
};

} // namespace brevant::platform::tabular
