#pragma once

// Private to the geodatabase layer: the state behind Workspace, Table and Cursor handles.

#include "gdal/GdalSupport.h"
#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/ShapeType.h"
#include "platform/geometry/SpatialReference.h"
#include "platform/tabular/SqliteDatabase.h"

#include <filesystem>

struct sqlite3;
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

struct TableData;

struct WorkspaceData {
    std::filesystem::path path;
    Workspace::Kind kind = Workspace::Kind::Other;
    bool readOnly = false;
    gdal::DatasetPtr dataset;
    bool inTransaction = false;
    int pendingWrites = 0;
    /// Above zero while something needs every write in one transaction (a spatial index put
    /// off until the end of an append): no batch is committed meanwhile.
    int holdBatches = 0;
    /// Open WriteBatch scopes: while above zero, commit() leaves the transaction open.
    int writeBatches = 0;
    /// Spatial-index triggers dropped for the open transaction and the statements that put
    /// them back, run by commit(); a rollback brings them back on its own.
    std::vector<std::pair<std::string, std::string>> suspendedTriggers;
    /// Counts transactions ended, so that a cursor knows whether it has looked at the
    /// triggers in the one now open.
    uint64_t transactionsEnded = 0;
    // Written since the last commit; formats without transactions are flushed on commit so
    // that another workspace on the same files sees the rows.
    bool dirty = false;
    std::vector<std::weak_ptr<TableData>> tables;

    /// GDAL's own SQLite connection of a GeoPackage or SQLite workspace (null for other
    /// formats), for attribute updates that need not rewrite the whole feature.
    sqlite3* sqliteHandle() const;
    /// That connection for statements on `table`: its errors are GDAL errors naming the table
    /// and its transactions are the dataset's. Null for other formats.
    std::unique_ptr<tabular::SqliteDatabase> sqlite(const std::string& table);

    /// Call before each stored row: opens a transaction where the format has them, and commits
    /// a batch when it has grown large.
    void beginWrite();
    /// Inside an open transaction, drops the two triggers of `table`'s spatial index that fire
    /// on every update of a row, whatever it changes, only to act when its identifier changes
    /// (which nothing here does); commit() restores them. SQLite otherwise runs them for each
    /// row of every attribute update: a quarter of the cost of resetting a field of a million
    /// rows.
    void suspendIdentifierTriggers(const TableData& table);
    /// Commits what is pending; never throws (cursors call it while unwinding).
    bool commit() noexcept;
    /// Drops what is pending where the format has transactions; never throws.
    void rollback() noexcept;
    /// Opens the database again and points the open tables at its layers (null for those no
    /// longer stored): after a rolled-back schema change GDAL's own layer list is not to be
    /// trusted.
    void reopen();
    /// "table X in /path/db.mdb", for messages.
    std::string describe(const std::string& table) const;
    /// Finds an open layer by name (case-insensitive), or null.
    OGRLayer* layer(const std::string& name) const;
};

struct TableData {
    std::string name;
    std::string alias;
    OGRLayer* layer = nullptr; // borrowed from the dataset; null once the table was deleted
    std::shared_ptr<Fields> fields;
    std::vector<int> ogrIndex; // per field: OGR attribute index, -1 for identifier and shape
    bool hasShape = false;
    geometry::ShapeType shapeType = geometry::ShapeType::Null;
    geometry::SpatialReference spatialReference;
    std::string shapeFieldName;
    // dBASE text has no null: a blank value reads as null through OGR but is an empty string.
    bool blankTextIsEmpty = false;

    /// Reads the field list from the layer definition.
    void loadFields();
    /// The layer, or a PlatformError when the table was deleted.
    OGRLayer& requireLayer(const WorkspaceData& workspace) const;
};

} // namespace brevant::platform::geodatabase
