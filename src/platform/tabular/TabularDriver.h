#pragma once

#include "platform/automation/Variant.h"
#include "platform/tabular/QueryResult.h"
#include "platform/tabular/TableInfo.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::tabular {

/// One open database behind a Connection. Each kind of database (the embedded SQLite file now,
/// a database server later) implements this; the scheme of the connection string chooses the
/// driver. Every failure throws a PlatformError whose message names the database and the
/// statement.
class TabularDriver {
public:
    virtual ~TabularDriver() = default;

    /// Opens the database a connection string names ("sqlite:" + path). Throws PlatformError
    /// TabularError::UnknownProvider naming the connection string when no driver serves its
    /// scheme, and the driver's error when the database cannot be opened; a missing database
    /// is never created.
    static std::unique_ptr<TabularDriver>
    open(const std::string& connectionString, const std::string& user, const std::string& password);

    /// Name of the database for messages (the file of an embedded database).
    virtual const std::string& databaseName() const = 0;

    /// Runs one or more statements; returns the rows they changed.
    virtual int64_t execute(std::string_view sql) = 0;
    /// Runs a statement and reads every row it returns.
    virtual QueryResult query(std::string_view sql) = 0;

    /// Names of the tables and views, in the database's order.
    virtual std::vector<std::string> tableNames() = 0;
    /// The table or view of that name (without regard to case), or nothing.
    virtual std::optional<TableInfo> tableInfo(std::string_view name) = 0;
    /// The name quoted for this database's SQL.
    virtual std::string quoteIdentifier(std::string_view name) const = 0;

    /// Inserts a row with the given column values (the others take their defaults); returns
    /// the new row's identifier when the table keeps one.
    virtual std::optional<int64_t> insertRow(const TableInfo& table,
                                             std::span<const std::string> columns,
                                             std::span<const automation::Variant> values) = 0;
    /// Sets columns of the rows whose key columns hold the key values (Null matches Null);
    /// returns the rows changed.
    virtual int64_t updateRow(const TableInfo& table, std::span<const std::string> keyColumns,
                              std::span<const automation::Variant> keyValues,
                              std::span<const std::string> columns,
                              std::span<const automation::Variant> values) = 0;

    /// Groups the writes that follow until commitWrites; groups may nest. What was written
    /// before a failure inside a group is kept when the group is committed.
    virtual void beginWrites() = 0;
    virtual void commitWrites() = 0;
};

} // namespace brevant::platform::tabular
