#include "datamaps/EqPolyGon.h"

#include "context/CandidateClass.h"
#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/EqSimpleRenderer.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HazardCodes.h"
#include "host/HostServices.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/UserPrompts.h"
#include "thematic/EqThematicMap.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace brevant::datamaps {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;
using platform::geodatabase::FieldType;
using platform::geometry::ShapeType;

namespace {

constexpr std::string_view kTractLayer = "Study Region Tract";
constexpr std::string_view kBoundaryLayer = "Study Region Boundary";
constexpr std::string_view kNad83 = "GCS_North_American_1983";
constexpr std::string_view kMessageTitle = "KORVAL";

/// Results of the candidate-map checks, as IsGeoDB reports them.
namespace CheckResult {
using namespace context::CandidateResult;
constexpr int16_t BadValueField = 2;
constexpr int16_t WrongCoordinateSystem = 3;
} // namespace CheckResult

/// Thematic map types this class asks for.
namespace ThematicType {
constexpr int16_t WaterDepth = 2;
constexpr int16_t Contours = 5;
constexpr int16_t Soil = 8;
constexpr int16_t Landslide = 10;
constexpr int16_t Liquefaction = 12;
constexpr int16_t TractResults = 18;
constexpr int16_t TractResultsAlternate = 19;
} // namespace ThematicType

/// Ground-motion fields whose contours are out of date when their range is still 0 to 0.
constexpr std::array<std::string_view, 4> kContourFields{"PGA", "PGV", "SA03", "SA10"};

/// A top-level layer of CurrentMap named exactly `name`, whatever it draws.
bool hasLayerNamed(const platform::carto::Map& map, std::string_view name)
{
    for (int index = 0; index < map.layerCount(); ++index) {
        if (map.layer(index)->name() == name) {
            return true;
        }
    }
    return false;
}

/// A feature class of the region's boundary database, opened through the host.
std::shared_ptr<geodatabase::FeatureClass> openRegionClass(const std::string& className)
{
    return context::openFeatureClass(className, context::studyRegionContext().RegionBoundaryPath);
}

/// A data map of the region's boundary database drawn by the thematic builder under the name
/// it chooses; minimum and maximum are those the builder widens.
void drawDataMap(const std::string& tableName, int16_t mapType, double minimum, double maximum)
{
    thematic::CreateThematicMap(tableName, context::studyRegionContext().RegionBoundaryPath,
                                mapType, "type", minimum, maximum, false, true, "");
}

bool isNumeric(FieldType type)
{
    return type == FieldType::SmallInteger || type == FieldType::Integer ||
           type == FieldType::Single || type == FieldType::Double;
}

/// Whether the value field of a candidate map has a type its code allows. The field is found
/// for the code in any letter case, but only a text code written in upper case, as the host
/// writes it, wants text; every other spelling is held to the numeric rule.
bool valueTypeAllowed(const host::HazardCode& code, const std::string& mapType, FieldType type)
{
    const bool textRule = code.value == host::HazardCode::Value::Text && mapType == code.code;
    return textRule ? type == FieldType::String : isNumeric(type);
}

} // namespace

