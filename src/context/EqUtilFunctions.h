#pragma once

#include "platform/automation/Variant.h"
#include "platform/geodatabase/FieldChecker.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::automation {
class Collection;
}
namespace brevant::platform::carto {
class FeatureLayer;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase

/// Table and layer operations shared by the inventory, analysis, data-map, thematic and
/// exchange code. Every procedure runs under its own error trap with code 0x8004060C: a failure
/// is recorded once in EqErrorLog.txt under the tag named below and raised as an
/// AutomationError (an error an inner trap recorded passes unchanged).
namespace brevant::context {

/// True when the current region's first hazard flag is set together with the second or the
/// third ("General"/"CurrentRegionID" of the settings store, flags from RegionHazardService).
/// Tag " MultiHazardRegion".
bool MultiHazardRegion();

/// Decimals with which the values of a table's field are shown, as GisUtilityService answers.
/// Tag " GetDisplayPrecision".
int16_t GetDisplayPrecision(const std::string& tableName, const std::string& fieldName);

/// Sets `field` to `value` in the rows `whereClause` selects (empty: all rows). The value is
/// text; storing converts it to the field's type. A missing field or a clause that selects
/// nothing changes nothing. Rows are stored as they go, so a failure leaves those before it
/// changed. Tag " Calculating values for the field for table " + table name + "  field " +
/// field + " Expression" + value + " whereclause " + clause.
void UpdateFieldValue(platform::geodatabase::Table& table, const std::string& field,
                      const std::string& value, const std::string& whereClause);

/// Copies `sourceField` of the source feature that contains each target feature into
/// `targetField`. When none contains it, the nearest source feature is taken; with
/// `pointOption` only when it lies at distance exactly 0 (the feature touches it). Features
/// that find no value keep their old one. Nothing happens unless both fields exist at index 1
/// or more. Targets are stored as they go. Tag " UpdateFieldUsingIndexJoin".
void UpdateFieldUsingIndexJoin(platform::geodatabase::FeatureClass& target,
                               const platform::geodatabase::FeatureClass& source,
                               const std::string& targetField, const std::string& sourceField,
                               bool pointOption);

/// UpdateFieldUsingIndexJoin on two variants holding feature classes; Nothing is error 91 and
/// another object error 13. Tag " UpdateFieldfromJoin".
void UpdateFieldfromJoin(const platform::automation::Variant& target,
                         const platform::automation::Variant& source,
                         const std::string& targetField, const std::string& sourceField,
                         bool pointOption);

/// Relates the server table `tableName` to the layer on the identifier field (index 2 of the
/// layer's class, the key on both sides), so its rows show as related data of each feature.
/// Tag " CreateRelateWithSqlTable " + table + " with layer".
void CreateRelateWithSqlTable(platform::carto::FeatureLayer& layer, const std::string& tableName);

/// Joins the server table `tableName` to the layer on the identifier field as a left outer
/// join: every feature stays, and the table's fields show as the layer's (null where no row
/// matches). Tag " JoineLayerToSqlTable " + table + " to layer".
void JoineLayerToSqlTable(platform::carto::FeatureLayer& layer, const std::string& tableName);

/// The workspace kinds a conversion names its input and output with.
enum class WorkspaceFactory { Access, Shapefile };

/// A feature class named by its workspace, not yet opened.
struct FeatureClassName {
    WorkspaceFactory factory = WorkspaceFactory::Access;
    /// The database file, or the folder of a shapefile workspace.
    std::string workspacePath;
    std::string name;
};

/// What a conversion did: features written, fields renamed for the output, and one text
/// "ObjectID " + id + " - " + reason per source feature that could not be written.
struct ConversionReport {
    int64_t converted = 0;
    std::vector<platform::geodatabase::FieldRename> renamed;
    std::vector<std::string> invalidObjects;
};

/// Copies the features of `input` that `whereClause` selects (empty: all) into the new class
/// `output`. The fields are checked for the output workspace first and renamed where it needs
/// (shapefile names of at most 10 characters); writes are flushed every 100 features. Features
/// that cannot be written are reported and skipped; they are not shown to the user. An output
/// that exists already is an error. A missing shapefile folder is created. Tag
/// " ConvertFeatureClass".
ConversionReport ConvertFeatureClass(const FeatureClassName& input, const FeatureClassName& output,
                                     const std::string& whereClause);

/// Copies `className` of the personal geodatabase `databasePath` into the shapefile
/// `shapefileName` of `outputFolder`, replacing a shapefile of that name; the rows copied are
/// those `whereClause` selects. Deleting the old output goes through GisDataService and its
/// failure (no such shapefile, no folder yet) is ignored. Tag " ConvertAccessToShapeFile for  "
/// + class + " from " + database + " to shape file".
ConversionReport ConvertAccessToShapeFile(const std::string& databasePath,
                                          const std::string& className,
                                          const std::string& outputFolder,
                                          const std::string& shapefileName,
                                          const std::string& whereClause);

/// A collection of the elements v(0) to v(upper bound) of a one-dimensional array, whatever its
/// lower bound (an array starting above 0 fails with error 9). Tag " GetCollectionfromVariant".
std::shared_ptr<platform::automation::Collection>
GetCollectionfromVariant(const platform::automation::Variant& values);

/// A collection of v(0, 0) to v(n - 1, 0), the first column of a two-dimensional array. When
/// `count` is 0 it is first set, for the caller too, to the upper bound of the second
/// dimension + 1. Tag " GetCollectionfrom2DArrayVariant".
std::shared_ptr<platform::automation::Collection>
GetCollectionfrom2DArrayVariant(const platform::automation::Variant& values, int16_t& count);

/// Deletes the first top-level layer of CurrentMap named exactly `layerName` (case counts) and
/// asks for a partial refresh of the selection phase; nothing happens when none is named so.
/// Tag " RemoveLayer".
void RemoveLayer(const std::string& layerName);

/// Writes the region's default site conditions (GisUtilityService) into every record:
/// "stype", "lqfsuscat", "lndsuscat" and "w_depth", each through UpdateFieldValue, so a class
/// lacking one of them keeps going. Tag " UpdatePointHftSpecificValues".
void UpdatePointHftSpecificValues(platform::geodatabase::Table& featureClass);

} // namespace brevant::context
