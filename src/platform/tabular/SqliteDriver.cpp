#include "platform/tabular/SqliteDriver.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <algorithm>
#include <limits>

namespace brevant::platform::tabular {

using automation::Variant;
using automation::VariantType;
using Statement = SqliteDatabase::Statement;

namespace {

bool contains(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

/// SQLite's affinity rules, in their order, with dates and flags told apart.
FieldType typeOfDeclared(std::string_view declared)
{
    const std::string type = automation::toLower(declared);
    if (type.empty()) {
        return FieldType::Variant;
    }
    if (contains(type, "int") || contains(type, "bool") || type == "bit") {
        return FieldType::Integer;
    }
    if (contains(type, "char") || contains(type, "clob") || contains(type, "text")) {
        return FieldType::Text;
    }
    if (contains(type, "blob")) {
        return FieldType::Binary;
    }
    if (contains(type, "date") || contains(type, "time")) {
        return FieldType::Date;
    }
    return FieldType::Double;
}

Variant integerValue(int64_t value)
{
    if (value >= std::numeric_limits<int32_t>::min() &&
        value <= std::numeric_limits<int32_t>::max()) {
        return Variant(static_cast<int32_t>(value));
    }
    return Variant(static_cast<double>(value));
}

/// Date columns keep their values as text; those that read as dates become dates.
Variant textValue(std::string text, FieldType type)
{
    if (type == FieldType::Date && text.size() >= 10 && text[4] == '-' && text[7] == '-') {
        try {
            return Variant(automation::Date::parse(text));
        } catch (const automation::AutomationError&) {
            // Not a date after all: the text is the value.
        }
    }
    return Variant(std::move(text));
}

Variant readValue(const Statement& statement, int column, FieldType type)
{
    switch (statement.storage(column)) {
    case Statement::Storage::Null:
        return Variant::null();
    case Statement::Storage::Integer:
        return integerValue(statement.int64(column));
    case Statement::Storage::Real:
        return Variant(statement.real(column));
    case Statement::Storage::Text:
    case Statement::Storage::Blob:
        break;
    }
    return textValue(statement.text(column), type);
}

/// A column without a declared type takes the type its values share.
FieldType typeOfValues(const std::vector<std::vector<Variant>>& rows, std::size_t column)
{
    bool integers = false;
    bool reals = false;
    bool texts = false;
    for (const auto& row : rows) {
        switch (row[column].type()) {
        case VariantType::Int32:
            integers = true;
            break;
        case VariantType::Double:
            reals = true;
            break;
        case VariantType::String:
            texts = true;
            break;
        default:
            break;
        }
    }
    if (texts) {
        return integers || reals ? FieldType::Variant : FieldType::Text;
    }
    if (reals) {
        return FieldType::Double;
    }
    return integers ? FieldType::Integer : FieldType::Variant;
}

} // namespace

SqliteDriver::SqliteDriver(const std::string& path) : m_db(path, SqliteDatabase::Mode::ReadWrite)
{
}

int64_t SqliteDriver::execute(std::string_view sql)
{
    const int64_t before = m_db.totalChanges();
    m_db.execute(sql);
    return m_db.totalChanges() - before;
}

QueryResult SqliteDriver::query(std::string_view sql)
{
    Statement statement(m_db, sql);
    QueryResult result;
    const int count = statement.columnCount();
    for (int c = 0; c < count; ++c) {
        std::string declared = statement.declaredType(c);
        const FieldType type = typeOfDeclared(declared);
        result.columns.push_back({.name = statement.columnName(c),
                                  .declaredType = std::move(declared),
                                  .type = type,
                                  .sourceTable = statement.sourceTable(c),
                                  .sourceColumn = statement.sourceColumn(c)});
    }
    while (statement.step()) {
        std::vector<Variant> row;
        row.reserve(count);
        for (int c = 0; c < count; ++c) {
            row.push_back(readValue(statement, c, result.columns[c].type));
        }
        result.rows.push_back(std::move(row));
    }
    for (std::size_t c = 0; c < result.columns.size(); ++c) {
        if (result.columns[c].declaredType.empty()) {
            result.columns[c].type = typeOfValues(result.rows, c);
        }
    }
    return result;
}

std::vector<std::string> SqliteDriver::tableNames()
{
    Statement statement(m_db, "SELECT name FROM sqlite_schema WHERE type IN ('table', 'view') "
                              "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid");
    std::vector<std::string> names;
    while (statement.step()) {
        names.push_back(statement.text(0));
    }
    return names;
}

std::optional<TableInfo> SqliteDriver::tableInfo(std::string_view name)
{
    Statement find(m_db, "SELECT name, type, wr FROM pragma_table_list "
                         "WHERE schema = 'main' AND type IN ('table', 'view') "
                         "AND name = ?1 COLLATE NOCASE");
    find.bind(1, name);
    if (!find.step()) {
        return std::nullopt;
    }
    TableInfo info;
    info.name = find.text(0);
    info.kind = find.text(1) == "view" ? TableInfo::Kind::View : TableInfo::Kind::Table;
    const bool hasRowId = info.kind == TableInfo::Kind::Table && find.int64(2) == 0;

    Statement columns(m_db, "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?1)");
    columns.bind(1, info.name);
    std::vector<std::pair<int, std::string>> key;
    while (columns.step()) {
        ColumnInfo column{.name = columns.text(0),
                          .declaredType = columns.text(1),
                          .type = typeOfDeclared(columns.text(1)),
                          .notNull = columns.int64(2) != 0,
                          .primaryKeyPosition = static_cast<int>(columns.int64(3))};
        if (column.primaryKeyPosition > 0) {
            key.emplace_back(column.primaryKeyPosition, column.name);
        }
        info.columns.push_back(std::move(column));
    }
    std::sort(key.begin(), key.end());
    for (auto& part : key) {
        info.primaryKey.push_back(std::move(part.second));
    }
    if (hasRowId) {
        // Only a key of one column declared exactly INTEGER is the rowid under another name.
        if (key.size() == 1) {
            ColumnInfo* column = nullptr;
            for (auto& c : info.columns) {
                if (c.primaryKeyPosition == 1) {
                    column = &c;
                }
            }
            column->rowIdAlias = automation::equalsIgnoreCase(column->declaredType, "INTEGER");
        }
        // A column may take one of the rowid's names; the next name then still reaches it.
        for (const char* rowId : {"rowid", "_rowid_", "oid"}) {
            if (!info.column(rowId)) {
                info.rowIdColumn = rowId;
                break;
            }
        }
    }
    return info;
}

std::string SqliteDriver::quoteIdentifier(std::string_view name) const
{
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"') {
            quoted += '"';
        }
    }
    return quoted + '"';
}

