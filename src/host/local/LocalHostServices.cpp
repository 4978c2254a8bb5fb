#include "host/local/LocalHostServices.h"

#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/GridSettingsService.h"
#include "host/InventoryCatalogService.h"
#include "host/ProgressDialog.h"
#include "host/RegionSelectionStore.h"
#include "host/local/LocalRegionSelectionStore.h"
#include "host/ScenarioService.h"
#include "host/SymbolCatalog.h"
#include "host/ThematicClassSettings.h"
#include "host/UserMapRegistry.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalGisDataService.h"
#include "host/local/LocalGisUtilityService.h"
#include "host/local/LocalGridSettingsService.h"
#include "host/local/LocalInventoryCatalogService.h"
#include "host/local/LocalProgressDialog.h"
#include "host/local/LocalRegionContextService.h"
#include "host/local/LocalRegionHazardService.h"
#include "host/local/LocalRegionSettingsStore.h"
#include "host/local/LocalScenarioService.h"
#include "host/local/LocalSymbolCatalog.h"
#include "host/local/LocalThematicClassSettings.h"
#include "host/local/LocalUserMapRegistry.h"

namespace brevant::host::local {

LocalHostServices::LocalHostServices(std::filesystem::path root) : m_root(std::move(root))
{
    HostRoot::load(m_root);
}

std::shared_ptr<RegionContextService> LocalHostServices::createRegionContextService()
{
    return std::make_shared<LocalRegionContextService>(m_root);
}

std::shared_ptr<RegionSettingsStore> LocalHostServices::createRegionSettingsStore()
{
    return std::make_shared<LocalRegionSettingsStore>(m_root);
}

std::shared_ptr<RegionHazardService> LocalHostServices::createRegionHazardService()
{
    return std::make_shared<LocalRegionHazardService>(m_root);
}

std::shared_ptr<GisDataService> LocalHostServices::createGisDataService()
{
    return std::make_shared<LocalGisDataService>(m_root);
}

std::shared_ptr<RegionSelectionStore> LocalHostServices::createRegionSelectionStore()
{
    return std::make_shared<LocalRegionSelectionStore>(m_root);
}

std::shared_ptr<InventoryCatalogService> LocalHostServices::createInventoryCatalogService()
{
    return std::make_shared<LocalInventoryCatalogService>(m_root);
}

std::shared_ptr<GisUtilityService> LocalHostServices::createGisUtilityService()
{
    return std::make_shared<LocalGisUtilityService>(m_root);
}

std::shared_ptr<UserMapRegistry> LocalHostServices::createUserMapRegistry()
{
    return std::make_shared<LocalUserMapRegistry>(m_root);
}

std::shared_ptr<ScenarioService> LocalHostServices::createScenarioService()
{
    return std::make_shared<LocalScenarioService>(m_root);
}

std::shared_ptr<ProgressDialog> LocalHostServices::createProgressDialog()
{
    return std::make_shared<LocalProgressDialog>();
}

std::shared_ptr<GridSettingsService> LocalHostServices::createGridSettingsService()
{
    return std::make_shared<LocalGridSettingsService>(m_root);
}

std::shared_ptr<SymbolCatalog> LocalHostServices::createSymbolCatalog()
{
    return std::make_shared<LocalSymbolCatalog>(m_root);
}

std::shared_ptr<ThematicClassSettings> LocalHostServices::createThematicClassSettings()
{
    return std::make_shared<LocalThematicClassSettings>(m_root);
}

} // namespace brevant::host::local
