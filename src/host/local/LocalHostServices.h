#pragma once

#include "host/HostServices.h"

#include <filesystem>

namespace brevant::host::local {

/// The reference host: every service backed by files under a host root folder. Services whose
/// file-backed operations are not written yet are handed out as the bare interface, whose
/// operations raise error 438 naming service and operation.
class LocalHostServices : public HostServices {
public:
    /// Checks that the root holds a readable host.json; throws a host error naming the file
    /// otherwise.
    explicit LocalHostServices(std::filesystem::path root);

    const std::filesystem::path& root() const { return m_root; }

    std::shared_ptr<RegionContextService> createRegionContextService() override;
    std::shared_ptr<RegionSettingsStore> createRegionSettingsStore() override;
    std::shared_ptr<GisDataService> createGisDataService() override;
    std::shared_ptr<RegionHazardService> createRegionHazardService() override;
    std::shared_ptr<RegionSelectionStore> createRegionSelectionStore() override;
    std::shared_ptr<InventoryCatalogService> createInventoryCatalogService() override;
    std::shared_ptr<GisUtilityService> createGisUtilityService() override;
    std::shared_ptr<UserMapRegistry> createUserMapRegistry() override;
    std::shared_ptr<ScenarioService> createScenarioService() override;
    std::shared_ptr<ProgressDialog> createProgressDialog() override;
    std::shared_ptr<GridSettingsService> createGridSettingsService() override;
    std::shared_ptr<SymbolCatalog> createSymbolCatalog() override;
    std::shared_ptr<ThematicClassSettings> createThematicClassSettings() override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
