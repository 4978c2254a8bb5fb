#include "exchange/RegionExpImp.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "host/RegionSettingsStore.h"
#include "host/ScenarioService.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

#include <filesystem>

namespace brevant::exchange {

namespace geodatabase = platform::geodatabase;
using platform::automation::LibraryCode::Procedure;
using platform::automation::Variant;

namespace {
constexpr const char* kFaultShapefile = "eqSrFault";
constexpr const char* kStormShapefile = "eqHuStorm";
constexpr const char* kStormClass = "DeterministicStormTracks";
constexpr const char* kStormNameField = "huscenarioName";

/// "eqSrEastFault" for "E", "eqSrWestFault" for "W"; anything else names no class, and the
/// conversion or open that follows fails on it.
std::string faultClassOf(const std::string& half)
{
    if (half == "E") {
        return "eqSrEastFault";
    }
    if (half == "W") {
        return "eqSrWestFault";
    }
    return {};
}

bool exchangesFault(const std::string& type)
{
    return type == "H" || type == "A" || type == "S";
}

std::string scenarioDatabase()
{
    return context::studyRegionContext().ScenarioFolder + "SrScenario.mdb";
}

std::string stormDatabase()
{
    // The host hands out its folders with this system's separator; the sub-folders follow it.
    const std::string separator(1, std::filesystem::path::preferred_separator);
    return context::studyRegionContext().SystemDataFolder + "HU" + separator + "WindField" +
           separator + "huStormTrack.mdb";
}

std::string currentRegionName()
{
    return host::hostServices().createRegionContextService()->GetRegionName();
}

std::string folderOfRegion(const std::string& region)
{
    return host::hostServices().createRegionContextService()->GetRegionsFolder() + region;
}

std::shared_ptr<geodatabase::FeatureClass> featureClassOf(const Variant& value,
                                                          const char* what)
{
    auto featureClass = value.objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        context::throwObjectNotSet(what);
    }
    return featureClass;
}

/// The field of a shapefile that holds `name`: dBASE keeps ten characters of a field name.
int shapefileField(const geodatabase::FeatureClass& featureClass, const std::string& name)
{
    const int index = featureClass.findField(name);
    return index >= 0 ? index : featureClass.findField(name.substr(0, 10));
}
} // namespace

RegionExpImp::RegionExpImp()
{
    context::runTrapped(" RegionExpImp", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(false); });
}

const platform::automation::MemberTable* RegionExpImp::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("RegionExpImp");
        t.method("ExportCurrentScenario", &RegionExpImp::ExportCurrentScenario)
            .method("ImportCurrentScenario", &RegionExpImp::ImportCurrentScenario)
            .method("ExportScenario", &RegionExpImp::ExportScenario)
            .method("ImportScenario", &RegionExpImp::ImportScenario)
            .method("ExportCurrentHuScenario", &RegionExpImp::ExportCurrentHuScenario)
            .method("ImportCurrentHuScenario", &RegionExpImp::ImportCurrentHuScenario)
            .method("ExportCurrentEQScenario", &RegionExpImp::ExportCurrentEQScenario)
            .method("ImportCurrentEQScenario", &RegionExpImp::ImportCurrentEQScenario);
        return t;
    }();
    return &table;
}

namespace {
/// The fault of scenario `id` as the shapefile "eqSrFault" in `folder`.
void writeFault(const std::string& half, const std::string& folder, int32_t id)
{
    context::ConvertAccessToShapeFile(scenarioDatabase(), faultClassOf(half), folder,
                                      kFaultShapefile, "eqScenarioId = " + std::to_string(id));
}

/// The first fault of "eqSrFault" in `folder` stored as the fault of scenario `id`; its other
/// attributes stay behind.
void storeFirstFault(const std::string& half, const std::string& folder, int16_t id)
{
    auto& data = context::contextGisDataService();
    const auto faults = featureClassOf(data.OpenFeatureClass(faultClassOf(half), scenarioDatabase()),
                                       "scenario fault class");
    const auto carried =
        featureClassOf(data.OpenShapefile(kFaultShapefile, folder), "scenario fault shapefile");
    geodatabase::Cursor cursor = carried->search();
    geodatabase::Row first;
    if (!cursor.next(first)) {
        return;
    }
    geodatabase::Row fault = faults->createRow();
    fault.setShape(first.shape());
    fault.setValue(context::requireField(*faults, "eqScenarioId"), Variant(id));
    geodatabase::InsertCursor insert = faults->insert();
    insert.insertRow(fault);
    insert.flush();
}
} // namespace

void RegionExpImp::ExportScenario(int16_t& ImpScenId, std::string& EastWestRegion,
                                  std::string& RgnName)
{
    context::runTrapped(" ExportScenario", Procedure,
                        [&] { writeFault(EastWestRegion, folderOfRegion(RgnName), ImpScenId); });
}

