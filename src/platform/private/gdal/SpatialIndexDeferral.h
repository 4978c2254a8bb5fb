#pragma once

// Private to the geodatabase layer: a GeoPackage spatial index built once after a large append
// instead of row by row.

#include "gdal/StorageData.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

/// SQLite fills an R-tree one entry at a time, each insert choosing a leaf and splitting nodes;
/// for half a million points that is seconds, more than the rows themselves. While a deferral is
/// open the table's six R-tree triggers are dropped (inside the workspace's transaction, which
/// does not commit in batches meanwhile), the appended rows' boxes are collected, and finish()
/// packs the old and new entries into a new tree written straight into the index's own tables,
/// then puts the triggers back. Everything happens in one transaction: a reader never sees the
/// table without its triggers or its index out of step with its rows.
class SpatialIndexDeferral {
public:
    /// Starts a deferral on `table` when it is a GeoPackage table whose index is in place with
    /// its six triggers; null otherwise (the rows then go in the ordinary way). Commits what the
    /// workspace had pending first, so that GDAL holds no deferred index work of its own.
    static std::unique_ptr<SpatialIndexDeferral> start(WorkspaceData& workspace,
                                                       const TableData& table);
    ~SpatialIndexDeferral();
    SpatialIndexDeferral(const SpatialIndexDeferral&) = delete;
    SpatialIndexDeferral& operator=(const SpatialIndexDeferral&) = delete;

    /// Notes the box of a stored row (call for rows with a non-empty shape only).
    void add(int64_t id, double xmin, double xmax, double ymin, double ymax);
    /// Writes the index and restores the triggers; the caller commits. Throws on failure, the
    /// transaction then left for the caller to take back.
    void finish();
    bool finished() const { return m_finished; }

    struct Entry {
        int64_t id;
        float box[4]; // minx, maxx, miny, maxy as the index stores them
    };

private:
    SpatialIndexDeferral(WorkspaceData& workspace, std::string table, std::string index,
                         std::vector<std::string> triggers);

    WorkspaceData& m_workspace;
    std::string m_table;
    std::string m_index;
    std::vector<std::string> m_triggers;
    std::vector<Entry> m_added;
    bool m_finished = false;
};

} // namespace brevant::platform::geodatabase
