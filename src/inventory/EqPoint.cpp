#include "inventory/EqPoint.h"

#include "context/CandidateClass.h"
#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "context/SyncSQL.h"
#include "datamaps/EqDataMaps.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/RegionSettingsStore.h"
#include "inventory/InventorySupport.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <array>

namespace brevant::inventory {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;
using platform::geodatabase::Field;
using platform::geodatabase::FieldType;
using platform::geometry::ShapeType;

namespace {

constexpr std::string_view kPendingClause = "Tract = 'IMPORT'";
// "Tract = " and two double-quote characters: the records no tract took.
constexpr std::string_view kOutsideClause = "Tract = \"\"";
constexpr int kIdentifierField = 2;
constexpr std::array<std::string_view, 5> kInventoryDatabases{"trn.mdb", "util.mdb", "ef.mdb",
                                                              "hplf.mdb", "uds.mdb"};

std::shared_ptr<geodatabase::FeatureClass> classOf(const Variant& value)
{
    auto featureClass = value.objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        context::throwObjectNotSet("inventory class");
    }
    return featureClass;
}

/// Sets a per-object flag for the rest of a call, whatever way the call ends.
template <class T> class Scoped {
public:
    Scoped(T& flag, T value, T cleared) : m_flag(flag), m_cleared(cleared) { m_flag = value; }
    ~Scoped() { m_flag = m_cleared; }
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;

private:
    T& m_flag;
    T m_cleared;
};

/// The identifiers of UpdateMovedObjects: a collection as the host passes it, or an array.
std::vector<std::string> identifiersOf(const Variant& ids)
{
    std::vector<std::string> texts;
    if (ids.type() == platform::automation::VariantType::Array) {
        const auto& array = ids.array();
        for (int32_t i = array.lowerBound(1); i <= array.upperBound(1); ++i) {
            texts.push_back(array.at(i).toString());
        }
        return texts;
    }
    for (const Variant& id : *ids.collection()) {
        texts.push_back(id.toString());
    }
    return texts;
}

std::string lowered(std::string text)
{
    return platform::automation::toLower(text);
}

} // namespace

EqPoint::EqPoint() : InventoryClass(ShapeType::Point)
{
    context::runTrapped(" EqPoint", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqPoint::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqPoint");
        addMapProperty(t);
        t.method("ImportPointData", &EqPoint::ImportPointData)
            .method("ImportData", &EqPoint::ImportData)
            .method("UpdateMovedObjects", &EqPoint::UpdateMovedObjects)
            .method("UpdateMapData", &EqPoint::UpdateMapData)
            .method("SyncronizePointMap", &EqPoint::SyncronizePointMap)
            .method("SyncronizePointMapUsingDBName", &EqPoint::SyncronizePointMapUsingDBName)
            .method("MapPointdata", &EqPoint::MapPointdata)
            .method("IsValid", &EqPoint::IsValid)
            .method("RefreshMap", &EqPoint::RefreshMap)
            .method("GenerateThmMap", &EqPoint::GenerateThmMap)
            .method("GenerateThematicMap", &EqPoint::GenerateThematicMap)
            .method("AnalyzeInvtForUserDefinedScenario",
                    &EqPoint::AnalyzeInvtForUserDefinedScenario)
            .method("AnalyzeUserDefinedScenario", &EqPoint::AnalyzeUserDefinedScenario)
            .method("AnalyzeInvtForProbScenario", &EqPoint::AnalyzeInvtForProbScenario)
            .method("AnalyzeProbabilisticScenario", &EqPoint::AnalyzeProbabilisticScenario)
            .method("DeleteTempTable", &EqPoint::DeleteTempTable)
            .method("IsEditable", &EqPoint::IsEditable);
        return t;
    }();
    return &table;
}

void EqPoint::ImportPointData(const std::string& sPointTable, int16_t iDataBaseType,
                              bool bGeoCode, const std::string& sSourcedatabasename,
                              const std::string& sTableName)
{
    showObsolete("Obsolete Method");
    context::runTrapped(" ImportPointData", Procedure, [&] {
        auto points = openClass(sPointTable, context::InventoryDatabasePath(iDataBaseType));
        if (!bGeoCode) {
            const auto source = openClass(sTableName, sSourcedatabasename);
            context::contextGisDataService().CopyFeatures(Variant(source), Variant(points), "");
        }
        // The older path's own clauses ("Tract = " and one double quote, "Tract = IMPORT") are
        // no clauses; the appended records are those without a tract, the geocoded ones those
        // marked for import, as the current members select them.
        const std::string clause =
            bGeoCode ? std::string(kPendingClause) : "Tract Is Null Or Tract = 'IMPORT'";
        SynchronizeMap(*points, clause, bGeoCode, true, false, false);
    });
}

