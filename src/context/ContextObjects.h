#pragma once

namespace brevant::host {
class GisDataService;
class RegionSettingsStore;
} // namespace brevant::host

namespace brevant::platform::carto {
class Map;
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

/// Throws automation error 91 naming what is missing.
[[noreturn]] void throwObjectNotSet(const char* what);

} // namespace brevant::context
