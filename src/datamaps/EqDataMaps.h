#pragma once

#include "datamaps/DataMapsLog.h"
#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::host {
class ProgressDialog;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase

namespace brevant::datamaps {

struct SiteMapStep;

/// Hazard and site-condition data maps: clipping the user's statewide maps to the study region,
/// repairing their values, keeping the site conditions of every inventory record in step with
/// them, intersecting inundation maps with the tracts, and drawing them.
///
/// The batches (ClipHazardDataMaps, ClipInundationMaps, SyncInvtHft) do not stop at a failed
/// map or class: the step writes its failure to the progress log (DataMapsLog.txt or
/// DataMapsLog1.txt in the region folder), sets the object's error flag and the batch goes on;
/// the user sees one message pointing at the log at the end. Errors outside the steps are
/// recorded in the error log under the method's name and raised to the caller.
class EqDataMaps : public platform::automation::AutomationObject {
public:
    using Variant = platform::automation::Variant;
    using FeatureClassPtr = std::shared_ptr<platform::geodatabase::FeatureClass>;

    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqDataMaps();
    ~EqDataMaps() override;

    std::string_view className() const override { return "EqDataMaps"; }
    const platform::automation::MemberTable* members() const override;

    /// Clips the user's maps of the site codes in `vMapType` (a collection; "SOIL", "LIQF",
    /// "LAND", "WATR", compared exactly) into eqsrsoil, eqsrlqf, eqsrlnd and eqsrwdepth of
    /// RegionBndry.mdb, repairs invalid values, refreshes the site conditions of every inventory
    /// class from the clipped maps, and, unless a step failed, the host's analysis tables.
    void ClipHazardDataMaps(Variant& vMapType);
    /// Intersects the user's inundation maps of the codes in `vMapType` ("DAMF", "TSUN",
    /// "SEIC", "LEVF") with the region's tracts into Inundation.mdb. Starts with a clear error
    /// flag; logs to DataMapsLog1.txt.
    void ClipInundationMaps(Variant& vMapType);

    /// Refreshes the site conditions of one inventory table from the clipped maps (its hazard
    /// table in line mode). hzdams, hzhazmat and hzlevees, in any case, are left alone.
    void SyncInvtHft(std::string& TableName);
    /// SyncInvtHft in line mode.
    void UpdateLineHftforImport(std::string& HzTableName);
    /// SyncInvtHft in point mode.
    void UpdatePonitHftforImport(std::string& HzTableName);
    /// UpdateLineHftforImport on a copy of the argument.
    void SyncLineHftforImport(const std::string& HzTableName);
    /// UpdatePonitHftforImport on a copy of the argument.
    void SyncPointHftforImport(const std::string& HzTableName);

    /// Draws the data map of a hazard code on the current map. For the clipped and inundation
    /// codes the thematic type is the code's own and is written back; ground-motion codes draw
    /// the registered map's "paramvalue" with the caller's type and range, and nothing when no
    /// map is registered. A resulting type of 0 is recorded and raised; an unknown code with a
    /// type of the caller's goes on to the builder.
    void GenerateThematicMap(const std::string& MapType, std::optional<int16_t>& ThmMapType,
                             std::optional<double>& dMInVal, std::optional<double>& dMaxVal);
    /// Draws the "ParamValue" of a user's ground-motion table in class breaks, as layer
    /// "Shake Map for " + MapName.
    void MapUserDefinedShakeMap(const std::string& MDBNameWithPath, const std::string& TableName,
                                const std::string& MapName);

    /// Whether a step of this object has failed (for ClipInundationMaps: since it started).
    bool errorFlag() const { return m_error; }

private:
    // Clipping of the site maps.
    bool ClipSoilMap(const FeatureClassPtr& tracts, const FeatureClassPtr& boundary);
    bool ClipLiquefactionMap(const FeatureClassPtr& tracts, const FeatureClassPtr& boundary);
    bool ClipLandslideMap(const FeatureClassPtr& tracts, const FeatureClassPtr& boundary);
    bool ClipWaterDepthMap(const FeatureClassPtr& tracts, const FeatureClassPtr& boundary);
    bool clipSiteMap(const SiteMapStep& step, const FeatureClassPtr& boundary);
    bool ClipDataMap(const FeatureClassPtr& source, const platform::geodatabase::FeatureClass& clip,
                     const std::string& targetDatabase, const std::string& targetName,
                     const std::string& systemDataFolder, const std::string& valueField,
                     const std::string& defaultValue, const std::string& invalidWhere);

    // Inundation maps.
    bool IntersectInundationMap(const std::string& targetName, const std::string& code,
                                const std::string& mapName, const FeatureClassPtr& tracts);
    bool IntersectDataMap(const FeatureClassPtr& source,
                          const platform::geodatabase::FeatureClass& tracts,
                          const std::string& inundationPath, const std::string& targetName,
                          const std::string& systemDataFolder);

    // Site conditions of the inventory.
    struct SiteMaps {
        FeatureClassPtr soil;
        FeatureClassPtr liquefaction;
        FeatureClassPtr landslide;
        FeatureClassPtr water;
    };
    SiteMaps OpenEqMaps();
    bool OpenDataTable(const std::string& tableName, const std::string& databasePath,
                       FeatureClassPtr& table);
    void UpdateClippedMapDependencies(const std::vector<std::string>& clippedCodes);
    void UpdateAnalysisTables(const Variant& requestedCodes);
    void UpdatePointHazardFields(const std::string& databaseName, const std::string& className,
                                 const SiteMaps& maps, int32_t position);
    void UpdateLineHazardTable(const std::string& databaseName, const std::string& className,
                               const SiteMaps& maps, int32_t position);
    void ApplyDataMapValues(const std::string& className, platform::geodatabase::FeatureClass& table,
                            const SiteMaps& maps);
    void AttachMapValue(platform::geodatabase::FeatureClass& table,
                        const platform::geodatabase::FeatureClass& map, const std::string& field);
    void AddSiteConditionFields(platform::geodatabase::Table& table);

    /// Runs a step: a failure writes `failureText` with the error to the log, sets the error
    /// flag and makes the step report failure.
    template <class Body> bool logged(const std::string& failureText, Body&& body)
    {
        try {
            return body();
        } catch (...) {
            noteFailure(failureText, std::current_exception());
            return false;
        }
    }
    void noteFailure(const std::string& failureText, std::exception_ptr error);
    /// The dialog of the running batch; error 91 outside one.
    host::ProgressDialog& dialog();

    Variant m_requestedCodes;
    std::shared_ptr<host::ProgressDialog> m_dialog;
    DataMapsLog m_log;
    std::string m_boundaryPath;
    bool m_error = false;
    bool m_lineMode = false;
};

} // namespace brevant::datamaps