void EqPoint::ImportData(const std::string& HzTableName, const std::string& SourceDataBaseName,
                         const std::string& SourceTableName)
{
    context::runTrapped(" ImportData", Procedure, [&] {
        DeleteTempTable(HzTableName);
        const auto source = openClass(SourceTableName, SourceDataBaseName);
        const auto scratch = CreateTableInTempData(HzTableName, *source);
        auto& data = context::contextGisDataService();
        data.CopyFeatures(Variant(source), Variant(scratch), "");
        const auto inventory = openCataloguedClass(HzTableName);
        AddFieldsToImportData(*scratch, *inventory);

        {
            const Scoped<int> idField(
                m_importIdField,
                scratch->findField(inventory->fields().field(kIdentifierField).name), -1);
            const Scoped<bool> importing(m_importing, true, false);
            SynchronizeMap(*scratch, "", false, true, false, true);
        }
        data.CopyFeatures(Variant(scratch), Variant(inventory), "");
    });
}

void EqPoint::UpdateMovedObjects(Variant& vInvtClass, const Variant& ObjIds)
{
    context::runTrapped(" UpdateMovedObjects", Procedure, [&] {
        const std::vector<std::string> ids = identifiersOf(ObjIds);
        if (ids.empty()) {
            return;
        }
        const auto points = classOf(vInvtClass);
        std::string clause = points->fields().field(kIdentifierField).name + " In  ('" + ids[0] + "'";
        for (std::size_t i = 1; i < ids.size(); ++i) {
            clause += ",'" + ids[i] + "'";
        }
        clause += ")";
        SynchronizeMap(*points, clause, false, false, true, false);
    });
}

void EqPoint::UpdateMapData(const Variant& vInvtClass)
{
    context::runTrapped(" UpdateMapData", Procedure, [&] {
        SynchronizeMap(*classOf(vInvtClass), std::string(kPendingClause), false, true, false,
                       false);
    });
}

void EqPoint::SyncronizePointMap(const std::string& sPointTable, int16_t iDataBaseType)
{
    context::runTrapped(" SyncronizePointMap", Procedure, [&] {
        const auto points = openClass(sPointTable, context::InventoryDatabasePath(iDataBaseType));
        SynchronizeMap(*points, std::string(kPendingClause), true, true, false, false);
        std::string table = sPointTable;
        datamaps::EqDataMaps().SyncInvtHft(table);
    });
}

void EqPoint::SyncronizePointMapUsingDBName(const std::string& sPointTable,
                                            const std::string& MDBNameWithPath)
{
    context::runTrapped(" SyncronizePointMapUsingDBName", Procedure, [&] {
        const auto points = openClass(sPointTable, MDBNameWithPath);
        const Scoped<bool> reporting(m_reportAddedRecord, true, false);
        SynchronizeMap(*points, std::string(kPendingClause), true, true, false, true);
    });
}

void EqPoint::MapPointdata(const std::string& sTable, int16_t iDataBaseType)
{
    mapClass(" MapPointdata", sTable, iDataBaseType);
}

void EqPoint::AnalyzeInvtForUserDefinedScenario(const std::string& /*RsId*/,
                                                const Variant& /*vMapType*/,
                                                const Variant& /*vProgressBar*/)
{
    showObsolete("Obsolete method");
}

void EqPoint::AnalyzeInvtForProbScenario(const std::string& /*RsId*/, int16_t /*RetrunPeriod*/,
                                         const Variant& /*vProgressBar*/)
{
    // The older entry point was left with an empty body.
}

void EqPoint::IsEditable(Variant& vFeatureLayer, bool& pEdit)
{
    context::runTrapped(" IsEditable", Procedure, [&] {
        const auto layer = vFeatureLayer.objectAs<platform::carto::FeatureLayer>();
        if (!layer || !layer->featureClass()) {
            context::throwObjectNotSet("feature layer");
        }
        const std::string path = lowered(layer->featureClass()->workspace().path().string());
        const std::string folder = context::studyRegionContext().RegionFolder;
        pEdit = false;
        for (const auto database : kInventoryDatabases) {
            if (path == lowered(folder + std::string(database))) {
                pEdit = true;
            }
        }
    });
}

