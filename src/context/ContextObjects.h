#pragma once

#include <memory>
#include <string>

namespace brevant::host {
class GisDataService;
class RegionSettingsStore;
} // namespace brevant::host

namespace brevant::platform::carto {
class Map;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase

namespace brevant::context {

/// The context's objects as the procedures use them. Each throws automation error 91 ("Object
/// variable or With block variable not set") when the object is missing, as a procedure that
/// runs before Init or before the host handed over a map fails.

/// The data service Init created.
host::GisDataService& contextGisDataService();
/// The settings store Init created.
host::RegionSettingsStore& contextSettingsStore();
/// CurrentMap.
platform::carto::Map& currentMapOrFail();

/// A feature class (or table) opened through the context's GisDataService from the database at
/// its full path; error 91 when the host hands back nothing.
std::shared_ptr<platform::geodatabase::FeatureClass> openFeatureClass(const std::string& className,
                                                                      const std::string& databasePath);
/// The server table `tableName` of the context's region database, opened through its
/// GisDataService; error 91 when the host hands back nothing.
std::shared_ptr<platform::geodatabase::Table> openServerTable(const std::string& tableName);
/// The index of a field (1 or above) of a table; a field that is not there is an invalid
/// argument naming it, as reading its value would be.
int requireField(const platform::geodatabase::Table& table, const std::string& name);
/// Throws automation error 91 naming what is missing.
[[noreturn]] void throwObjectNotSet(const char* what);

} // namespace brevant::context