void SqliteDriver::bind(Statement& statement, int index, const Variant& value,
                        const TableInfo& table, const std::string& column) const
{
    switch (value.type()) {
    case VariantType::Empty:
    case VariantType::Null:
        statement.bindNull(index);
        return;
    case VariantType::Boolean:
    case VariantType::Int16:
    case VariantType::Int32:
        // True is stored as -1, as the automation conversions make it.
        statement.bind(index, static_cast<int64_t>(value.toInt32()));
        return;
    case VariantType::Double:
        statement.bind(index, value.toDouble());
        return;
    case VariantType::String:
        statement.bind(index, value.toString());
        return;
    case VariantType::Date:
        statement.bind(index, value.toDate().toString());
        return;
    default:
        throw automation::PlatformError(automation::ErrorNumber::TypeMismatch, "SQLite",
                                        "cannot store a value of type " + value.typeName() +
                                            " in column " + column + " of " + table.name + " in " +
                                            m_db.path());
    }
}

std::optional<int64_t> SqliteDriver::insertRow(const TableInfo& table,
                                               std::span<const std::string> columns,
                                               std::span<const Variant> values)
{
    std::string sql = "INSERT INTO " + quoteIdentifier(table.name);
    if (columns.empty()) {
        sql += " DEFAULT VALUES";
    } else {
        std::string names;
        std::string parameters;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            names += (i ? ", " : "") + quoteIdentifier(columns[i]);
            parameters += (i ? ", ?" : "?") + std::to_string(i + 1);
        }
        sql += " (" + names + ") VALUES (" + parameters + ")";
    }
    Statement statement(m_db, sql);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        bind(statement, static_cast<int>(i + 1), values[i], table, columns[i]);
    }
    statement.step();
    if (table.rowIdColumn.empty()) {
        return std::nullopt;
    }
    return m_db.lastInsertRowid();
}

int64_t SqliteDriver::updateRow(const TableInfo& table, std::span<const std::string> keyColumns,
                                std::span<const Variant> keyValues,
                                std::span<const std::string> columns,
                                std::span<const Variant> values)
{
    if (columns.empty()) {
        return 0;
    }
    std::string sql = "UPDATE " + quoteIdentifier(table.name) + " SET ";
    int parameter = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        sql += (i ? ", " : "") + quoteIdentifier(columns[i]) + " = ?" + std::to_string(++parameter);
    }
    // IS matches a Null key too, which SQLite allows outside integer keys.
    for (std::size_t i = 0; i < keyColumns.size(); ++i) {
        sql += (i ? " AND " : " WHERE ") + quoteIdentifier(keyColumns[i]) + " IS ?" +
               std::to_string(++parameter);
    }
    Statement statement(m_db, sql);
    parameter = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        bind(statement, ++parameter, values[i], table, columns[i]);
    }
    for (std::size_t i = 0; i < keyColumns.size(); ++i) {
        bind(statement, ++parameter, keyValues[i], table, keyColumns[i]);
    }
    const int64_t before = m_db.totalChanges();
    statement.step();
    return m_db.totalChanges() - before;
}

void SqliteDriver::beginWrites()
{
    m_db.execute("SAVEPOINT tabular_writes");
}

void SqliteDriver::commitWrites()
{
    m_db.execute("RELEASE tabular_writes");
}

} // namespace brevant::platform::tabular