EqPolyGon::EqPolyGon()
{
    context::runTrapped(" EqPolygon ", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPolyGon::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPolyGon");
        addMapProperty(t);
        t.method("AddPointLayer", &EqPolyGon::AddPointLayer)
            .method("MapCensusTractBoundary", &EqPolyGon::MapCensusTractBoundary)
            .method("MapStudyregionBoundary", &EqPolyGon::MapStudyregionBoundary)
            .method("MapSoilDataMap", &EqPolyGon::MapSoilDataMap)
            .method("MapLqfDataMap", &EqPolyGon::MapLqfDataMap)
            .method("MapLndDataMap", &EqPolyGon::MapLndDataMap)
            .method("MapWAterDepthDataMap", &EqPolyGon::MapWAterDepthDataMap)
            .method("IsValid", &EqPolyGon::IsValid)
            .method("IsValidDatamap", &EqPolyGon::IsValidDatamap)
            .method("RefreshMap", &EqPolyGon::RefreshMap)
            .method("GenerateThmMap", &EqPolyGon::GenerateThmMap)
            .method("GenerateThematicMap", &EqPolyGon::GenerateThematicMap)
            .method("AddDefaultMaps", &EqPolyGon::AddDefaultMaps)
            .method("CreateTractHFT", &EqPolyGon::CreateTractHFT)
            .method("AnalyzeInvtForUserDefinedScenario",
                    &EqPolyGon::AnalyzeInvtForUserDefinedScenario)
            .method("AnalyzeProbScenarioforTract", &EqPolyGon::AnalyzeProbScenarioforTract)
            .method("CreatContourGrid", &EqPolyGon::CreatContourGrid)
            .method("MapMarPlotFootPrint", &EqPolyGon::MapMarPlotFootPrint)
            .method("MapFloodView", &EqPolyGon::MapFloodView);
        return t;
    }();
    return &table;
}

void EqPolyGon::AddPointLayer(std::shared_ptr<geodatabase::FeatureClass> pClass)
{
    context::AddLayer(pClass, false);
}

void EqPolyGon::MapCensusTractBoundary()
{
    context::runTrapped(" for census tract ", MapLayer, [] {
        if (hasLayerNamed(context::currentMapOrFail(), kTractLayer)) {
            return;
        }
        context::AddInventoryLayer(openRegionClass("hztract"), false, 3, false,
                                   std::string(kTractLayer));
    });
}

void EqPolyGon::MapStudyregionBoundary()
{
    context::runTrapped(" for study region boundary ", MapLayer, [] {
        auto& map = context::currentMapOrFail();
        if (hasLayerNamed(map, kBoundaryLayer)) {
            return;
        }
        auto layer = std::make_shared<platform::carto::FeatureLayer>();
        layer->setFeatureClass(openRegionClass("hzboundary"));
        layer->setVisible(true);
        layer->setName(std::string(kBoundaryLayer));
        context::CreateRendrer(*layer, layer->name());
        map.addLayer(layer);
        layer->setSelectable(false);
    });
}

void EqPolyGon::MapSoilDataMap()
{
    context::runTrapped(" for soil map", MapLayer,
                        [] { drawDataMap("eqsrsoil", ThematicType::Soil, 0.0, 0.0); });
}

void EqPolyGon::MapLqfDataMap()
{
    context::runTrapped(" for liquefaction map", MapLayer,
                        [] { drawDataMap("eqsrlqf", ThematicType::Liquefaction, 0.0, 0.0); });
}

void EqPolyGon::MapLndDataMap()
{
    context::runTrapped("for landslide map", MapLayer,
                        [] { drawDataMap("eqsrlnd", ThematicType::Landslide, 0.0, 0.0); });
}

void EqPolyGon::MapWAterDepthDataMap()
{
    context::runTrapped(" for water map", MapLayer, [] {
        // The host overwrites both ends; these are what a host that leaves them keeps.
        double minimum = 5.0;
        double maximum = 5.0;
        context::contextGisDataService().GetFieldRange("RegionBndry.mdb", "eqsrwdepth", "Type",
                                                       minimum, maximum);
        drawDataMap("eqsrwdepth", ThematicType::WaterDepth, minimum, maximum);
    });
}

void EqPolyGon::IsValid(const std::string& MDBName, const std::string& TableName,
                        const std::string& MDBPath, Variant& NRecs, int16_t& IsGeoDB)
{
    context::CheckCandidateClass(MDBName, TableName, MDBPath, NRecs, IsGeoDB, ShapeType::Polygon);
}

