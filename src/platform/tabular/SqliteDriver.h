#pragma once

#include "platform/tabular/SqliteDatabase.h"
#include "platform/tabular/TabularDriver.h"

namespace brevant::platform::tabular {

/// The embedded tabular database: one SQLite file. Column types follow SQLite's affinity
/// rules, with DATE and TIME columns read as dates when their text is a date; row identifiers
/// are SQLite's rowid. Failures are PlatformErrors numbered ErrorNumber::SqliteBase + the
/// SQLite code.
class SqliteDriver final : public TabularDriver {
public:
    /// Opens an existing file for reading and writing; a missing file is an error naming it
    /// and is not created.
    explicit SqliteDriver(const std::string& path);

    const std::string& databaseName() const override { return m_db.path(); }
    int64_t execute(std::string_view sql) override;
    QueryResult query(std::string_view sql) override;
    std::vector<std::string> tableNames() override;
    std::optional<TableInfo> tableInfo(std::string_view name) override;
    std::string quoteIdentifier(std::string_view name) const override;
    std::optional<int64_t> insertRow(const TableInfo& table, std::span<const std::string> columns,
                                     std::span<const automation::Variant> values) override;
    int64_t updateRow(const TableInfo& table, std::span<const std::string> keyColumns,
                      std::span<const automation::Variant> keyValues,
                      std::span<const std::string> columns,
                      std::span<const automation::Variant> values) override;
    void beginWrites() override;
    void commitWrites() override;

private:
    void bind(SqliteDatabase::Statement& statement, int index, const automation::Variant& value,
              const TableInfo& table, const std::string& column) const;

    SqliteDatabase m_db;
};

} // namespace brevant::platform::tabular
