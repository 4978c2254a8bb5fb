#pragma once

#include "context/ObjectWithMap.h"
#include "platform/automation/MemberTable.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::datamaps {

/// The region's polygon maps: boundary, tracts, data maps, tract hazard table and contour grid,
/// and the maps of outside programs (plume footprints, flood view).
///
/// Every method but the two checks runs under its own error trap: a failure is recorded once in
/// EqErrorLog.txt under the tag named with the method and raised as an AutomationError (0x80040608
/// for the methods that put a layer on the map and RefreshMap, 0x8004060C for the others); an
/// error an inner procedure recorded passes unchanged.
class EqPolyGon : public context::ObjectWithMap {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPolyGon();

    std::string_view className() const override { return "EqPolyGon"; }
    const platform::automation::MemberTable* members() const override;

    /// Adds a plain layer over `pClass`, not selectable (context::AddLayer, whose trap records
    /// a failure).
    void AddPointLayer(std::shared_ptr<platform::geodatabase::FeatureClass> pClass);

    /// Adds "Study Region Tract" (hztract of RegionBndry.mdb, invisible, not selectable, with
    /// the relates of an inventory layer) unless a top-level layer of that name is on the map,
    /// whatever it shows. Tag " for census tract ".
    void MapCensusTractBoundary();
    /// Adds "Study Region Boundary" (hzboundary of RegionBndry.mdb, visible, not selectable,
    /// drawn with the symbol factory's polygon fill) unless a layer of that name is on the map.
    /// Tag " for study region boundary ".
    void MapStudyregionBoundary();

    /// Draw the clipped data maps of RegionBndry.mdb as thematic layers, replacing layers of
    /// the same name: soil (eqsrsoil, type 8), liquefaction (eqsrlqf, 12) and landslide
    /// (eqsrlnd, 10) as unique values; ground-water depth (eqsrwdepth, type 2) as class breaks
    /// over the range of its "Type" values, named "Ground Water Depth". Tags " for soil map",
    /// " for liquefaction map", "for landslide map" and " for water map".
    void MapSoilDataMap();
    void MapLqfDataMap();
    void MapLndDataMap();
    void MapWAterDepthDataMap();

    /// Checks a candidate polygon class `TableName` of the personal geodatabase MDBPath +
    /// MDBName. `IsGeoDB`: 0 when it cannot be opened, else 1 and, for a polygon class, `NRecs`
    /// its feature count (32-bit); -1 for any other shape type. Never raises: an error ends the
    /// check with the results as far as they were set.
    void IsValid(const std::string& MDBName, const std::string& TableName,
                 const std::string& MDBPath, platform::automation::Variant& NRecs,
                 int16_t& IsGeoDB);
    /// Checks a candidate data map for the hazard code `MapType`. `IsGeoDB`: 0 when it cannot be
    /// opened; 3 when its coordinate system is not "GCS_North_American_1983"; -1 when it is not
    /// a polygon class; 2 when the code's value field is missing or of the wrong type (the field
    /// is found for the code in any letter case, but only the exact upper-case text codes SOIL,
    /// DAMF, TSUN, SEIC and LEVF want text, every other code a number); else 1 with `NRecs` the
    /// feature count. `MapType` is not changed. Never raises, as IsValid.
    void IsValidDatamap(const std::string& MDBName, const std::string& TableName,
                        const std::string& MDBPath, platform::automation::Variant& NRecs,
                        int16_t& IsGeoDB, std::string& MapType);

    /// Redraws the map (context::RefreshView). Tag " refreshing view".
    void RefreshMap();

    /// Obsolete: only tells the user "This Method is obsolete , Call GenerateThematicMap" (OK
    /// button, the default title).
    /// Tag " GenerateThmMap".
    void GenerateThmMap(const std::string& Sqltable, int16_t iDataBaseType, int16_t& ThmMapType,
                        std::string& FieldNameToMap);

    /// Draws `FieldNameToMap` of a result table over the region's polygons (RegionBndry.mdb).
    /// Type 5 is a contour map of `Sqltable` joined to its values; with an empty range (0 to 0)
    /// for the field "PGA", "PGV", "SA03" or "SA10", written exactly so, the contours are out of
    /// date: the user is told "Contour Analysis for ground motion needs to be Re-Run." and
    /// nothing is drawn. Types 18 and 19 become 2 and 4 (written back) and draw the tract map of
    /// the table Sqltable + "_" + field, with the precision of the field in the table the host
    /// names for `Sqltable`. Any other type draws the tract map of `Sqltable`, with precision 1
    /// for the "qarv" tables. `iDataBaseType` is not used; for type 5 the range is widened and
    /// written back. Tag " GenerateThematicMap for " + table + " column " + field.
    void GenerateThematicMap(const std::string& Sqltable, int16_t iDataBaseType,
                             int16_t& ThmMapType, std::string& FieldNameToMap, double& dMInVal,
                             double& dMaxVal);

    /// Maps the tracts and the boundary (each only when missing), the tracts first at
    /// aggregation level 3, else the boundary first; then redraws the map.
    /// Tag " AddDefaultMaps".
    void AddDefaultMaps();

    /// Writes FFE.BNA (WriteTractBna), then appends to eqTract of RegionBndry.mdb one point
    /// per row of the server table hztract and sets the default site conditions of every
    /// record (context::appendTractPoints); the table is not emptied first. Tag
    /// " CreateTractHFT".
    void CreateTractHFT();
    /// The user-defined analysis of "eqTract" with these arguments. Tag
    /// " AnalyzeInvtForUserDefinedScenario".
    void AnalyzeInvtForUserDefinedScenario(platform::automation::Variant& vMapType,
                                           platform::automation::Variant& vProgressBar);
    /// The probabilistic analysis of "eqTract" for a return period. Tag
    /// " AnalyzeProbScenariobyforTract".
    void AnalyzeProbScenarioforTract(int16_t RetrunPeriod,
                                     platform::automation::Variant& vProgressBar);
    /// Builds the contour grid: the host fills the work copy eqGrid of temp.mdb with grid
    /// points over the first boundary shape (GridSettingsService's six parameters), transfers
    /// those inside the boundary into eqGrid of RegionBndry.mdb and the work copy is emptied;
    /// then the points are numbered (UpdateGridId) and take the site conditions of the
    /// clipped maps (EqDataMaps.SyncInvtHft "eqGrid"). Tag " CreatContourGrid".
    void CreatContourGrid();

    /// Replaces the layer "Marplot foot print" with one over MarPlot of the region's
    /// 3rdParty.mdb: visible, selectable, drawn by the symbol factory. Tag " for census tract ".
    void MapMarPlotFootPrint();
    /// Adds a layer "Flood view print" over the shapefile "General"/"FLOODVIEWFILE" names
    /// (another one each call). When the setting is "NONE_" the user is asked for the file in
    /// the host's file dialog (starting in "General"/"FLDVIEWPATH") until an existing one is
    /// chosen, which is stored in the setting, or the dialog is cancelled, which maps nothing.
    /// Tag " for flood view ".
    void MapFloodView();

    /// Writes FFE.BNA in the region folder: per tract of hztract, a header line with the quoted
    /// tract and the vertex count, then one line "x, y" per vertex of all its rings; one empty
    /// line at the end.
    void WriteTractBna();
    /// Numbers the points of eqGrid of RegionBndry.mdb 1, 2, 3, ... in cursor order; a class
    /// without the field EqGridId is left alone. Tag " UpdateGridId".
    void UpdateGridId();
};

} // namespace brevant::datamaps
