#pragma once

#include <memory>

namespace brevant::host {

class GisDataService;
class GisUtilityService;
class GridSettingsService;
class InventoryCatalogService;
class ProgressDialog;
class RegionContextService;
class RegionHazardService;
class RegionSelectionStore;
class RegionSettingsStore;
class ScenarioService;
class SymbolCatalog;
class ThematicClassSettings;
class UserMapRegistry;

/// The provider of the host's objects, installed once per process by the application that
/// embeds the library (the command-line host and the tests install the reference host). Each
/// factory creates a new host object on every call.
class HostServices {
public:
    virtual ~HostServices() = default;

    /// A new study-region object.
    virtual std::shared_ptr<RegionContextService> createRegionContextService() = 0;
    /// A new store of per-region settings.
    virtual std::shared_ptr<RegionSettingsStore> createRegionSettingsStore() = 0;
    /// A new data-access service.
    virtual std::shared_ptr<GisDataService> createGisDataService() = 0;
    /// A new service of the regions' hazard flags.
    virtual std::shared_ptr<RegionHazardService> createRegionHazardService() = 0;
    /// A new store of the region units chosen by the user.
    virtual std::shared_ptr<RegionSelectionStore> createRegionSelectionStore() = 0;
    /// A new catalogue of the region's inventory classes.
    virtual std::shared_ptr<InventoryCatalogService> createInventoryCatalogService() = 0;
    /// A new utility service of the region's tabular database.
    virtual std::shared_ptr<GisUtilityService> createGisUtilityService() = 0;
    /// A new register of the user's hazard maps.
    virtual std::shared_ptr<UserMapRegistry> createUserMapRegistry() = 0;
    /// A new service of hazard scenarios.
    virtual std::shared_ptr<ScenarioService> createScenarioService() = 0;
    /// A new progress window, not yet shown.
    virtual std::shared_ptr<ProgressDialog> createProgressDialog() = 0;
    /// A new service of the contour-grid settings.
    virtual std::shared_ptr<GridSettingsService> createGridSettingsService() = 0;
    /// A new symbol catalogue object.
    virtual std::shared_ptr<SymbolCatalog> createSymbolCatalog() = 0;
    /// A new classification settings object of thematic maps.
    virtual std::shared_ptr<ThematicClassSettings> createThematicClassSettings() = 0;
};

/// Installs the provider for the process (replacing any earlier one).
void installHostServices(std::shared_ptr<HostServices> services);

/// The installed provider; throws AutomationError 429 "No host is installed" when none.
HostServices& hostServices();

} // namespace brevant::host