void EqPolyGon::IsValidDatamap(const std::string& MDBName, const std::string& TableName,
                               const std::string& MDBPath, Variant& NRecs, int16_t& IsGeoDB,
                               std::string& MapType)
{
    IsGeoDB = CheckResult::NotOpened;
    context::runQuietly([&] {
        const auto featureClass = context::OpenCandidateClass(MDBPath + MDBName, TableName);
        if (featureClass->spatialReference().name() != kNad83) {
            IsGeoDB = CheckResult::WrongCoordinateSystem;
            return;
        }
        if (featureClass->shapeType() != ShapeType::Polygon) {
            IsGeoDB = CheckResult::WrongShapeType;
            return;
        }
        const auto code = host::findHazardCode(MapType);
        const int index = code ? featureClass->findField(code->valueField) : -1;
        if (index < 0 ||
            !valueTypeAllowed(*code, MapType, featureClass->fields().field(index).type)) {
            IsGeoDB = CheckResult::BadValueField;
            return;
        }
        NRecs = context::CandidateFeatureCount(*featureClass);
        IsGeoDB = CheckResult::Valid;
    });
}

void EqPolyGon::RefreshMap()
{
    context::runTrapped(" refreshing view", MapLayer, [] { context::RefreshView(); });
}

void EqPolyGon::GenerateThmMap(const std::string& /*Sqltable*/, int16_t /*iDataBaseType*/,
                               int16_t& /*ThmMapType*/, std::string& /*FieldNameToMap*/)
{
    context::runTrapped(" GenerateThmMap", Procedure, [] {
        // No title of its own: the prompts show their default one.
        platform::ui::userPrompts().messageBox("This Method is obsolete , Call GenerateThematicMap",
                                               "", platform::ui::MessageButtons::Ok);
    });
}

void EqPolyGon::GenerateThematicMap(const std::string& Sqltable, int16_t /*iDataBaseType*/,
                                    int16_t& ThmMapType, std::string& FieldNameToMap,
                                    double& dMInVal, double& dMaxVal)
{
    const std::string tag = " GenerateThematicMap for " + Sqltable + " column " + FieldNameToMap;
    context::runTrapped(tag, Procedure, [&] {
        const std::string& database = context::studyRegionContext().RegionBoundaryPath;
        if (ThmMapType == ThematicType::Contours) {
            const bool emptyRange = dMInVal == 0.0 && dMaxVal == 0.0;
            const bool groundMotion = std::find(kContourFields.begin(), kContourFields.end(),
                                                FieldNameToMap) != kContourFields.end();
            if (emptyRange && groundMotion) {
                platform::ui::userPrompts().messageBox(
                    "Contour Analysis for ground motion needs to be Re-Run.",
                    std::string(kMessageTitle), platform::ui::MessageButtons::Ok);
                return;
            }
            thematic::CreateThematicMap(Sqltable, database, ThmMapType, FieldNameToMap, dMInVal,
                                        dMaxVal, true, true, "");
            return;
        }
        if (ThmMapType == ThematicType::TractResults ||
            ThmMapType == ThematicType::TractResultsAlternate) {
            ThmMapType = ThmMapType == ThematicType::TractResults ? 2 : 4;
            const std::string valuesTable =
                host::hostServices().createGisUtilityService()->GetResultTableName(Sqltable);
            const int16_t precision = context::GetDisplayPrecision(valuesTable, FieldNameToMap);
            thematic::CreateThmMapForTract("EqTractThMap", database, ThmMapType,
                                           Sqltable + "_" + FieldNameToMap, dMInVal, dMaxVal,
                                           precision, false);
            return;
        }
        // Values of the "qarv" tables are shown with one decimal.
        const int16_t precision = Sqltable.compare(0, 4, "qarv") == 0
                                      ? int16_t{1}
                                      : context::GetDisplayPrecision(Sqltable, FieldNameToMap);
        thematic::CreateThmMapForTract(Sqltable, database, ThmMapType, FieldNameToMap, dMInVal,
                                       dMaxVal, precision, false);
    });
}

void EqPolyGon::AddDefaultMaps()
{
    context::runTrapped(" AddDefaultMaps", Procedure, [this] {
        if (context::studyRegionContext().AggLevel == 3) {
            MapCensusTractBoundary();
            MapStudyregionBoundary();
        } else {
            MapStudyregionBoundary();
            MapCensusTractBoundary();
        }
        context::RefreshView();
    });
}

} // namespace brevant::datamaps
