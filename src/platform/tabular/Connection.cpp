#include "platform/tabular/Connection.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/PlatformError.h"
#include "platform/tabular/TabularErrors.h"

#include <algorithm>
#include <cctype>

namespace brevant::platform::tabular {

using automation::PlatformError;

namespace {

constexpr const char* kSource = "Connection";

/// The table name when the source is a plain or bracketed name rather than a command.
std::optional<std::string> plainName(std::string_view source)
{
    while (!source.empty() && std::isspace(static_cast<unsigned char>(source.front()))) {
        source.remove_prefix(1);
    }
    while (!source.empty() && std::isspace(static_cast<unsigned char>(source.back()))) {
        source.remove_suffix(1);
    }
    if (source.size() > 2 && source.front() == '[' && source.back() == ']') {
        source = source.substr(1, source.size() - 2);
        if (source.find(']') == std::string_view::npos) {
            return std::string(source);
        }
        return std::nullopt;
    }
    if (source.empty() || std::isdigit(static_cast<unsigned char>(source.front()))) {
        return std::nullopt;
    }
    for (const char c : source) {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') {
            return std::nullopt;
        }
    }
    return std::string(source);
}

/// Position of a column among the columns a recordset writes, compared without regard to case.
std::optional<int> positionOf(const std::vector<std::string>& columns, std::string_view name)
{
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const std::string& c) {
        return automation::equalsIgnoreCase(c, name);
    });
    if (found == columns.end()) {
        return std::nullopt;
    }
    return static_cast<int>(found - columns.begin());
}

} // namespace

std::shared_ptr<Connection> Connection::connect(const std::string& connectionString,
                                                const std::string& user,
                                                const std::string& password)
{
    return connect(TabularDriver::open(connectionString, user, password), connectionString);
}

std::shared_ptr<Connection> Connection::connect(std::unique_ptr<TabularDriver> driver,
                                                std::string connectionString)
{
    return std::make_shared<Connection>(Key{}, std::move(driver), std::move(connectionString));
}

Connection::Connection(Key, std::unique_ptr<TabularDriver> driver, std::string connectionString)
    : m_driver(std::move(driver)), m_databaseName(m_driver->databaseName()),
      m_connectionString(std::move(connectionString))
{
}

void Connection::close()
{
    m_driver.reset();
}

TabularDriver& Connection::driver() const
{
    if (!m_driver) {
        throw PlatformError(TabularError::ObjectClosed, kSource,
                            "the connection to " + m_databaseName + " is closed");
    }
    return *m_driver;
}

int64_t Connection::execute(std::string_view sql)
{
    return driver().execute(sql);
}

std::vector<std::string> Connection::tableNames()
{
    return driver().tableNames();
}

std::optional<TableInfo> Connection::tableInfo(std::string_view name)
{
    return driver().tableInfo(name);
}

std::string Connection::quoteIdentifier(std::string_view name) const
{
    return driver().quoteIdentifier(name);
}

std::shared_ptr<Recordset> Connection::open(std::string_view source, Recordset::LockType lock)
{
    TabularDriver& db = driver();
    const std::string text(source);
    const bool editable = lock != Recordset::LockType::ReadOnly;
    auto notUpdatable = [&](const std::string& why) {
        return PlatformError(TabularError::NotUpdatable, kSource,
                             "cannot open \"" + text + "\" in " + m_databaseName +
                                 " for editing: " + why);
    };
    auto self = std::static_pointer_cast<Connection>(shared_from_this());

    if (const auto name = plainName(source)) {
        auto table = db.tableInfo(*name);
        if (!table) {
            throw PlatformError(TabularError::TableNotFound, kSource,
                                "cannot open \"" + text + "\" in " + m_databaseName +
                                    ": there is no table or view of that name");
        }
        bool rowIdFirst = false;
        if (editable) {
            if (table->kind == TableInfo::Kind::View) {
                throw notUpdatable("it is a view");
            }
            if (table->primaryKey.empty()) {
                if (table->rowIdColumn.empty()) {
                    throw notUpdatable("table " + table->name + " has no primary key");
                }
                rowIdFirst = true;
            }
        }
        const std::string sql =
            "SELECT " +
            (rowIdFirst ? db.quoteIdentifier(table->rowIdColumn) + ", " : std::string()) +
            "* FROM " + db.quoteIdentifier(table->name);
        QueryResult result = db.query(sql);
        std::optional<Recordset::WriteTarget> target;
        if (editable) {
            target.emplace();
            for (std::size_t c = rowIdFirst ? 1 : 0; c < result.columns.size(); ++c) {
                target->columns.push_back(result.columns[c].name);
            }
            if (rowIdFirst) {
                target->keyColumns = {table->rowIdColumn};
            } else {
                // Every column is read, so the key is too.
                target->keyColumns = table->primaryKey;
                for (const auto& key : table->primaryKey) {
                    target->keyFields.push_back(*positionOf(target->columns, key));
                }
            }
            target->table = std::move(*table);
        }
        return std::make_shared<Recordset>(Recordset::Key{}, text, lock, std::move(result),
                                           std::move(target), std::move(self));
    }

    QueryResult result = db.query(source);
    if (!editable) {
        return std::make_shared<Recordset>(Recordset::Key{}, text, lock, std::move(result),
                                           std::nullopt, std::move(self));
    }
    if (result.columns.empty()) {
        throw notUpdatable("it returns no columns");
    }
    std::string tableName;
    for (const auto& column : result.columns) {
        if (column.sourceTable.empty()) {
            throw notUpdatable("field " + column.name + " is not a column of a table");
        }
        if (tableName.empty()) {
            tableName = column.sourceTable;
        } else if (!automation::equalsIgnoreCase(tableName, column.sourceTable)) {
            throw notUpdatable("its fields come from more than one table (" + tableName + " and " +
                               column.sourceTable + ")");
        }
    }
    auto table = db.tableInfo(tableName);
    if (!table || table->primaryKey.empty()) {
        throw notUpdatable("table " + tableName +
                           " has no primary key; open the table by its name to edit it");
    }
    Recordset::WriteTarget target;
    target.keyColumns = table->primaryKey;
    for (const auto& column : result.columns) {
        target.columns.push_back(column.sourceColumn);
    }
    for (const auto& key : table->primaryKey) {
        const auto position = positionOf(target.columns, key);
        if (!position) {
            throw notUpdatable("it does not read " + key + " of the primary key of " + table->name);
        }
        target.keyFields.push_back(*position);
    }
    target.table = std::move(*table);
    return std::make_shared<Recordset>(Recordset::Key{}, text, lock, std::move(result),
                                       std::move(target), std::move(self));
}

} // namespace brevant::platform::tabular
