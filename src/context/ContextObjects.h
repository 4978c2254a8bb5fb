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
}

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
/// Throws automation error 91 naming what is missing.
[[noreturn]] void throwObjectNotSet(const char* what);

} // namespace brevant::context