void EqPoint::SynchronizeMap(geodatabase::FeatureClass& featureClass,
                             const std::string& whereClause, bool fromCoordinates,
                             bool assignIds, bool reportMoved, bool skipEditSync)
{
    context::runTrapped(" SynchronizeMap", Procedure, [&] {
        const TractLookup tracts(*regionMap(1));
        const int tractField = context::requireField(featureClass, "Tract");
        const int latitudeField = context::requireField(featureClass, "Latitude");
        const int longitudeField = context::requireField(featureClass, "Longitude");
        const std::string tableName = featureClass.aliasName();
        const auto utility = host::hostServices().createGisUtilityService();
        const int idField = m_importing ? m_importIdField : kIdentifierField;

        int64_t walked = 0;
        {
            geodatabase::QueryFilter filter = geodatabase::QueryFilter::where(whereClause);
            if (!fromCoordinates) {
                // Only these fields change; a shape built from the coordinates needs the whole
                // row.
                for (const int field : {tractField, latitudeField, longitudeField, idField}) {
                    if (field > 1) {
                        filter.subFields.push_back(featureClass.fields().field(field).name);
                    }
                }
            }
            geodatabase::Cursor cursor = featureClass.update(filter);
            if (!fromCoordinates) {
                utility->PrepareIdentifiers(tableName);
            }
            geodatabase::Row row;
            while (cursor.next(row)) {
                ++walked;
                platform::geometry::Point location;
                if (!fromCoordinates) {
                    if (row.shape().isNull() || row.shape().isEmpty()) {
                        throw platform::automation::AutomationError(
                            platform::automation::ErrorNumber::InvalidArgument, "Brevant",
                            "record " + std::to_string(row.oid()) + " of " + tableName +
                                " has no point");
                    }
                    location = row.shape().firstPoint();
                    row.setValue(longitudeField, location.x);
                    row.setValue(latitudeField, location.y);
                    if (assignIds) {
                        row.setValue(idField, utility->GetNextIdentifier());
                    }
                } else {
                    location = {row.value(longitudeField).toDouble(),
                                row.value(latitudeField).toDouble()};
                    row.setShape(platform::geometry::Geometry::point(location));
                }
                const std::string tract = tracts.tractOf(location);
                row.setValue(tractField, tract);
                cursor.updateRow(row);
                if (m_reportAddedRecord) {
                    context::contextSettingsStore().WriteInt32("General", "AddRecord",
                                                               tract.empty() ? 0 : 1);
                }
            }
        }
        if (walked > 0) {
            context::RemoveObjects(featureClass, std::string(kOutsideClause));
        }
        if (assignIds && !skipEditSync) {
            context::SyncTabEditedFromMap(tableName, walked > 0);
        }
        if (reportMoved) {
            context::SyncLocMovedFromMap(tableName);
        }
    });
}

void EqPoint::AddFieldsToImportData(geodatabase::FeatureClass& scratch,
                                    const geodatabase::FeatureClass& inventory)
{
    context::runTrapped(" AddFieldsToImportData", Procedure, [&] {
        if (scratch.findField("Tract") < 0) {
            scratch.addField(Field{"Tract", FieldType::String, 11});
        }
        const std::string identifier = inventory.fields().field(kIdentifierField).name;
        if (scratch.findField(identifier) < 0) {
            scratch.addField(Field{identifier, FieldType::String, 8});
        }
        for (const char* name : {"Latitude", "Longitude"}) {
            if (scratch.findField(name) < 0) {
                scratch.addField(Field{name, FieldType::Double});
            }
        }
    });
}

std::shared_ptr<geodatabase::FeatureClass>
EqPoint::CreateTableInTempData(const std::string& HzTableName,
                               const geodatabase::FeatureClass& source)
{
    return context::runTrapped(" CreateTableInTempData", Procedure, [&] {
        const std::string path = tempDatabasePath();
        auto workspace = std::filesystem::exists(path) ? geodatabase::Workspace::open(path)
                                                       : geodatabase::Workspace::createGeoPackage(path);
        // Written and read once in full: a spatial index would only slow both.
        return workspace.createFeatureClass(HzTableName, source.fields(), source.shapeType(),
                                            platform::geometry::SpatialReference::nad83(),
                                            "Shape", false);
    });
}

} // namespace brevant::inventory
