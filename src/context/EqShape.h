#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::carto {
class Map;
}

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

} // namespace brevant::context
