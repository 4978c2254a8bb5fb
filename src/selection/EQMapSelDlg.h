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

class frmMapSelDlg;

/// Asks the user to choose region units, epicentres, faults or a flood study case on a map.
class EQMapSelDlg : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EQMapSelDlg();
    ~EQMapSelDlg() override;
    EQMapSelDlg(const EQMapSelDlg&) = delete;
    EQMapSelDlg& operator=(const EQMapSelDlg&) = delete;

    std::string_view className() const override { return "EQMapSelDlg"; }
    const platform::automation::MemberTable* members() const override;

    // The region dialogs, called in this order while a region is defined: each offers the
    // units that lie in the units chosen at the level above, and the map selection window
    // stores the user's choice in the host's RegionSelectionStore. After a dialog left with
    // Back the next one shows its level's current selection again. Errors are recorded under
    // the member's name (" SelStateDlg", ...) and not raised.
    void SelStateDlg();
    void SelCountyDlg();
    void SelTractDlg();
    void SelBlockDlg();
    /// Lets the user pick a historical epicentre, `sEpicenterId` shown selected, and hands back
    /// the one chosen (empty after Back). Errors go to the log under " SelHistoricalEpicenter";
    /// the argument then keeps what it held.
    void SelHistoricalEpicenter(std::string& sEpicenterId);
    /// As SelHistoricalEpicenter, for a source fault (" SelFault").
    void SelFault(std::string& sFault);
    /// Lets the user place an epicentre on the fault `sSelFltId` when `sScenType` is exactly
    /// "S", anywhere otherwise, and hands back its coordinates (0 after Back; the values passed
    /// in are not used). Errors go to the log under " DefineEpicenter".
    void DefineEpicenter(const std::string& sScenType, const std::string& sSelFltId, double& dLong,
                         double& dLat);

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

    /// The window of the running or last call; null before the first.
    const frmMapSelDlg* form() const { return m_frmMapSel.get(); }

private:
    frmMapSelDlg& PrepareForm();
    /// A region dialog of one level, its failures recorded under `tag`.
    void ShowUnitDialog(const char* tag, int16_t level);
    void ShowDlgWithSelection(int16_t level);
    /// SelHistoricalEpicenter (kind 1) and SelFault (kind 2), failures recorded under `tag`.
    void PickHazardFeature(const char* tag, int16_t dlgType, std::string& identifier);
    /// Shows a prepared hazard dialog and lets go of the form and its layers afterwards.
    void ShowHazardDialog(HazardDialog& dialog);

    std::unique_ptr<frmMapSelDlg> m_frmMapSel;
    std::shared_ptr<platform::carto::Map> m_map;
    std::string m_sDBName;
    platform::automation::Variant m_vLevelClass;
    bool m_bKeepCurSel = false;
};

} // namespace brevant::selection
