#include "context/EqShape.h"

#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "host/RegionHazardService.h"
#include "host/RegionSelectionStore.h"
#include "host/RegionSettingsStore.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/Variant.h"
#include "platform/carto/Map.h"

#include <array>

namespace brevant::context {

using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;

namespace {
int16_t readSetting16(host::RegionSettingsStore& store, const char* key)
{
    // Narrowing through a variant raises the overflow a 16-bit setting must raise.
    return Variant(store.ReadInt32("General", key)).toInt16();
}
} // namespace

void Init()
{
    runTrapped(" Init", Procedure, [] {
        auto& ctx = studyRegionContext();
        if (!ctx.ContextReady) {
            auto& services = host::hostServices();
            ctx.RegionContextService = services.createRegionContextService();
            ctx.RegionSettingsStore = services.createRegionSettingsStore();
            ctx.RegionSelectionStore = services.createRegionSelectionStore();
            ctx.GisDataService = services.createGisDataService();
            ctx.StateDataFolder = ctx.RegionContextService->GetStateDataFolder();
            ctx.SystemDataFolder = ctx.RegionContextService->GetSystemDataFolder();
            ctx.ScenarioFolder = ctx.RegionContextService->GetScenarioFolder();
            ctx.ContextReady = true;
        }
        ctx.RegionFolder = ctx.RegionContextService->GetRegionFolder();
        ctx.ErrorLogPath = ctx.RegionContextService->GetRegionFolder() + "EqErrorLog.txt";
        ctx.RegionDatabaseName = ctx.RegionContextService->GetRegionDatabaseName();
        ctx.RegionBoundaryPath = ctx.RegionFolder + "RegionBndry.mdb";
        ctx.AggLevel = readSetting16(*ctx.RegionSettingsStore, "AggLevel");
        const int16_t currentRegionId = readSetting16(*ctx.RegionSettingsStore, "CurrentRegionID");
        if (ctx.OpenedByClass && currentRegionId >= 1) {
            auto hazards = host::hostServices().createRegionHazardService();
            std::array<bool, 3> flags = ctx.HazardFlags;
            hazards->GetHazardFlags(currentRegionId, flags[0], flags[1], flags[2]);
            ctx.HazardFlags = flags;
        }
    });
}

void openStudyRegion(bool openedByClass)
{
    studyRegionContext().OpenedByClass = openedByClass;
    Init();
}

std::string InventoryDatabasePath(int16_t iDataBaseType)
{
    static constexpr std::array<const char*, 5> kDatabases{"trn.mdb", "util.mdb", "ef.mdb",
                                                           "hplf.mdb", "uds.mdb"};
    if (iDataBaseType < 0 || iDataBaseType >= static_cast<int16_t>(kDatabases.size())) {
        return {};
    }
    return studyRegionContext().RegionFolder + kDatabases[static_cast<std::size_t>(iDataBaseType)];
}

std::shared_ptr<platform::carto::Map> CurrentMap()
{
    return studyRegionContext().CurrentMap;
}

void setCurrentMap(std::shared_ptr<platform::carto::Map> map)
{
    studyRegionContext().CurrentMap = std::move(map);
}

} // namespace brevant::context
