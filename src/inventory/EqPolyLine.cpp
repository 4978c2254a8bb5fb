#include "inventory/EqPolyLine.h"

#include "context/CandidateClass.h"
#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "inventory/InventorySupport.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/Workspace.h"

#include <filesystem>

namespace brevant::inventory {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;
using platform::geodatabase::Field;
using platform::geodatabase::FieldType;
using platform::geometry::ShapeType;

namespace {

constexpr int kIdentifierField = 2;
constexpr std::string_view kLevees = "hzLevees";

/// Raises a failure of ClipImportData with its reason, recorded under the tag that carries it.
[[noreturn]] void failClip(const std::string& reason)
{
    throw context::recordError(
        " ClipImportData , " + reason, Procedure,
        std::make_exception_ptr(platform::automation::AutomationError(
            platform::automation::ErrorNumber::InvalidArgument, "Brevant", reason)));
}

geodatabase::Workspace openOrCreate(const std::string& path)
{
    return std::filesystem::exists(path) ? geodatabase::Workspace::open(path)
                                         : geodatabase::Workspace::createGeoPackage(path);
}

} // namespace

EqPolyLine::EqPolyLine() : InventoryClass(ShapeType::Polyline)
{
    context::runTrapped(" EqPoint", platform::automation::LibraryCode::LineClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPolyLine::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPolyLine");
        addMapProperty(t);
        t.method("ImportLineData", &EqPolyLine::ImportLineData)
            .method("ImportData", &EqPolyLine::ImportData)
            .method("MapLinedata", &EqPolyLine::MapLinedata)
            .method("IsValid", &EqPolyLine::IsValid)
            .method("RefreshMap", &EqPolyLine::RefreshMap)
            .method("UpdateTractValue", &EqPolyLine::UpdateTractValue)
            .method("GenerateThmMap", &EqPolyLine::GenerateThmMap)
            .method("GenerateThematicMap", &EqPolyLine::GenerateThematicMap)
            .method("AnalyzeInvtForUserDefinedScenario",
                    &EqPolyLine::AnalyzeInvtForUserDefinedScenario)
            .method("AnalyzeUserDefinedScenario", &EqPolyLine::AnalyzeUserDefinedScenario)
            .method("AnalyzeInvtForProbScenario", &EqPolyLine::AnalyzeInvtForProbScenario)
            .method("AnalyzeProbabilisticScenario", &EqPolyLine::AnalyzeProbabilisticScenario)
            .method("DeleteTempTable", &EqPolyLine::DeleteTempTable);
        return t;
    }();
    return &table;
}

void EqPolyLine::ImportLineData(const std::string& /*sLineTable*/, int16_t /*iDataBaseType*/,
                                bool /*bGeoCode*/, const std::string& /*sSourcedatabasename*/,
                                const std::string& /*sTableName*/)
{
    context::runTrapped(" ImportLineData", Procedure, [] { showObsolete("Obsolete Method"); });
}

void EqPolyLine::ImportData(const std::string& HzTableName, const std::string& SourceDataBaseName,
                            const std::string& SourceTableName)
{
    context::runTrapped(" ImportData", Procedure, [&] {
        const std::string firstPass = "Imp" + HzTableName;
        DeleteTempTable(HzTableName);
        // A failed import leaves its first pass behind; the clip must start from nothing.
        DeleteTempTable(firstPass);
        const auto source = openClass(SourceTableName, SourceDataBaseName);
        const auto counties = regionMap(8);
        const std::string temp = tempDatabasePath();
        const auto countyClipped = ClipImportData(*source, *counties, temp, firstPass);
        const auto clipped = ClipImportData(*countyClipped, *regionMap(0), temp, HzTableName);

        const auto inventory = openCataloguedClass(HzTableName);
        AddFieldsToImportData(*clipped, inventory->fields().field(kIdentifierField).name);
        context::UpdateFieldfromJoin(Variant(clipped), Variant(counties), "CountyFips",
                                     "CountyFips", true);
        ImportFromTemptoSrTable(*clipped, *inventory, HzTableName);
        DeleteTempTable(firstPass);
    });
}

void EqPolyLine::MapLinedata(const std::string& sTable, int16_t iDataBaseType)
{
    mapClass(" MapLinedata", sTable, iDataBaseType);
}

void EqPolyLine::UpdateTractValue(const Variant& vInvHftClass)
{
    context::runTrapped(" UpdateTractValue", Procedure, [&] {
        const auto tracts = openClass(
            "hztract", context::studyRegionContext().RegionFolder + "RegionBndry.mdb");
        context::UpdateFieldfromJoin(vInvHftClass, Variant(tracts), "Tract", "Tract", false);
    });
}

void EqPolyLine::AnalyzeInvtForUserDefinedScenario(const std::string& /*RsId*/,
                                                   const Variant& /*vMapType*/,
                                                   const Variant& /*vProgressBar*/)
{
    context::runTrapped(" AnalyzeInvtForUserDefinedScenario", Procedure,
                        [] { showObsolete("Obsolete method"); });
}

void EqPolyLine::AnalyzeInvtForProbScenario(const std::string& RsId, int16_t RetrunPeriod,
                                            const Variant& vProgressBar)
{
    showObsolete("Obsolete Method");
    analyzeProbabilistic(" AnalyzeInvtForProbScenario", RsId, RetrunPeriod, vProgressBar);
}

void EqPolyLine::GetPipeLineClass(int16_t code)
{
    context::runTrapped(" GetPipeLineClass", Procedure, [&] {
        const int16_t index = code == 4 ? 1 : code == 5 ? 2 : 0;
        const auto pipelines =
            context::contextGisDataService().OpenPipelineClass(index).objectAs<geodatabase::FeatureClass>();
        if (!pipelines) {
            context::throwObjectNotSet("pipeline class");
        }
        context::AddLayer(pipelines, false);
    });
}

void EqPolyLine::AddFieldsToImportData(geodatabase::FeatureClass& clipped,
                                       const std::string& identifier)
{
    context::runTrapped(" AddFieldsToImportData", Procedure, [&] {
        if (clipped.findField("CountyFips") < 0) {
            clipped.addField(Field{"CountyFips", FieldType::String, 5});
            // The literal goes to the calculator as it stands, quotes included.
            context::UpdateFieldValue(clipped, "CountyFips", "\"IMP\"", "");
        }
        if (clipped.findField(identifier) < 0) {
            clipped.addField(Field{identifier, FieldType::String, 8});
        }
    });
}

void EqPolyLine::ImportFromTemptoSrTable(geodatabase::FeatureClass& clipped,
                                         geodatabase::FeatureClass& inventory,
                                         const std::string& HzTableName)
{
    context::runTrapped(" ImportFromTemptoSrTable", Procedure, [&] {
        context::RemoveObjects(clipped, "CountyFips Is Null");

        const int idField = clipped.findField(inventory.fields().field(kIdentifierField).name);
        const auto utility = host::hostServices().createGisUtilityService();
        utility->PrepareIdentifiers(HzTableName);
        {
            geodatabase::Cursor cursor = clipped.update();
            geodatabase::Row row;
            while (cursor.next(row)) {
                row.setValue(idField, utility->GetNextIdentifier());
                cursor.updateRow(row);
            }
        }
        auto& data = context::contextGisDataService();
        data.CopyFeatures(Variant(clipped.shared_from_this()),
                          Variant(inventory.shared_from_this()), "");
        if (platform::automation::equalsIgnoreCase(HzTableName, kLevees)) {
            return;
        }
        const std::string folder = context::studyRegionContext().RegionFolder;
        const auto hazardTable = openClass("Eq" + HzTableName.substr(2) + "hft",
                                           inventory.workspace().path().string());
        data.CopyFeatures(Variant(clipped.shared_from_this()), Variant(hazardTable), "");
        const auto tracts = openClass("hztract", folder + "RegionBndry.mdb");
        context::UpdateFieldUsingIndexJoin(*hazardTable, *tracts, "Tract", "Tract", false);
    });
}

std::shared_ptr<geodatabase::FeatureClass>
EqPolyLine::ClipImportData(const geodatabase::FeatureClass& input,
                           const geodatabase::FeatureClass& clip, const std::string& databasePath,
                           const std::string& outputName)
{
    return context::runTrapped(" ClipImportData", Procedure, [&] {
        if (input.rowCount({}, 1) == 0) {
            failClip(" Table to be imported is empty");
        }
        if (input.extent().intersected(clip.extent()).isEmpty()) {
            failClip(" Table has no objects inside the study region");
        }
        return geodatabase::Geoprocessor::Clip(input, clip,
                                               {openOrCreate(databasePath), outputName});
    });
}

} // namespace brevant::inventory
