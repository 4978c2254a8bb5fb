#include "platform/tabular/SqliteDatabase.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <sqlite3.h>

namespace brevant::platform::tabular {

using automation::PlatformError;
using automation::ErrorNumber::SqliteBase;

void SqliteDatabase::Closer::operator()(sqlite3* db) const
{
    if (!borrowed) {
        sqlite3_close_v2(db);
    }
}

void SqliteDatabase::Statement::Finalizer::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

SqliteDatabase::SqliteDatabase(const std::string& path, Mode mode)
    : m_path(path), m_db(nullptr, Closer{false})
{
    int flags = SQLITE_OPEN_FULLMUTEX;
    switch (mode) {
    case Mode::ReadOnly:
        flags |= SQLITE_OPEN_READONLY;
        break;
    case Mode::ReadWrite:
        flags |= SQLITE_OPEN_READWRITE;
        break;
    case Mode::Create:
        flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        break;
    }
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
    m_db.reset(raw);
    if (rc != SQLITE_OK) {
        fail(rc, "cannot open database");
    }
    sqlite3_busy_timeout(raw, 5000);
}

SqliteDatabase::SqliteDatabase(sqlite3* handle, std::string name, Lender lender)
    : m_path(std::move(name)), m_db(handle, Closer{true}), m_lender(std::move(lender))
{
}

void SqliteDatabase::fail(int code, std::string_view doing) const
{
    std::string message = std::string(doing) + " " + m_path + ": ";
    message += m_db ? sqlite3_errmsg(m_db.get()) : sqlite3_errstr(code);
    if (m_lender) {
        m_lender->fail(code, message);
    }
    throw PlatformError(SqliteBase + (code & 0xff), "SQLite", message);
}

void SqliteDatabase::execute(std::string_view sql)
{
    char* error = nullptr;
    const std::string text(sql);
    const int rc = sqlite3_exec(m_db.get(), text.c_str(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        std::string message = error ? error : sqlite3_errstr(rc);
        sqlite3_free(error);
        throw PlatformError(SqliteBase + (rc & 0xff), "SQLite",
                            "cannot run \"" + text + "\" on " + m_path + ": " + message);
    }
}

SqliteDatabase::Statement::Statement(SqliteDatabase& db, std::string_view sql) : m_db(db)
{
    sqlite3_stmt* raw = nullptr;
    const int rc =
        sqlite3_prepare_v2(db.m_db.get(), sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    m_statement.reset(raw);
    if (rc != SQLITE_OK) {
        db.fail(rc, "cannot prepare \"" + std::string(sql) + "\" on");
    }
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bind(int index, std::string_view value)
{
    sqlite3_bind_text(m_statement.get(), index, value.data(), static_cast<int>(value.size()),
                      SQLITE_TRANSIENT);
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bind(int index, int64_t value)
{
    sqlite3_bind_int64(m_statement.get(), index, value);
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bind(int index, double value)
{
    sqlite3_bind_double(m_statement.get(), index, value);
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindNull(int index)
{
    sqlite3_bind_null(m_statement.get(), index);
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindBlob(int index, const void* data,
                                                               std::size_t size)
{
    sqlite3_bind_blob64(m_statement.get(), index, data, size, SQLITE_TRANSIENT);
    return *this;
}

bool SqliteDatabase::Statement::step()
{
    return step("cannot run \"" + std::string(sqlite3_sql(m_statement.get())) + "\" on");
}

bool SqliteDatabase::Statement::step(std::string_view doing)
{
    const int rc = sqlite3_step(m_statement.get());
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc == SQLITE_DONE) {
        return false;
    }
    m_db.fail(rc, doing);
}

void SqliteDatabase::Statement::reset()
{
    sqlite3_reset(m_statement.get());
    sqlite3_clear_bindings(m_statement.get());
}

int SqliteDatabase::Statement::columnCount() const
{
    return sqlite3_column_count(m_statement.get());
}

bool SqliteDatabase::Statement::isNull(int column) const
{
    return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL;
}

int64_t SqliteDatabase::Statement::int64(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

double SqliteDatabase::Statement::real(int column) const
{
    return sqlite3_column_double(m_statement.get(), column);
}

std::string SqliteDatabase::Statement::text(int column) const
{
    const auto* value = sqlite3_column_text(m_statement.get(), column);
    return value ? std::string(reinterpret_cast<const char*>(value)) : std::string();
}

SqliteDatabase::Statement::Storage SqliteDatabase::Statement::storage(int column) const
{
    switch (sqlite3_column_type(m_statement.get(), column)) {
    case SQLITE_INTEGER:
        return Storage::Integer;
    case SQLITE_FLOAT:
        return Storage::Real;
    case SQLITE_TEXT:
        return Storage::Text;
    case SQLITE_BLOB:
        return Storage::Blob;
    default:
        return Storage::Null;
    }
}

namespace {
std::string orEmpty(const char* text)
{
    return text ? std::string(text) : std::string();
}
} // namespace

std::string SqliteDatabase::Statement::columnName(int column) const
{
    return orEmpty(sqlite3_column_name(m_statement.get(), column));
}

std::string SqliteDatabase::Statement::declaredType(int column) const
{
    return orEmpty(sqlite3_column_decltype(m_statement.get(), column));
}

std::string SqliteDatabase::Statement::sourceTable(int column) const
{
    return orEmpty(sqlite3_column_table_name(m_statement.get(), column));
}

std::string SqliteDatabase::Statement::sourceColumn(int column) const
{
    return orEmpty(sqlite3_column_origin_name(m_statement.get(), column));
}

int64_t SqliteDatabase::totalChanges() const
{
    return sqlite3_total_changes64(m_db.get());
}

int64_t SqliteDatabase::changes() const
{
    return sqlite3_changes64(m_db.get());
}

int64_t SqliteDatabase::lastInsertRowid() const
{
    return sqlite3_last_insert_rowid(m_db.get());
}

namespace {
// One name serves every level: SQLite releases and rolls back to the innermost of a name.
constexpr const char* kSavepoint = "brevant_nested";
} // namespace

SqliteDatabase::Transaction::Transaction(SqliteDatabase& db)
    : m_db(db), m_outermost(sqlite3_get_autocommit(db.m_db.get()) != 0)
{
    if (!m_outermost) {
        db.execute(std::string("SAVEPOINT ") + kSavepoint);
    } else if (db.m_lender) {
        db.m_lender->begin();
    } else {
        db.execute("BEGIN");
    }
}

void SqliteDatabase::Transaction::commit()
{
    if (!m_outermost) {
        m_db.execute(std::string("RELEASE ") + kSavepoint);
    } else if (m_db.m_lender) {
        m_db.m_lender->commit();
    } else {
        m_db.execute("COMMIT");
    }
    m_done = true;
}

SqliteDatabase::Transaction::~Transaction()
{
    if (m_done) {
        return;
    }
    if (m_outermost && m_db.m_lender) {
        m_db.m_lender->rollback();
        return;
    }
    // Some failures (a full disk among them) end the transaction on their own; there is then
    // nothing left to take back.
    if (sqlite3_get_autocommit(m_db.m_db.get())) {
        return;
    }
    const std::string sql =
        m_outermost ? std::string("ROLLBACK")
                    : std::string("ROLLBACK TO ") + kSavepoint + "; RELEASE " + kSavepoint;
    sqlite3_exec(m_db.m_db.get(), sql.c_str(), nullptr, nullptr, nullptr);
}

void SqliteDatabase::inTransaction(const std::function<void()>& body)
{
    Transaction transaction(*this);
    body();
    transaction.commit();
}

} // namespace brevant::platform::tabular
