#include "context/EqShape.h"

#include "context/ContextObjects.h"
#include "context/EqSimpleRenderer.h"
#include "context/EqUtilFunctions.h"
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
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/ui/UserPrompts.h"

#include <array>

namespace brevant::context {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;
using platform::carto::FeatureLayer;

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

namespace {
const geodatabase::FeatureClass&
requireClass(const std::shared_ptr<geodatabase::FeatureClass>& featureClass)
{
    if (!featureClass) {
        throwObjectNotSet("feature class");
    }
    return *featureClass;
}
} // namespace

std::shared_ptr<FeatureLayer>
AddLayer(const std::shared_ptr<geodatabase::FeatureClass>& featureClass, bool selectable)
{
    return runTrapped(" AddLayer", Procedure, [&] {
        const auto& source = requireClass(featureClass);
        auto& map = currentMapOrFail();
        auto layer = std::make_shared<FeatureLayer>();
        layer->setFeatureClass(featureClass);
        layer->setVisible(true);
        layer->setName(source.aliasName());
        map.addLayer(layer);
        layer->setSelectable(selectable);
        return layer;
    });
}

std::shared_ptr<FeatureLayer>
AddInventoryLayer(const std::shared_ptr<geodatabase::FeatureClass>& featureClass, bool selectable,
                  int16_t /*unused*/, bool visible, const std::string& layerName)
{
    return runTrapped(" AddInventoryLayer", Procedure, [&] {
        const std::string className = requireClass(featureClass).aliasName();
        auto& map = currentMapOrFail();
        // The layer to replace is the one named after the class, whatever name the new one
        // gets.
        RemoveLayer(className);

        auto layer = std::make_shared<FeatureLayer>();
        layer->setFeatureClass(featureClass);
        layer->setVisible(visible);
        layer->setName(layerName.empty() ? className : layerName);
        context::CreateRendrer(*layer, className);
        map.addLayer(layer);
        layer->setSelectable(selectable);

        const std::string suffix = className.size() > 2 ? className.substr(2) : std::string();
        // eqAebm has no attribute table on the server, only its analysis table.
        if (className != "eqAebm") {
            CreateRelateWithSqlTable(*layer, "hz" + suffix);
        }
        CreateRelateWithSqlTable(*layer, "Eq" + suffix);
        map.partialRefresh(platform::carto::ViewPhase::GeoSelection);
        return layer;
    });
}

void RemoveObjects(geodatabase::Table& featureClass, const std::string& whereClause)
{
    runTrapped(" RemoveObjects", Procedure, [&] {
        const auto filter = geodatabase::QueryFilter::where(whereClause);
        const int64_t count = featureClass.rowCount(filter);
        if (count <= 0) {
            return;
        }
        platform::ui::userPrompts().messageBox(
            "There are " + std::to_string(count) +
                " objects outside the study region, they will not be stored.",
            "Korval", platform::ui::MessageButtons::Ok);
        featureClass.deleteSearchedRows(filter);
    });
}

void OpenMap(const std::string& className, const std::string& databasePath, Variant& result)
{
    runTrapped(" OpenMap", Procedure, [&] {
        result = Variant();
        result = contextGisDataService().OpenFeatureClass(className, databasePath);
    });
}

void CreateRelateClass(const Variant& destination, const std::string& originPrimaryKey,
                       const Variant& originTable, const std::string& originForeignKey,
                       Variant& result)
{
    runTrapped(" CreateRelateClass", Procedure, [&] {
        geodatabase::RelationshipClass::Definition definition;
        definition.name = "SourceData";
        definition.origin = originTable.objectAs<geodatabase::Table>();
        definition.originPrimaryKey = originPrimaryKey;
        definition.destination = destination.objectAs<geodatabase::Table>();
        definition.originForeignKey = originForeignKey;
        definition.forwardLabel = "attribute data";
        definition.backwardLabel = "attribute data";
        definition.cardinality = geodatabase::Cardinality::OneToMany;
        result = Variant(std::make_shared<geodatabase::RelationshipClass>(std::move(definition)));
    });
}

void RefreshView()
{
    runTrapped(" RefreshView", Procedure, [] { currentMapOrFail().activeView().refresh(); });
}

} // namespace brevant::context
