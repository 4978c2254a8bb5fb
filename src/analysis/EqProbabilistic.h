#pragma once

#include "platform/automation/Variant.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

/// Probabilistic scenario analysis: for every record of an inventory class, the ground motion
/// of one return period is read from the region's probabilistic hazard map (class "USGS" of
/// RegionFolder + "USGS.mdb", fields "pga" + P, "pgv" + P, "sa03" + P, "sa10" + P) into the
/// result fields "pga", "pgv", "sa03" and "sa10".
///
/// Module state (process-wide): the open "USGS" map, released at the end of each analysis; the
/// return period text P; the map-type list handed to the host ("PGVM", "PGAM", "SA03",
/// "SA10").
///
/// Every procedure runs under its own error trap with code 0x8004060C: a failure is recorded
/// once in EqErrorLog.txt under the tag named below and raised as an AutomationError carrying
/// the innermost procedure's record.
namespace brevant::analysis {

/// The module state as the last analysis left it.
struct ProbabilisticState {
    /// The open "USGS" map; null between analyses (kept when a failure ended one).
    std::shared_ptr<platform::geodatabase::FeatureClass> usgs;
    /// The return period as text, the suffix of the map's field names.
    std::string returnPeriod;
    /// The map-type list handed to the host.
    platform::automation::Variant mapTypes;
};
const ProbabilisticState& probabilisticState();

/// Analyses the inventory class `tableName` (its database from InventoryCatalogService) for the
/// return period `RetrunPeriod`: opens "USGS", stores the map-type list, updates the point
/// class or the line class's hazard table and releases the map. A "USGS" map that does not
/// open ends the analysis in UpdateProbFieldValues, once the result fields were reset to 0.0.
/// `vProgressBar` is accepted and not used. Tag " AnalyzeProbDefinedScenario".
void AnalyzeProbDefinedScenario(std::string& tableName, int16_t RetrunPeriod,
                                const platform::automation::Variant& vProgressBar, bool isPoint);

/// Stores the map-type list "PGVM", "PGAM", "SA03", "SA10" of this analysis. Tag
/// " OpenProbabilisticMaps".
void OpenProbabilisticMaps(int16_t RetrunPeriod);

/// Analyses the point class `tableName` of RegionFolder + `databaseName`: an empty class is
/// left alone unless it is "eqTract", which is rebuilt first (context::RecreateTractHFT); then the
/// result fields are added and zeroed, filled from the open map and handed to
/// GisUtilityService::UpdateAnalysisTable with the point flag set. Tag
/// " UpdatePointInvtForProbabilistic " + table + " in " + database.
void UpdatePointInvtForProbabilistic(const std::string& databaseName, const std::string& tableName);

/// The same on the hazard table of the line class `tableName` ("Eq" + the name without its
/// first two characters + "hft"); the line class itself is handed to the host with the point
/// flag clear. Tag " UpdateLineInvtForProbabilistic" + table + " in " + database.
void UpdateLineInvtForProbabilistic(const std::string& databaseName, const std::string& tableName);

/// Adds (when missing) and zeroes the result fields "pgv", "pga", "sa03", "sa10", in this
/// order. Tag " AddFields".
void AddFields(platform::geodatabase::FeatureClass& featureClass);

/// The user-defined analysis has an AddField of its own; each module's stays qualified by
/// the module's name.
namespace EqProbabilistic {
/// Adds the double field `fieldName` (alias the same) when the class lacks it, then sets it to
/// "0.0" in every record. Tag " AddField ".
void AddField(platform::geodatabase::FeatureClass& featureClass, const std::string& fieldName);
} // namespace EqProbabilistic

/// Copies, for every inventory feature, the four values of the current return period from the
/// map polygon that contains it, or else from the nearest polygon at any distance, flushing
/// the cursor after every 101 features. A missing source or result field is an error; so is a
/// null `usgs` (the map did not open: the analysis's open failure is raised here). Tag
/// " UpdateProbFieldValues".
void UpdateProbFieldValues(platform::geodatabase::FeatureClass& inventory,
                           const platform::geodatabase::FeatureClass* usgs);

} // namespace brevant::analysis
