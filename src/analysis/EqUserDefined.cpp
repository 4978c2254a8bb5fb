#include "analysis/EqUserDefined.h"

#include "analysis/AnalysisSupport.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/TractPoints.h"
#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "host/UserMapRegistry.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/WriteBatch.h"

#include <algorithm>

namespace brevant::analysis {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;

namespace {

/// The order in which AddUDSFields adds the result fields (pgv before pga).
constexpr std::array<const char*, 11> kFieldOrder{
    "pgv",     "pga",    "sa03",    "sa10",          "LqfSettlPGD",    "LqfSprPGD",
    "LqfProb", "LndPGD", "LndProb", "SufFltRuptPGD", "SurfFltRuptProb"};

UserDefinedState& state()
{
    static UserDefinedState instance;
    return instance;
}

/// The slot of a code (compared exactly, as the host passes codes); -1 for an unknown code.
int slotOf(std::string_view code)
{
    const auto& types = host::hazardResultFields();
    const auto found = std::find_if(types.begin(), types.end(),
                                    [code](const UserDefinedMapType& t) { return t.code == code; });
    return found == types.end() ? -1 : static_cast<int>(found - types.begin());
}

bool isShakingCode(std::string_view code)
{
    return code == "PGVM" || code == "PGAM" || code == "SA03" || code == "SA10";
}

/// The class a registered map is read from. Surface fault rupture takes the region's clipped
/// liquefaction or landslide susceptibility class of the registered file, not the registered
/// class.
std::string mapClassName(std::string_view code, const std::string& registeredClass)
{
    if (code == "SRGD") {
        return "eqsrlqf";
    }
    if (code == "SRPR") {
        return "eqsrlnd";
    }
    return registeredClass;
}

void analyse(geodatabase::FeatureClass& featureClass)
{
    AddUDSFields(featureClass);
    UpdateInvtUserdefinedScenario(featureClass);
}

} // namespace

const std::array<UserDefinedMapType, 11>& userDefinedMapTypes()
{
    return host::hazardResultFields();
}

const UserDefinedState& userDefinedState()
{
    return state();
}

void AnalyzeInvtUserDefinedScenario(std::string& tableName, const Variant& vMapType,
                                    const Variant& /*vProgressBar*/, bool isPoint)
{
    context::runTrapped(" AnalyzeInvtUserDefinedScenario", Procedure, [&] {
        state().shakingFields = false;
        if (!OpenUserDefinedMaps(vMapType)) {
            return;
        }
        const std::string databaseName =
            host::hostServices().createInventoryCatalogService()->GetDatabaseName(tableName);
        if (isPoint) {
            UpdatePointInvtForUserDefined(databaseName, tableName);
        } else {
            UpdateLineInvtForUserDefined(databaseName, tableName);
        }
        for (auto& map : state().maps) {
            map.reset();
        }
    });
}

bool OpenUserDefinedMaps(const Variant& vMapType)
{
    return context::runTrapped(" OpenUserDefinedMaps", Procedure, [&] {
        auto& current = state();
        // Slots are not emptied here: the maps a failed analysis left behind stay until an
        // analysis replaces them, and the end of every completed analysis empties them all.
        current.mapTypes = vMapType;
        const auto codes = context::GetCollectionfromVariant(vMapType);
        current.mapTypeCount = codes->count();

        const auto registry = host::hostServices().createUserMapRegistry();
        bool opened = false;
        for (const Variant& item : *codes) {
            const std::string code = item.toString();
            const int slot = slotOf(code);
            if (slot < 0) {
                continue;
            }
            // Shaking codes ask for the result fields whether or not a map is registered.
            if (isShakingCode(code)) {
                current.shakingFields = true;
            }
            std::string fileName;
            std::string className;
            std::string folder;
            registry->GetUserMap(code, fileName, className, folder);
            if (fileName.empty()) {
                continue;
            }
            current.maps[static_cast<std::size_t>(slot)] =
                detail::openClassAt(mapClassName(code, className), folder + fileName);
            opened = true;
        }
        return opened;
    });
}

void UpdatePointInvtForUserDefined(const std::string& databaseName, const std::string& tableName)
{
    const std::string tag =
        " UpdatePointInvtForUserDefined for " + tableName + " in " + databaseName;
    context::runTrapped(tag, Procedure, [&] {
        auto featureClass = detail::openRegionClass(tableName, databaseName);
        if (featureClass->rowCount({}, 1) == 0) {
            if (!detail::isTractTable(tableName)) {
                return;
            }
            context::RecreateTractHFT();
            // Opened afresh, so the class sees the rows the rebuild inserted.
            featureClass = detail::openRegionClass(tableName, databaseName);
        }
        analyse(*featureClass);
        detail::handOffAnalysisTable(tableName, databaseName, state().mapTypes, true);
    });
}

void UpdateLineInvtForUserDefined(const std::string& databaseName, const std::string& tableName)
{
    const std::string tag =
        " UpdateLineInvtForUserDefined for " + tableName + " in " + databaseName;
    context::runTrapped(tag, Procedure, [&] {
        const auto hazardTable =
            detail::openRegionClass(detail::lineHazardTableName(tableName), databaseName);
        analyse(*hazardTable);
        // The host takes the line class itself; opening it proves it is there.
        detail::openRegionClass(tableName, databaseName);
        detail::handOffAnalysisTable(tableName, databaseName, state().mapTypes, false);
    });
}

void UpdateInvtUserdefinedScenario(geodatabase::FeatureClass& featureClass)
{
    context::runTrapped(" UpdateInvtUserdefinedScenario", Procedure, [&] {
        const auto& types = host::hazardResultFields();
        for (std::size_t slot = 0; slot < types.size(); ++slot) {
            if (const auto& map = state().maps[slot]) {
                CalcUdsField(featureClass, *map, std::string(types[slot].resultField));
            }
        }
    });
}

void CalcUdsField(geodatabase::FeatureClass& featureClass, const geodatabase::FeatureClass& map,
                  const std::string& fieldName)
{
    context::runTrapped(" CalcUdsField", Procedure, [&] {
        context::UpdateFieldUsingIndexJoin(featureClass, map, fieldName, "paramvalue", true);
    });
}

void AddUDSFields(geodatabase::FeatureClass& featureClass)
{
    context::runTrapped(" AddUDSFields", Procedure, [&] {
        if (!state().shakingFields) {
            return;
        }
        // Each reset is a pass over the whole class; in one transaction the storage keeps one
        // copy of the old rows for all of them, not one each.
        const geodatabase::WriteBatch batch(featureClass);
        for (const char* field : kFieldOrder) {
            EqUserDefined::AddField(featureClass, field);
        }
    });
}

void EqUserDefined::AddField(geodatabase::FeatureClass& featureClass, const std::string& fieldName)
{
    context::runTrapped(" AddField ", Procedure,
                        [&] { detail::addZeroedResultField(featureClass, fieldName); });
}

} // namespace brevant::analysis
