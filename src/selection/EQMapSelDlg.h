#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::carto {
class FeatureLayer;
class Map;
} // namespace brevant::platform::carto

namespace brevant::selection {

/// Asks the user to choose region units, epicentres, faults or a flood study case on a map.
class EQMapSelDlg : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EQMapSelDlg();

    std::string_view className() const override { return "EQMapSelDlg"; }
    const platform::automation::MemberTable* members() const override;

    /// Sets StudyCaseId to 0, shows the shared flood study-case form and hands back the case
    /// chosen there (0 after Cancel or with none listed). Errors are recorded under
    /// " GetflStudyCaseId" and not raised; StudyCaseId then keeps what it held.
    void GetflStudyCaseId(int16_t& StudyCaseId);

    /// Copies the census blocks of the chosen counties from the state's "bndrygbs.mdb" in
    /// `sCDPathWithState` into "hzCensusBlock" of the system's "temp.mdb", emptied first when
    /// `bFirstCD` is true. Called once per state of the region. Errors are recorded under
    /// " CreateBlockData" and not raised.
    void CreateBlockData(const platform::automation::Variant& bFirstCD,
                         const std::string& sCDPathWithState);

    // The data side of a region dialog, not on the automation interface.

    /// The first steps of a level's dialog: its database into m_sDBName and its whole unit
    /// class (all states, counties or tracts, or the region's census blocks) into m_vLevelClass.
    /// Raises what OpenMap raises.
    void OpenLevelClass(int16_t level);
    /// Empties "RegionSelection" of the system's "temp.mdb" and fills it with the units of
    /// m_vLevelClass that lie in the units chosen at the level above (levels 1 to 3), handing the
    /// class back in `result`. A chosen parent flagged in column 2 sets m_bKeepCurSel. Errors are
    /// recorded under " GetSelLayer" and not raised; `result` holds what was filled by then.
    void GetSelLayer(int16_t level, platform::automation::Variant& result);
    /// What a map selection form is given for a hazard dialog.
    struct HazardDialog {
        /// 1 historical epicentre, 2 source fault, 3 epicentre on the fault, 4 arbitrary event.
        int16_t dlgType = 0;
        std::string caption;
        /// The study region boundary as "Region Boundary", drawn behind.
        std::shared_ptr<platform::carto::FeatureLayer> boundaryLayer;
        /// The epicentres or faults, named by their class's alias name, the given identifier
        /// selected.
        std::shared_ptr<platform::carto::FeatureLayer> layer;
        /// Epicentre definitions only: the emptied "HazardSelection" the point goes to.
        std::shared_ptr<platform::carto::FeatureLayer> epicLayer;
    };
    /// The data side of SelHistoricalEpicenter (`dlgType` 1) and SelFault (2): the boundary,
    /// and the class's layer with `identifier` selected (nothing when none matches). Raises
    /// what the host raises.
    HazardDialog PrepareHazardSelection(int16_t dlgType, const std::string& identifier);
    /// The data side of DefineEpicenter: "HazardSelection" emptied, and the faults' layer, with
    /// `sSelFltId` selected and kind 3 when `sScenType` is exactly "S", else kind 4 (an
    /// arbitrary event) with nothing selected. Raises what the host raises.
    HazardDialog PrepareEpicenterDefinition(const std::string& sScenType,
                                            const std::string& sSelFltId);

    const std::string& levelDatabase() const { return m_sDBName; }
    bool keepCurSel() const { return m_bKeepCurSel; }

private:
    std::string m_sDBName;
    platform::automation::Variant m_vLevelClass;
    bool m_bKeepCurSel = false;
};

} // namespace brevant::selection
