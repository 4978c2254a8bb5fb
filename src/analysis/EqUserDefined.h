#pragma once

#include "host/HazardCodes.h"
#include "platform/automation/Variant.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

/// User-defined scenario analysis: the user's own hazard maps (polygons whose "paramvalue"
/// holds the value), registered per map type with the host's UserMapRegistry, give every
/// record of an inventory class the value at its location in a fixed result field.
///
/// Module state (process-wide): one map slot per map type, filled by OpenUserDefinedMaps and
/// emptied at the end of each analysis (a failure leaves them until the next analysis
/// replaces them); the map-type list as passed and its count; and the shaking-fields flag, set
/// once the list holds "PGVM", "PGAM", "SA03" or "SA10".
///
/// Every procedure runs under its own error trap with code 0x8004060C: a failure is recorded
/// once in EqErrorLog.txt under the tag named below and raised as an AutomationError carrying
/// the innermost procedure's record.
namespace brevant::analysis {

/// A map type and the result field its map's value goes to.
using UserDefinedMapType = host::HazardResultField;

/// The eleven map types in slot order, those of host::hazardResultFields().
const std::array<UserDefinedMapType, 11>& userDefinedMapTypes();

/// The module state as the last analysis left it.
struct UserDefinedState {
    /// One map per entry of userDefinedMapTypes(); null where none is open.
    std::array<std::shared_ptr<platform::geodatabase::FeatureClass>, 11> maps;
    platform::automation::Variant mapTypes;
    int32_t mapTypeCount = 0;
    bool shakingFields = false;
};
const UserDefinedState& userDefinedState();

/// Analyses the inventory class `tableName`: clears the shaking-fields flag, opens the maps
/// of `vMapType` (a one-dimensional array of codes) and, when any opened, updates the point
/// class or the line class's hazard table in the database InventoryCatalogService names, then
/// empties the map slots. `vProgressBar` is accepted and not used. Tag
/// " AnalyzeInvtUserDefinedScenario".
void AnalyzeInvtUserDefinedScenario(std::string& tableName,
                                    const platform::automation::Variant& vMapType,
                                    const platform::automation::Variant& vProgressBar,
                                    bool isPoint);

/// Stores `vMapType` and its count, and opens into its slot the registered map of each known
/// code of the list, in order ("SRGD" and "SRPR" open the class
/// "eqsrlqf" and "eqsrlnd" of the registered file). Codes without a registered map and unknown
/// codes are skipped. Slots of codes not listed keep what they hold: after a failed analysis, the
/// maps it opened until the next analysis empties them. Returns whether any map opened. Tag
/// " OpenUserDefinedMaps".
bool OpenUserDefinedMaps(const platform::automation::Variant& vMapType);

/// Analyses the point class `tableName` of RegionFolder + `databaseName`: an empty class is
/// left alone unless it is "eqTract", which is rebuilt first (context::RecreateTractHFT); then the
/// result fields are added (AddUDSFields), filled from the open maps and handed to
/// GisUtilityService::UpdateAnalysisTable with the point flag set. Tag
/// " UpdatePointInvtForUserDefined for " + table + " in " + database.
void UpdatePointInvtForUserDefined(const std::string& databaseName, const std::string& tableName);

/// The same on the hazard table of the line class `tableName` ("Eq" + the name without its
/// first two characters + "hft"); the line class itself is then opened and handed to the host
/// with the point flag clear. Tag " UpdateLineInvtForUserDefined for " + table + " in " +
/// database.
void UpdateLineInvtForUserDefined(const std::string& databaseName, const std::string& tableName);

/// Fills the result field of every open map's slot, in slot order (CalcUdsField). Tag
/// " UpdateInvtUserdefinedScenario".
void UpdateInvtUserdefinedScenario(platform::geodatabase::FeatureClass& featureClass);

/// Gives each record the "paramvalue" of the map polygon it lies in or touches
/// (UpdateFieldUsingIndexJoin with the point option); other records keep their value. Tag
/// " CalcUdsField".
void CalcUdsField(platform::geodatabase::FeatureClass& featureClass,
                  const platform::geodatabase::FeatureClass& map, const std::string& fieldName);

/// Only when the shaking-fields flag is set: AddField for each of the eleven result fields in
/// the order "pgv", "pga", "sa03", "sa10", "LqfSettlPGD", "LqfSprPGD", "LqfProb", "LndPGD",
/// "LndProb", "SufFltRuptPGD", "SurfFltRuptProb". Tag " AddUDSFields".
void AddUDSFields(platform::geodatabase::FeatureClass& featureClass);

/// The probabilistic analysis has an AddField of its own; each module's stays qualified by
/// the module's name.
namespace EqUserDefined {
/// Adds the double field `fieldName` (alias the same) when the class lacks it, then sets it to
/// "0.0" in every record. Tag " AddField ".
void AddField(platform::geodatabase::FeatureClass& featureClass, const std::string& fieldName);
} // namespace EqUserDefined

} // namespace brevant::analysis
