#pragma once

#include "platform/geodatabase/Fields.h"
#include "platform/geometry/ShapeType.h"
#include "platform/geometry/SpatialReference.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

class FeatureClass;
class Table;
struct WorkspaceData;

/// A store of tables and feature classes: a personal geodatabase (a GeoPackage under whatever
/// name the host gives it, such as RegionBndry.mdb), a plain SQLite database (the region's
/// tabular database, whose tables serve as server tables), a folder of shapefiles, or a
/// read-only Access personal geodatabase where its driver is installed. The format is found from the
/// content. Copies share the open database.
///
/// Failures throw PlatformError (source "GDAL") with a message naming the file and the table.
class Workspace {
public:
    enum class Kind { GeoPackage, SQLite, ShapefileFolder, Access, Other };

    /// Opens an existing workspace: a file or a folder of shapefiles. A missing path, or a
    /// file that is not a readable database, throws and changes nothing on disk.
    static Workspace open(const std::filesystem::path& path, bool readOnly = false);
    /// Creates a new, empty personal geodatabase (GeoPackage) at `path`, whatever its
    /// extension; fails when the file exists.
    static Workspace createGeoPackage(const std::filesystem::path& path);
    /// Opens a folder as a shapefile workspace, creating the folder when missing. dBASE text
    /// has no null: null text is stored blank and reads back as an empty string, and where
    /// clauses on shapefiles are evaluated in process so that they see the same values.
    static Workspace openShapefileFolder(const std::filesystem::path& folder);

    const std::filesystem::path& path() const;
    Kind kind() const;
    bool isReadOnly() const;

    /// Names of the tables and feature classes, in storage order.
    std::vector<std::string> datasetNames() const;
    /// True when a table or feature class of that name exists (case-insensitive).
    bool exists(const std::string& name) const;

    std::shared_ptr<FeatureClass> openFeatureClass(const std::string& name) const;
    /// Opens a table (a feature class opens as a table too).
    std::shared_ptr<Table> openTable(const std::string& name) const;

    /// Creates a feature class: `fields` are the attributes (an OBJECTID or shape field among
    /// them is taken as the identifier/shape definition and not added twice); the shape field
    /// is named `shapeFieldName`. Without `spatialIndex` a GeoPackage keeps no R-tree, which a
    /// scratch class written and read once in full does not need. Throws when the name is taken.
    std::shared_ptr<FeatureClass> createFeatureClass(
        const std::string& name, const Fields& fields, geometry::ShapeType shapeType,
        const geometry::SpatialReference& spatialReference = geometry::SpatialReference::nad83(),
        const std::string& shapeFieldName = "Shape", bool spatialIndex = true);
    /// Creates a table without shapes.
    std::shared_ptr<Table> createTable(const std::string& name, const Fields& fields);

    /// Deletes a table or feature class; nothing happens when it does not exist. Returns
    /// whether something was deleted.
    bool deleteDataset(const std::string& name);

    /// Renames a table or feature class; throws when `to` is taken or the storage cannot.
    void renameDataset(const std::string& from, const std::string& to);

    /// Gives `replacement` the name `target`, deleting what had that name (if anything). On a
    /// GeoPackage or SQLite database both steps are one transaction: a failure, or the process
    /// ending half-way, leaves both as they were. Cursors of this workspace must be released
    /// first; handles of `target` then report it deleted. Throws when `replacement` is missing
    /// or the storage refuses.
    void replaceDataset(const std::string& replacement, const std::string& target);

    /// For the storage code: a handle on already-open workspace state.
    static Workspace fromData(std::shared_ptr<WorkspaceData> data) { return Workspace(data); }

private:
    explicit Workspace(std::shared_ptr<WorkspaceData> data) : m_data(std::move(data)) {}

    std::shared_ptr<WorkspaceData> m_data;
};

} // namespace brevant::platform::geodatabase
