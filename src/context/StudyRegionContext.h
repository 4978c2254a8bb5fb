#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace brevant::host {
class GisDataService;
class RegionContextService;
class RegionSelectionStore;
class RegionSettingsStore;
} // namespace brevant::host

namespace brevant::platform::carto {
class Map;
}

namespace brevant::context {

/// The process-wide record of the study region the host has open: the host's objects, the
/// folders (each ending with a path separator, joined to file names by plain concatenation),
/// the derived paths and settings, and the map the host handed over. Every object of the
/// library shares it; Init fills and refreshes it.
struct StudyRegionContext {
    bool ContextReady = false;
    bool OpenedByClass = false;

    std::shared_ptr<host::RegionContextService> RegionContextService;
    std::shared_ptr<host::RegionSettingsStore> RegionSettingsStore;
    std::shared_ptr<host::RegionSelectionStore> RegionSelectionStore;
    std::shared_ptr<host::GisDataService> GisDataService;

    std::string StateDataFolder;
    std::string SystemDataFolder;
    std::string ScenarioFolder;
    std::string RegionFolder;
    std::string RegionDatabaseName;
    std::string ErrorLogPath;
    std::string RegionBoundaryPath;
    int16_t AggLevel = 0;
    std::array<bool, 3> HazardFlags{};

    std::shared_ptr<platform::carto::Map> CurrentMap;
};

/// The context of the process.
StudyRegionContext& studyRegionContext();

/// Drops the context and the host objects, as unloading the library does; the next Init starts
/// afresh. For embedding hosts that switch host roots, and for tests.
void resetStudyRegionContext();

} // namespace brevant::context
