#pragma once

#include "platform/geodatabase/Field.h"
#include "platform/geometry/ShapeType.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brevant::host::local {

/// The folder of a host root that holds a database.
enum class HostFolder { State, System, Scenario, Region };

/// One feature class or table: its name and shape type, and its attributes in storage order.
/// OBJECTID (and Shape for a feature class) come first and are not listed here.
struct ClassSchema {
    std::string name;
    /// ShapeType::Null for a table without shapes.
    platform::geometry::ShapeType shape = platform::geometry::ShapeType::Null;
    std::vector<platform::geodatabase::Field> fields;

    bool hasShape() const { return shape != platform::geometry::ShapeType::Null; }
    /// Index of a field, name compared without regard to case, as the stored class numbers it
    /// (the first attribute is 2 in a feature class, 1 in a table); -1 when missing.
    int fieldIndex(std::string_view fieldName) const;
};

/// One database of a host root and the classes it holds, in creation order.
struct DatabaseSchema {
    enum class Storage { GeoPackage, ShapefileFolder };

    HostFolder folder = HostFolder::Region;
    /// Path below the folder with '/' separators ("RegionBndry.mdb",
    /// "HU/WindField/huStormTrack.mdb"); a shapefile folder ends with '/'.
    std::string fileName;
    std::vector<ClassSchema> classes;
    Storage storage = Storage::GeoPackage;
    /// One copy per state, in a subfolder of the state data folder named by the caller:
    /// <StateDataFolder><state>/<fileName>.
    bool perState = false;
};

/// Every database of a host root, in creation order: the state data folder's, the system data
/// folder's (scratch database and the templates the clipping falls back on), the scenario
/// folder's, then those of each study region (boundary, inundation, probabilistic map,
/// outside programs, the five inventory databases, pipelines).
const std::vector<DatabaseSchema>& hostDatabases();

/// A database by folder and file name (compared without regard to case); nullptr when unknown.
const DatabaseSchema* findDatabase(HostFolder folder, std::string_view fileName);

/// A class by name (without regard to case) across all databases, the first in creation order;
/// nullptr when unknown. A name held by several databases has the same schema in each.
const ClassSchema* findClass(std::string_view name);
/// A class of one database by name (without regard to case); nullptr when it holds none.
const ClassSchema* findClass(const DatabaseSchema& database, std::string_view name);

/// Site conditions every inventory record carries: stype, lqfsuscat, lndsuscat, w_depth.
const std::vector<platform::geodatabase::Field>& siteConditionFields();
/// Result fields of the scenario analyses, in the order the analyses add them (pgv first).
const std::vector<platform::geodatabase::Field>& scenarioResultFields();
/// Return periods of the region's probabilistic map; each gives the USGS fields
/// pga<P>, pgv<P>, sa03<P> and sa10<P>.
const std::vector<int>& probabilisticReturnPeriods();

/// One entry of the region's inventory catalogue.
struct InventoryClass {
    std::string name;     ///< "hzHighwayBridge"
    std::string database; ///< file in the region folder, "trn.mdb"
    char kind = 'P';      ///< 'P' point, 'L' line
};

/// The inventory catalogue of a new reference region, in catalogue order. The last two
/// entries are the region tables eqTract and eqGrid of RegionBndry.mdb: the site-condition
/// update and the analyses find them through the catalogue, but their classes and server
/// tables are fixed parts of the region, not inventory built with inventoryFields.
const std::vector<InventoryClass>& inventoryClasses();

/// An inventory class's name without its two-letter prefix ("HighwayBridge"). Throws a host
/// error for a name of two characters or fewer.
std::string inventorySuffix(std::string_view name);
/// The prefix of the identifiers the host gives a class's records: the first two letters of
/// its suffix in upper case ("HI" for hzHighwayBridge).
std::string identifierPrefix(std::string_view name);
/// Name of the identifier field of an inventory class: suffix + "Id" ("HighwayBridgeId").
std::string identifierFieldName(std::string_view name);
/// Name of a line class's hazard table: "Eq" + suffix + "hft".
std::string hazardTableName(std::string_view name);
/// Whether an inventory class of a kind has a hazard table: line classes except hzLevees.
bool hasHazardTable(std::string_view name, char kind);

/// Attributes of a new inventory class: the identifier first (text of 8), then for a point
/// class Name, Tract, Latitude, Longitude and the site conditions, for a line class Name and
/// CountyFips. Kind is 'P' or 'L' in either case; any other throws a host error.
std::vector<platform::geodatabase::Field> inventoryFields(std::string_view name, char kind);
/// Attributes of a line class's hazard table: identifier, Tract and the site conditions.
std::vector<platform::geodatabase::Field> hazardTableFields(std::string_view name);
/// What adding an inventory class creates in its database: the class and, when it has one,
/// its hazard table (a polyline class).
std::vector<ClassSchema> inventoryClassSchemas(std::string_view name, char kind);

/// A table of the region's tabular database (region.sqlite). Columns carry SQLite types
/// (TEXT, INTEGER, REAL); the key columns are unique together.
struct ServerTableSchema {
    std::string name;
    std::vector<std::pair<std::string, std::string>> columns;
    std::vector<std::string> key;
};

/// The server tables of a new reference region: tracts, the tract and grid analysis tables,
/// the tables of every inventory class of inventoryClasses(), the flood study cases and their
/// loss records, and the query-tool table. The settings table belongs to RegionDatabase.
const std::vector<ServerTableSchema>& regionServerTables();
/// Server tables of one inventory class: "hz" + S with its attributes (not for eqAebm), "Eq"
/// + S with its analysis values, and for a line class with a hazard table "Eq" + S + "hft";
/// eqAebm adds its result table eqAebmRes. Throws as inventoryFields.
std::vector<ServerTableSchema> inventoryServerTables(std::string_view name, char kind);
/// A server table by name (without regard to case) among regionServerTables(); nullptr when
/// unknown.
const ServerTableSchema* findServerTable(std::string_view name);
/// The CREATE TABLE statement of a server table.
std::string createTableStatement(const ServerTableSchema& table);

/// A map the user registers for a hazard code, as the sample host writes it.
struct UserMapSchema {
    std::string code; ///< "SOIL", "PGAM", ...
    ClassSchema map;  ///< a polygon class with the code's value field
};

/// Where the sample host keeps the user's maps: this database in this folder below the
/// region folder (the register stores the folder relative to the region).
inline constexpr std::string_view kUserMapFolder = "UserMaps/";
inline constexpr std::string_view kUserMapDatabase = "UserMaps.mdb";
/// A user map for each of the nineteen hazard codes, in code-table order.
const std::vector<UserMapSchema>& userMaps();
/// The user map of a code (compared exactly); nullptr for an unknown code.
const UserMapSchema* findUserMap(std::string_view code);
/// The flood-view program's output, a polygon shapefile the settings point to.
const ClassSchema& floodViewClass();

} // namespace brevant::host::local
