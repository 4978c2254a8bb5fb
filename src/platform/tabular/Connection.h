#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/tabular/Recordset.h"
#include "platform/tabular/TableInfo.h"
#include "platform/tabular/TabularDriver.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::tabular {

/// An open connection to the region's tabular database, named by a connection string whose
/// scheme chooses the driver ("sqlite:" + path for the embedded database). It runs text
/// commands and opens static recordsets; it travels in a Variant as "Connection". Failures
/// throw automation::PlatformError with a message naming the database and the statement.
class Connection : public automation::AutomationObject {
    struct Key {
        explicit Key() = default;
    };

public:
    /// Opens the database of a connection string. The user name and password are handed to
    /// drivers that check them. Throws TabularError::UnknownProvider naming the connection
    /// string for an unknown scheme, and the driver's error (naming the file) when the
    /// database cannot be opened; a missing database is not created.
    static std::shared_ptr<Connection> connect(const std::string& connectionString,
                                               const std::string& user = {},
                                               const std::string& password = {});
    /// A connection over an open driver (not null) chosen elsewhere.
    static std::shared_ptr<Connection> connect(std::unique_ptr<TabularDriver> driver,
                                               std::string connectionString);

    Connection(Key, std::unique_ptr<TabularDriver> driver, std::string connectionString);

    std::string_view className() const override { return "Connection"; }

    const std::string& connectionString() const { return m_connectionString; }
    /// Name of the database for messages (the file of an embedded database).
    const std::string& databaseName() const { return m_databaseName; }
    bool isOpen() const { return m_driver != nullptr; }
    /// Closes the database. Recordsets already read keep their records; writing them back
    /// through this connection then fails with TabularError::ObjectClosed.
    void close();

    /// Runs one or more text commands that return no rows; returns the rows they changed.
    /// Statements before a failing one stay done.
    int64_t execute(std::string_view sql);

    /// Opens a static recordset over a text command, or over a whole table or view when the
    /// source is a plain name ("hztract", "[hztract]"). An editable recordset (Optimistic or
    /// BatchOptimistic) must read columns of one table only, including its primary key,
    /// unless it is opened by the table's name. Throws the database's error naming the
    /// statement, TabularError::NotUpdatable when the recordset cannot be editable, and
    /// TabularError::ObjectClosed after close.
    std::shared_ptr<Recordset> open(std::string_view source,
                                    Recordset::LockType lock = Recordset::LockType::ReadOnly);

    /// Names of the tables and views, for another layer that presents them as tables.
    std::vector<std::string> tableNames();
    /// The table or view of that name (without regard to case): columns, declared types,
    /// primary key and row identifier; nothing when there is none.
    std::optional<TableInfo> tableInfo(std::string_view name);
    /// A name quoted for this database's SQL.
    std::string quoteIdentifier(std::string_view name) const;

private:
    friend class Recordset;
    /// The driver; throws TabularError::ObjectClosed when the connection is closed.
    TabularDriver& driver() const;

    std::unique_ptr<TabularDriver> m_driver;
    std::string m_databaseName;
    std::string m_connectionString;
};

} // namespace brevant::platform::tabular
