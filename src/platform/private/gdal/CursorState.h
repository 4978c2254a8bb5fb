#pragma once

// Private to the geodatabase layer: the state of an open cursor and the helpers that read rows.

#include "gdal/GdalSupport.h"
#include "gdal/SpatialIndexDeferral.h"
#include "gdal/StorageData.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/Row.h"
#include "platform/geodatabase/WhereClause.h"

#include <memory>
#include <optional>
#include <vector>

namespace brevant::platform::geodatabase {

struct CursorState {
    std::shared_ptr<WorkspaceData> workspace;
    std::shared_ptr<TableData> table;
    /// The rows being read: a result set of the dataset, released with the cursor.
    gdal::ResultSet result;
    /// Per field: the attribute index in the result set (-1 for identifier and shape).
    std::vector<int> resultIndex;
    /// A clause the storage cannot evaluate exactly, tested row by row.
    std::optional<WhereClause> evaluate;
    geometry::Geometry spatial;
    bool updatable = false;
    bool wrote = false;
    /// Only some attribute fields were read: a row can be stored only through the attribute
    /// update, which writes the changed fields alone.
    bool partial = false;
    /// The rows ran out: a flush now ends the walk's work, and commits it.
    bool exhausted = false;
    /// The attribute update statement of the last set of changed fields, and the connection it
    /// runs on.
    std::unique_ptr<tabular::SqliteDatabase> connection;
    std::optional<tabular::SqliteDatabase::Statement> attributeUpdate;
    std::vector<bool> attributeUpdateFields;
    /// The workspace's transaction count when this cursor last left out the index triggers.
    std::optional<uint64_t> triggersLeftOutIn;
    /// An insert cursor's spatial index, built once when the cursor is flushed.
    std::unique_ptr<SpatialIndexDeferral> spatialIndex;

    CursorState() = default;
    CursorState(const CursorState&) = delete;
    CursorState& operator=(const CursorState&) = delete;
    ~CursorState();

    void write(const Row& row, bool insert, int64_t* newOid);
    /// Stores only the changed attributes through the storage's SQL; false when the storage
    /// has no such path or the shape changed.
    bool writeAttributes(const Row& row);
    void remove(int64_t oid);
};

/// Opens a cursor over the rows a filter lets through.
std::unique_ptr<CursorState> openCursor(const std::shared_ptr<WorkspaceData>& workspace,
                                        const std::shared_ptr<TableData>& table,
                                        const QueryFilter& filter, bool updatable);
/// Counts rows with one query where the storage can; nullopt when rows must be walked.
std::optional<int64_t> countBySql(WorkspaceData& workspace, const TableData& table,
                                  const QueryFilter& filter, int64_t upTo = -1);
/// Sets one field to one value in the rows the filter selects with one statement, where the
/// storage can; returns how many changed, or nullopt when rows must be walked.
std::optional<int64_t> calculateBySql(WorkspaceData& workspace, const TableData& table, int index,
                                      const automation::Variant& value, const QueryFilter& filter);
/// Deletes the rows the filter selects with one statement, all or none, where the storage can;
/// returns how many, or nullopt when rows must be walked.
std::optional<int64_t> deleteBySql(WorkspaceData& workspace, const TableData& table,
                                   const QueryFilter& filter);
/// A row from a feature; `resultIndex` maps fields to the feature's attributes (null: the
/// table's own layout).
Row readRow(const TableData& table, const OGRFeature& feature, const std::vector<int>* resultIndex);

} // namespace brevant::platform::geodatabase
