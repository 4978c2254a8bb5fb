#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"

#include <cstdint>
#include <string>

namespace brevant::exchange {

/// Carries a hazard scenario from one study region to another: an earthquake scenario's fault
/// and a hurricane's storm track travel as shapefiles ("eqSrFault", "eqHuStorm") in a region's
/// folder, while the host's ScenarioService moves the scenario records themselves. Every member
/// traps its errors (0x8004060C, tag " " + member name).
class RegionExpImp : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    RegionExpImp();

    std::string_view className() const override { return "RegionExpImp"; }
    const platform::automation::MemberTable* members() const override;

    /// The current region's scenario written into its own folder.
    void ExportCurrentScenario();
    /// The scenario the current region's folder carries, taken in under a new number.
    void ImportCurrentScenario();
    /// Writes the fault of scenario `ImpScenId` ("E" or "W" half of the country) as the
    /// shapefile "eqSrFault" in the folder of region `RgnName`.
    void ExportScenario(int16_t& ImpScenId, std::string& EastWestRegion, std::string& RgnName);
    /// Stores the first fault of "eqSrFault" in region `RgnName`'s folder as the fault of
    /// scenario `ImpScenId`.
    void ImportScenario(int16_t& ImpScenId, std::string& EastWestRegion, std::string& RgnName);
    void ExportCurrentHuScenario(const std::string& RgnName);
    void ImportCurrentHuScenario(const std::string& RgnName);
    void ExportCurrentEQScenario(const std::string& RgnName);
    void ImportCurrentEQScenario(const std::string& RgnName);

};

} // namespace brevant::exchange
