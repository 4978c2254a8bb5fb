#pragma once

#include "inventory/InventoryClass.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::inventory {

/// Point inventory of the study region: import, tract assignment, mapping and analysis of point
/// classes.
///
/// Every record carries the census tract it lies in ("Tract", text of 11): "IMPORT" marks a
/// record still waiting for its geometry or tract, and a record that falls in no tract lies
/// outside the region and is deleted once the user was told how many there are. Failures end a
/// member through its trap: recorded once in EqErrorLog.txt under the member's tag and raised
/// with 0x8004060C (0x80040608 for MapPointdata and GenerateThematicMap). Records a failed
/// member stored before the failure stay changed.
class EqPoint : public InventoryClass {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPoint();

    std::string_view className() const override { return "EqPoint"; }
    const platform::automation::MemberTable* members() const override;

    /// Obsolete: tells the user "Obsolete Method", then runs the older import on `sPointTable`
    /// of the database `iDataBaseType` names: without geocoding, `sTableName` of
    /// `sSourcedatabasename` is appended first and the records without a tract take
    /// coordinates, identifiers and tracts from their geometry; with geocoding the records
    /// marked "IMPORT" take geometry and tract from their coordinates. Tag " ImportPointData".
    void ImportPointData(const std::string& sPointTable, int16_t iDataBaseType, bool bGeoCode,
                         const std::string& sSourcedatabasename, const std::string& sTableName);
    /// Imports the points of `SourceTableName` of `SourceDataBaseName` into the inventory class
    /// `HzTableName`: through a scratch copy in temp.mdb that gets the class's fields, new
    /// identifiers, coordinates and tracts from its geometry, and loses the records outside
    /// the region; then appended to the class. Tag " ImportData".
    void ImportData(const std::string& HzTableName, const std::string& SourceDataBaseName,
                    const std::string& SourceTableName);
    /// Gives the records whose identifiers `ObjIds` lists (a collection, or an array, of
    /// texts) their coordinates and tracts from their geometry and hands the moves to the
    /// host. An empty list does nothing. Tag " UpdateMovedObjects".
    void UpdateMovedObjects(platform::automation::Variant& vInvtClass,
                            const platform::automation::Variant& ObjIds);
    /// Records marked "IMPORT" take coordinates, new identifiers and tracts from their
    /// geometry. Tag " UpdateMapData".
    void UpdateMapData(const platform::automation::Variant& vInvtClass);
    /// Records marked "IMPORT" take geometry and tract from their coordinates; then the
    /// class's site conditions follow the data maps (EqDataMaps.SyncInvtHft). Tag
    /// " SyncronizePointMap".
    void SyncronizePointMap(const std::string& sPointTable, int16_t iDataBaseType);
    /// As SyncronizePointMap for a class of a named database, without the site conditions,
    /// writing "General"/"AddRecord" per record: 1 when it landed in a tract, else 0. Tag
    /// " SyncronizePointMapUsingDBName".
    void SyncronizePointMapUsingDBName(const std::string& sPointTable,
                                       const std::string& MDBNameWithPath);
    /// Puts the class on the map (context::AddInventoryLayer, selectable and visible). Tag
    /// " MapPointdata".
    void MapPointdata(const std::string& sTable, int16_t iDataBaseType);
    /// Obsolete: tells the user "Obsolete method" and does nothing else.
    void AnalyzeInvtForUserDefinedScenario(const std::string& RsId,
                                           const platform::automation::Variant& vMapType,
                                           const platform::automation::Variant& vProgressBar);
    /// The older entry point: does nothing.
    void AnalyzeInvtForProbScenario(const std::string& RsId, int16_t RetrunPeriod,
                                    const platform::automation::Variant& vProgressBar);
    /// `pEdit`: whether the layer's class lies in one of the region's inventory databases
    /// (paths compared without regard to case). Tag " IsEditable".
    void IsEditable(platform::automation::Variant& vFeatureLayer, bool& pEdit);

private:
    /// The walk every member above runs on the records `whereClause` selects: geometry or
    /// coordinates made to agree, identifiers, tracts, the removal of records outside the
    /// region and the hand-off to the host. Tag " SynchronizeMap".
    void SynchronizeMap(platform::geodatabase::FeatureClass& featureClass,
                        const std::string& whereClause, bool fromCoordinates, bool assignIds,
                        bool reportMoved, bool skipEditSync);
    /// The missing Tract, identifier and coordinate fields of a scratch class. Tag
    /// " AddFieldsToImportData".
    void AddFieldsToImportData(platform::geodatabase::FeatureClass& scratch,
                               const platform::geodatabase::FeatureClass& inventory);
    /// A new point class `HzTableName` in temp.mdb with the source's fields. Tag
    /// " CreateTableInTempData".
    std::shared_ptr<platform::geodatabase::FeatureClass>
    CreateTableInTempData(const std::string& HzTableName,
                          const platform::geodatabase::FeatureClass& source);

    // Set and cleared inside one call.
    bool m_importing = false;
    int m_importIdField = -1;
    bool m_reportAddedRecord = false;
};

} // namespace brevant::inventory