void RegionExpImp::ImportScenario(int16_t& ImpScenId, std::string& EastWestRegion,
                                  std::string& RgnName)
{
    context::runTrapped(" ImportScenario", Procedure, [&] {
        storeFirstFault(EastWestRegion, folderOfRegion(RgnName), ImpScenId);
    });
}

void RegionExpImp::ExportCurrentEQScenario(const std::string& RgnName)
{
    context::runTrapped(" ExportCurrentEQScenario", Procedure, [&] {
        auto& settings = context::contextSettingsStore();
        const int32_t id = settings.ReadRegionInt32(RgnName, "PESH", "ScenarioID");
        if (id <= 0) {
            return;
        }
        int16_t number = static_cast<int16_t>(id);
        const auto scenarios = host::hostServices().createScenarioService();
        const std::string type = scenarios->GetScenarioType(number);
        scenarios->ExportScenarioRecord(RgnName, number);
        if (exchangesFault(type)) {
            std::string half = settings.ReadRegionString(RgnName, "GENERAL", "EorW");
            std::string region = RgnName;
            ExportScenario(number, half, region);
        }
    });
}

void RegionExpImp::ImportCurrentEQScenario(const std::string& RgnName)
{
    context::runTrapped(" ImportCurrentEQScenario", Procedure, [&] {
        auto& settings = context::contextSettingsStore();
        settings.ReadRegionInt32(RgnName, "PESH", "ScenarioID");
        const auto scenarios = host::hostServices().createScenarioService();
        int16_t id = scenarios->ImportScenarioRecord(RgnName);
        if (exchangesFault(scenarios->GetScenarioType(id))) {
            std::string half = settings.ReadRegionString(RgnName, "GENERAL", "EorW");
            std::string region = RgnName;
            ImportScenario(id, half, region);
        }
        settings.WriteRegionInt32(RgnName, "PESH", "ScenarioID", id);
    });
}

void RegionExpImp::ExportCurrentScenario()
{
    context::runTrapped(" ExportCurrentScenario", Procedure, [&] {
        auto& settings = context::contextSettingsStore();
        const int32_t id = settings.ReadInt32("PESH", "ScenarioID");
        if (id <= 0) {
            return;
        }
        const auto scenarios = host::hostServices().createScenarioService();
        const std::string type = scenarios->GetScenarioType(static_cast<int16_t>(id));
        scenarios->ExportScenarioRecord(currentRegionName(),
                                        static_cast<int16_t>(id));
        if (exchangesFault(type)) {
            writeFault(settings.ReadString("GENERAL", "EorW"),
                       context::studyRegionContext().RegionFolder, id);
        }
    });
}

void RegionExpImp::ImportCurrentScenario()
{
    context::runTrapped(" ImportCurrentScenario", Procedure, [&] {
        auto& settings = context::contextSettingsStore();
        settings.ReadInt32("PESH", "ScenarioID");
        const auto scenarios = host::hostServices().createScenarioService();
        const int16_t id = scenarios->ImportScenarioRecord(currentRegionName());
        if (exchangesFault(scenarios->GetScenarioType(id))) {
            storeFirstFault(settings.ReadString("GENERAL", "EorW"),
                            context::studyRegionContext().RegionFolder, id);
        }
        settings.WriteInt32("PESH", "ScenarioID", id);
    });
}

void RegionExpImp::ExportCurrentHuScenario(const std::string& RgnName)
{
    context::runTrapped(" ExportCurrentHuScenario", Procedure, [&] {
        const std::string name =
            host::hostServices().createScenarioService()->GetHurricaneScenarioName(RgnName);
        if (name.empty()) {
            return;
        }
        context::ConvertAccessToShapeFile(stormDatabase(), kStormClass, folderOfRegion(RgnName),
                                          kStormShapefile,
                                          std::string(kStormNameField) + " = '" + name + "'");
    });
}

void RegionExpImp::ImportCurrentHuScenario(const std::string& RgnName)
{
    context::runTrapped(" ImportCurrentHuScenario", Procedure, [&] {
        auto& data = context::contextGisDataService();
        const auto tracks =
            featureClassOf(data.OpenFeatureClass(kStormClass, stormDatabase()), "storm tracks");
        const auto carried =
            featureClassOf(data.OpenShapefile(kStormShapefile, folderOfRegion(RgnName)),
                           "storm track shapefile");
        const int nameField = context::requireField(*tracks, kStormNameField);
        const int carriedName = shapefileField(*carried, kStormNameField);
        geodatabase::InsertCursor insert = tracks->insert();
        geodatabase::Cursor cursor = carried->search();
        geodatabase::Row row;
        while (cursor.next(row)) {
            geodatabase::Row track = tracks->createRow();
            track.setShape(row.shape());
            // Without the name the track could not be found again: the host's name of the
            // region's hurricane scenario stands in.
            track.setValue(nameField,
                           carriedName >= 0
                               ? row.value(carriedName)
                               : Variant(host::hostServices()
                                             .createScenarioService()
                                             ->GetHurricaneScenarioName(RgnName)));
            insert.insertRow(track);
        }
        insert.flush();
    });
}

} // namespace brevant::exchange
