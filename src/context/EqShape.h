#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::automation {
class Variant;
}
namespace brevant::platform::carto {
class FeatureLayer;
class Map;
} // namespace brevant::platform::carto
namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase

namespace brevant::context {

/// Fills or refreshes the study-region context. The first call of the process creates the
/// host's objects and reads the fixed folders; every call re-reads the region folder, the error
/// log path, the region database name, "General"/"AggLevel" and "General"/"CurrentRegionID",
/// and, when OpenedByClass is set and the region number is 1 or more, the region's hazard
/// flags. A failing step ends Init there (fields already set keep their new values); the error
/// is recorded under " Init" and raised as 0x8004060C. A setting that does not fit in 16 bits
/// fails as an overflow.
void Init();

/// What every class initialiser does: sets OpenedByClass, then runs Init.
void openStudyRegion(bool openedByClass);

/// The inventory database of a type code: RegionFolder + "trn.mdb", "util.mdb", "ef.mdb",
/// "hplf.mdb" or "uds.mdb" for 0 to 4; any other code gives an empty path, so the open that
/// follows fails.
std::string InventoryDatabasePath(int16_t iDataBaseType);

/// The map the host handed over last, through any object; null before the first assignment.
std::shared_ptr<platform::carto::Map> CurrentMap();
/// Makes `map` the map every object uses (the last assignment wins).
void setCurrentMap(std::shared_ptr<platform::carto::Map> map);

// Layer services on CurrentMap. Each runs under its own error trap with code 0x8004060C and
// the tag named: a failure is recorded once in EqErrorLog.txt and raised as an
// AutomationError (an error an inner trap recorded passes unchanged). A missing CurrentMap,
// feature class or context object is error 91.

/// Adds a visible layer over `featureClass`, named after its alias name, on top of CurrentMap,
/// selectable as asked; returns it. Tag " AddLayer".
std::shared_ptr<platform::carto::FeatureLayer>
AddLayer(const std::shared_ptr<platform::geodatabase::FeatureClass>& featureClass, bool selectable);

/// Puts an inventory class on CurrentMap. With N the class's alias name: removes the first
/// layer named N (not one named `layerName`), makes a layer named `layerName`, or N when that
/// is empty, with the visibility asked and the catalogue's renderer for N, adds it selectable
/// as asked, then relates it to the server tables "hz" + S (except for the class "eqAebm") and
/// "Eq" + S, S being N without its first two characters, and asks for a partial refresh of the
/// selection phase. A failing relate leaves the layer on the map. `unused` is not read.
/// Returns the layer. Tag " AddInventoryLayer".
std::shared_ptr<platform::carto::FeatureLayer>
AddInventoryLayer(const std::shared_ptr<platform::geodatabase::FeatureClass>& featureClass,
                  bool selectable, int16_t unused, bool visible, const std::string& layerName);

/// Deletes the rows `whereClause` selects, after telling the user in a message box (OK only,
/// title "Korval") "There are " + count + " objects outside the study region, they will not be
/// stored."; a clause that selects nothing shows and deletes nothing. Tag " RemoveObjects".
void RemoveObjects(platform::geodatabase::Table& featureClass, const std::string& whereClause);

/// Clears `result`, then opens `className` of the database at `databasePath` through the
/// context's GisDataService into it. Tag " OpenMap".
void OpenMap(const std::string& className, const std::string& databasePath,
             platform::automation::Variant& result);

/// Builds in `result` the in-memory relationship class "SourceData" from the origin table
/// (key `originPrimaryKey`) to the destination feature class (key `originForeignKey`), labels
/// "attribute data" both ways, one to many. Tag " CreateRelateClass".
void CreateRelateClass(const platform::automation::Variant& destination,
                       const std::string& originPrimaryKey,
                       const platform::automation::Variant& originTable,
                       const std::string& originForeignKey, platform::automation::Variant& result);

/// Asks for a full refresh of CurrentMap. Tag " RefreshView".
void RefreshView();

} // namespace brevant::context
