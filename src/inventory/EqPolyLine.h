#pragma once

#include "inventory/InventoryClass.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::inventory {

/// Line inventory of the study region: import, clipping, mapping and analysis of line classes.
///
/// Lines are cut at the region boundary rather than kept or dropped whole, and every line class
/// but "hzLevees" has a hazard table "Eq" + S + "hft" whose records carry the tract. Failures
/// end a member through its trap as EqPoint's do (0x8004060C; 0x80040608 for MapLinedata and
/// GenerateThematicMap).
class EqPolyLine : public InventoryClass {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPolyLine();

    std::string_view className() const override { return "EqPolyLine"; }
    const platform::automation::MemberTable* members() const override;

    /// Obsolete: tells the user "Obsolete Method" and does nothing else.
    void ImportLineData(const std::string& sLineTable, int16_t iDataBaseType, bool bGeoCode,
                        const std::string& sSourcedatabasename, const std::string& sTableName);
    /// Imports the lines of `SourceTableName` of `SourceDataBaseName` into the inventory class
    /// `HzTableName`: clipped by the region's counties into temp.mdb as "Imp" + HzTableName,
    /// that clipped by the boundary into temp.mdb as HzTableName, "CountyFips" filled from the
    /// counties, then moved into the class and its hazard table (ImportFromTemptoSrTable).
    /// An empty source, or one whose extent misses the counties' or the boundary's, fails with
    /// the reason at the end of the error's description. Tag " ImportData".
    void ImportData(const std::string& HzTableName, const std::string& SourceDataBaseName,
                    const std::string& SourceTableName);
    /// Puts the class on the map (context::AddInventoryLayer, selectable and visible). Tag
    /// " MapLinedata".
    void MapLinedata(const std::string& sTable, int16_t iDataBaseType);
    /// Fills "Tract" of a line hazard table from the region's tracts: the tract that contains
    /// each record or, failing that, the nearest at any distance. Tag " UpdateTractValue".
    void UpdateTractValue(const platform::automation::Variant& vInvHftClass);
    /// Obsolete: tells the user "Obsolete method" and does nothing else.
    void AnalyzeInvtForUserDefinedScenario(const std::string& RsId,
                                           const platform::automation::Variant& vMapType,
                                           const platform::automation::Variant& vProgressBar);
    /// Tells the user "Obsolete Method", then runs the probabilistic analysis as
    /// AnalyzeProbabilisticScenario does. Tag " AnalyzeInvtForProbScenario".
    void AnalyzeInvtForProbScenario(const std::string& RsId, int16_t RetrunPeriod,
                                    const platform::automation::Variant& vProgressBar);

private:
    /// Adds the pipeline class of a code to the map, not selectable: 4 gives index 1, 5 gives
    /// 2, any other code 0. Tag " GetPipeLineClass".
    void GetPipeLineClass(int16_t code);
    /// The missing "CountyFips" (text of 5, set to the literal "IMP" with its quotes) and
    /// identifier (text of 8) of the clipped class. Tag " AddFieldsToImportData".
    void AddFieldsToImportData(platform::geodatabase::FeatureClass& clipped,
                               const std::string& identifier);
    /// Removes the clipped lines outside the region, gives the rest new identifiers and
    /// appends them to the class and, but for "hzLevees", to its hazard table, whose "Tract"
    /// the region's tracts then fill. Tag " ImportFromTemptoSrTable".
    void ImportFromTemptoSrTable(platform::geodatabase::FeatureClass& clipped,
                                 platform::geodatabase::FeatureClass& inventory,
                                 const std::string& HzTableName);
    /// Clips `input` by the polygons of `clip` into the new class `outputName` of the personal
    /// geodatabase `databasePath`. Fails with the reason " Table to be imported is empty" or
    /// " Table has no objects inside the study region" (extents only) in the description.
    /// Tag " ClipImportData".
    std::shared_ptr<platform::geodatabase::FeatureClass>
    ClipImportData(const platform::geodatabase::FeatureClass& input,
                   const platform::geodatabase::FeatureClass& clip,
                   const std::string& databasePath, const std::string& outputName);
};

} // namespace brevant::inventory
