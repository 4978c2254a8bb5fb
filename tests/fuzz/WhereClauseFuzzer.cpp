// Any text either parses or fails with PlatformError; a parsed clause evaluates in process and
// translates into SQL that SQLite can read, so no clause text can break out of its expression.
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/WhereClause.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace {

using brevant::platform::automation::equalsIgnoreCase;
using brevant::platform::automation::PlatformError;
using brevant::platform::automation::Variant;
using brevant::platform::geodatabase::WhereClause;

// One row: a number, a text that reads as a number, a text and a null.
constexpr const char* kFields[] = {"Count", "Code", "Name", "Missing"};

std::optional<std::string> resolve(std::string_view name)
{
    for (const char* field : kFields) {
        if (equalsIgnoreCase(name, field)) {
            return std::string(field);
        }
    }
    return std::nullopt;
}

Variant valueOf(std::string_view name)
{
    if (equalsIgnoreCase(name, "Count")) {
        return Variant(int32_t{5});
    }
    if (equalsIgnoreCase(name, "Code")) {
        return Variant("06001");
    }
    if (equalsIgnoreCase(name, "Name")) {
        return Variant("Oak");
    }
    return Variant::null();
}

sqlite3* table()
{
    static sqlite3* db = [] {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        sqlite3_exec(opened,
                     "CREATE TABLE t (Count INTEGER, Code TEXT, Name TEXT, Missing TEXT);"
                     "INSERT INTO t VALUES (5, '06001', 'Oak', NULL);",
                     nullptr, nullptr, nullptr);
        return opened;
    }();
    return db;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    WhereClause clause;
    try {
        clause = WhereClause::parse(text);
    } catch (const PlatformError&) {
        return 0;
    }
    clause.fieldNames();
    clause.matches(valueOf);
    std::string sql;
    try {
        sql = clause.isEmpty() ? "1" : clause.toSqlite(resolve);
        if (!clause.needsEvaluation()) {
            clause.toOgrSql(resolve);
        }
    } catch (const PlatformError&) {
        return 0; // a field the row lacks
    }
    const std::string query = "SELECT count(*) FROM t WHERE " + sql;
    sqlite3_stmt* statement = nullptr;
    // SQLite may refuse SQL nested beyond its parser's stack with a clear error of its own;
    // any other refusal means the translation is not SQL.
    if (sqlite3_prepare_v2(table(), query.c_str(), -1, &statement, nullptr) != SQLITE_OK &&
        std::string_view(sqlite3_errmsg(table())) != "parser stack overflow") {
        std::fprintf(stderr, "clause %s\ntranslates into SQL SQLite refuses: %s\n%s\n",
                     std::string(text).c_str(), query.c_str(), sqlite3_errmsg(table()));
        std::abort();
    }
    // Running it may still fail for reasons of size (a LIKE pattern too complex); that is fine.
    sqlite3_step(statement);
    sqlite3_finalize(statement);
    return 0;
}
