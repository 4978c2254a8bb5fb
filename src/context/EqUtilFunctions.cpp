#include "context/EqUtilFunctions.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/RegionHazardService.h"
#include "host/RegionSettingsStore.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/FeatureDataConverter.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geodatabase/ValueTransfer.h"
#include "platform/geodatabase/Workspace.h"

#include <cstdio>

namespace brevant::context {

namespace geodatabase = platform::geodatabase;
using platform::automation::Collection;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;

namespace {

std::shared_ptr<geodatabase::FeatureClass> featureClassOf(const Variant& value, const char* role)
{
    auto featureClass = value.objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        throwObjectNotSet(role);
    }
    return featureClass;
}

// What relating and joining share: the layer's class related to a server table on the
// identifier field, the key on both sides.
std::shared_ptr<const geodatabase::RelationshipClass>
relateToServerTable(platform::carto::FeatureLayer& layer, const std::string& tableName)
{
    const auto& featureClass = layer.featureClass();
    if (!featureClass) {
        throwObjectNotSet("the layer's feature class");
    }
    const std::string key = featureClass->fields().field(2).name;
    const Variant table =
        contextGisDataService().OpenServerTable(studyRegionContext().RegionDatabaseName, tableName);
    Variant relationship;
    CreateRelateClass(Variant(featureClass), key, table, key, relationship);
    return relationship.objectAs<geodatabase::RelationshipClass>();
}

geodatabase::Workspace openWorkspace(const FeatureClassName& name, bool forOutput)
{
    if (name.factory == WorkspaceFactory::Shapefile) {
        return forOutput ? geodatabase::Workspace::openShapefileFolder(name.workspacePath)
                         : geodatabase::Workspace::open(name.workspacePath, true);
    }
    return geodatabase::Workspace::open(name.workspacePath, !forOutput);
}

// The text a single-precision number has when the host turns it into text: seven significant
// digits, so 0.3 stays "0.3" instead of showing its binary expansion.
std::string singleText(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

} // namespace

bool MultiHazardRegion()
{
    return runTrapped(" MultiHazardRegion", Procedure, [] {
        const int16_t region =
            Variant(contextSettingsStore().ReadInt32("General", "CurrentRegionID")).toInt16();
        bool first = false;
        bool second = false;
        bool third = false;
        host::hostServices().createRegionHazardService()->GetHazardFlags(region, first, second,
                                                                         third);
        return first && (second || third);
    });
}

int16_t GetDisplayPrecision(const std::string& tableName, const std::string& fieldName)
{
    return runTrapped(" GetDisplayPrecision", Procedure, [&] {
        return host::hostServices().createGisUtilityService()->GetDisplayPrecision(tableName,
                                                                                   fieldName);
    });
}

void UpdateFieldValue(geodatabase::Table& table, const std::string& field, const std::string& value,
                      const std::string& whereClause)
{
    const std::string tag = " Calculating values for the field for table " + table.name() +
                            "  field " + field + " Expression" + value + " whereclause " +
                            whereClause;
    runTrapped(tag, Procedure, [&] {
        const int index = table.findField(field);
        if (index < 0) {
            return;
        }
        const auto filter = geodatabase::QueryFilter::where(whereClause);
        // Only whether there are any matters; a full count costs a pass over the table.
        if (table.rowCount(filter, 1) == 0) {
            return;
        }
        table.calculate(index, Variant(value), filter);
    });
}

void UpdateFieldUsingIndexJoin(geodatabase::FeatureClass& target,
                               const geodatabase::FeatureClass& source,
                               const std::string& targetField, const std::string& sourceField,
                               bool pointOption)
{
    runTrapped(" UpdateFieldUsingIndexJoin", Procedure, [&] {
        const int sourceIndex = source.findField(sourceField);
        const int targetIndex = target.findField(targetField);
        // Index 0 is the object identifier, never a value to copy.
        if (sourceIndex < 1 || targetIndex < 1) {
            return;
        }
        // The platform's transfer is this rule exactly (containing first, then nearest; with
        // the point option only at distance 0). Its index covers the whole source, not just the
        // target's extent: a site near the edge of that extent may be nearest to a polygon
        // lying beyond it.
        geodatabase::transferValues(target, source, targetIndex, sourceIndex, pointOption);
    });
}

void UpdateFieldfromJoin(const Variant& target, const Variant& source,
                         const std::string& targetField, const std::string& sourceField,
                         bool pointOption)
{
    runTrapped(" UpdateFieldfromJoin", Procedure, [&] {
        auto targetClass = featureClassOf(target, "target feature class");
        auto sourceClass = featureClassOf(source, "source feature class");
        UpdateFieldUsingIndexJoin(*targetClass, *sourceClass, targetField, sourceField,
                                  pointOption);
    });
}

void CreateRelateWithSqlTable(platform::carto::FeatureLayer& layer, const std::string& tableName)
{
    runTrapped(" CreateRelateWithSqlTable " + tableName + " with layer", Procedure,
               [&] { layer.addRelationshipClass(relateToServerTable(layer, tableName)); });
}

void JoineLayerToSqlTable(platform::carto::FeatureLayer& layer, const std::string& tableName)
{
    runTrapped(" JoineLayerToSqlTable " + tableName + " to layer", Procedure, [&] {
        layer.displayRelationshipClass(relateToServerTable(layer, tableName),
                                       geodatabase::JoinedTable::Kind::LeftOuter);
    });
}

ConversionReport ConvertFeatureClass(const FeatureClassName& input, const FeatureClassName& output,
                                     const std::string& whereClause)
{
    return runTrapped(" ConvertFeatureClass", Procedure, [&] {
        const auto inputClass = openWorkspace(input, false).openFeatureClass(input.name);
        geodatabase::Workspace outputWorkspace = openWorkspace(output, true);
        constexpr int kFlushInterval = 100;
        auto conversion = geodatabase::convertFeatureClass(
            *inputClass, geodatabase::QueryFilter::where(whereClause), outputWorkspace, output.name,
            kFlushInterval);
        ConversionReport report;
        report.converted = conversion.converted;
        report.renamed = std::move(conversion.renamed);
        for (const auto& invalid : conversion.invalid) {
            report.invalidObjects.push_back("ObjectID " + std::to_string(invalid.oid) + " - " +
                                            invalid.description);
        }
        return report;
    });
}

ConversionReport ConvertAccessToShapeFile(const std::string& databasePath,
                                          const std::string& className,
                                          const std::string& outputFolder,
                                          const std::string& shapefileName,
                                          const std::string& whereClause)
{
    const std::string tag =
        " ConvertAccessToShapeFile for  " + className + " from " + databasePath + " to shape file";
    return runTrapped(tag, Procedure, [&] {
        try {
            contextGisDataService().DeleteFeatureClass(shapefileName, outputFolder);
        } catch (...) {
            // Usually there is nothing to delete yet; a real obstacle resurfaces when the
            // conversion finds the output still there.
        }
        return ConvertFeatureClass({WorkspaceFactory::Access, databasePath, className},
                                   {WorkspaceFactory::Shapefile, outputFolder, shapefileName},
                                   whereClause);
    });
}

std::shared_ptr<Collection> GetCollectionfromVariant(const Variant& values)
{
    return runTrapped(" GetCollectionfromVariant", Procedure, [&] {
        const auto& array = values.array();
        auto collection = std::make_shared<Collection>();
        // From 0 whatever the array's lower bound: callers pass zero-based arrays.
        for (int32_t i = 0; i <= array.upperBound(1); ++i) {
            collection->add(array.at(i));
        }
        return collection;
    });
}

std::shared_ptr<Collection> GetCollectionfrom2DArrayVariant(const Variant& values, int16_t& count)
{
    return runTrapped(" GetCollectionfrom2DArrayVariant", Procedure, [&] {
        const auto& array = values.array();
        if (count == 0) {
            count = Variant(array.upperBound(2) + 1).toInt16();
        }
        auto collection = std::make_shared<Collection>();
        for (int32_t i = 1; i <= count; ++i) {
            collection->add(array.at(i - 1, 0));
        }
        return collection;
    });
}

void RemoveLayer(const std::string& layerName)
{
    runTrapped(" RemoveLayer", Procedure, [&] {
        auto& map = currentMapOrFail();
        for (const auto& layer : map.layers()) {
            if (layer->name() == layerName) {
                // A copy: deleting changes the list the reference points into.
                const auto found = layer;
                map.deleteLayer(found);
                map.partialRefresh(platform::carto::ViewPhase::GeoSelection);
                return;
            }
        }
    });
}

void UpdatePointHftSpecificValues(geodatabase::Table& featureClass)
{
    runTrapped(" UpdatePointHftSpecificValues", Procedure, [&] {
        std::string soilType;
        int16_t liquefaction = 0;
        int16_t landslide = 0;
        float waterDepth = 0.0f;
        host::hostServices().createGisUtilityService()->GetDefaultSiteValues(soilType, liquefaction,
                                                                             landslide, waterDepth);
        UpdateFieldValue(featureClass, "stype", soilType, "");
        UpdateFieldValue(featureClass, "lqfsuscat", std::to_string(liquefaction), "");
        UpdateFieldValue(featureClass, "lndsuscat", std::to_string(landslide), "");
        UpdateFieldValue(featureClass, "w_depth", singleText(waterDepth), "");
    });
}

} // namespace brevant::context
