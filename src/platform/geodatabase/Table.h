#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/Row.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brevant::platform::geodatabase {

class Cursor;
class InsertCursor;
class Workspace;
struct WorkspaceData;
struct TableData;

/// A table of a workspace, with its fields in the library's order (OBJECTID first). Feature
/// classes are tables with shapes (see FeatureClass). Failures throw PlatformError naming
/// the table and its database.
class Table : public automation::AutomationObject {
public:
    Table(std::shared_ptr<WorkspaceData> workspace, std::shared_ptr<TableData> data);
    ~Table() override;

    std::string_view className() const override { return "Table"; }

    const std::string& name() const;
    /// The name shown to users (the table name when none is stored).
    const std::string& aliasName() const;
    const Fields& fields() const;
    std::shared_ptr<const Fields> sharedFields() const;
    /// Index of a field by name without regard to case; -1 when missing.
    int findField(std::string_view name) const;
    bool hasShape() const;
    Workspace workspace() const;

    /// Adds a field at the end; throws when a field of that name exists.
    void addField(const Field& field);

    /// Number of rows the filter lets through, counting no further than `upTo` when it is not
    /// negative: rowCount({}, 1) tells whether a table of a million rows has any without
    /// reading them all.
    int64_t rowCount(const QueryFilter& filter = {}, int64_t upTo = -1) const;
    /// A cursor over the rows the filter lets through, in identifier order.
    Cursor search(const QueryFilter& filter = {}) const;
    /// The same cursor, allowed to update and delete the rows it hands out.
    Cursor update(const QueryFilter& filter = {});
    /// How an insert cursor keeps a spatial index. `Bulk` is for many rows at once: on a
    /// GeoPackage the index is rebuilt once when the cursor is flushed instead of growing row
    /// by row, and rows and index are stored in one transaction. Worth it only when the rows to
    /// come are at least as many as those already stored.
    enum class InsertMode { RowByRow, Bulk };
    /// A cursor that adds rows.
    InsertCursor insert(InsertMode mode = InsertMode::RowByRow);
    /// Deletes the rows the filter lets through; returns how many. On a GeoPackage or SQLite
    /// database without a spatial filter it deletes all of them or, on a failure, none; other
    /// storage deletes row by row and keeps what was deleted before a failure.
    int64_t deleteSearchedRows(const QueryFilter& filter = {});
    /// Sets field `index` to `value` in the rows the filter lets through, as an update cursor
    /// would row by row (one statement where the storage allows); returns how many.
    int64_t calculate(int index, const automation::Variant& value, const QueryFilter& filter = {});
    /// A new, unsaved row with this table's fields.
    Row createRow() const;
    /// The row with an identifier, or nullopt.
    std::optional<Row> row(int64_t oid) const;

    /// For the storage code.
    TableData& data() const { return *m_data; }
    const std::shared_ptr<WorkspaceData>& workspaceData() const { return m_workspace; }

private:
    std::shared_ptr<WorkspaceData> m_workspace;
    std::shared_ptr<TableData> m_data;
};

} // namespace brevant::platform::geodatabase
