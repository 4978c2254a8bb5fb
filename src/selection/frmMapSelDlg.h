#pragma once

#include "platform/carto/EnvelopeFeedback.h"
#include "platform/geometry/Geometry.h"
#include "platform/geometry/Point.h"

#include <QCursor>
#include <QDialog>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

class QAction;
class QLineEdit;
class QPushButton;
class QToolBar;

namespace brevant::platform::carto {
class ActiveView;
class FeatureLayer;
class Map;
} // namespace brevant::platform::carto

namespace brevant::platform::display {
class MapWidget;
struct MapMouseEvent;
} // namespace brevant::platform::display

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::selection {

class IdentifyWindow;

/// The map selection window: the user picks region units, a historical epicentre or a source
/// fault, or places an epicentre, on a small map of its own. The opener fills the public
/// properties, calls showModal and reads the outcome back from them. Every handler records its
/// failure in the error log under its own phrase and leaves the window open.
///
/// Dialog kinds (m_iDlgType): 0 region units, 1 historical epicentre, 2 source fault,
/// 3 epicentre on the chosen fault, 4 arbitrary epicentre. Unit levels (m_iSelType): 0 state,
/// 1 county, 2 census tract, 3 census block.
///
/// An epicentre on a fault is accepted when the click lies at most 9 pixels from the nearest
/// point of the fault both across and up or down the screen: a click 10 pixels above a fault
/// that runs east to west is as far from it as one 10 pixels beside a fault that runs north to
/// south, and the fault's envelope, which has no height for such a fault, cannot tell them
/// apart.
class frmMapSelDlg : public QDialog {
public:
    explicit frmMapSelDlg(QWidget* parent = nullptr);
    ~frmMapSelDlg() override;
    frmMapSelDlg(const frmMapSelDlg&) = delete;
    frmMapSelDlg& operator=(const frmMapSelDlg&) = delete;

    // Properties set by the opener before showModal and read after it.
    std::shared_ptr<platform::carto::Map> m_pMap;
    platform::carto::ActiveView* m_pActiveView = nullptr;
    std::string m_sFinalSel;
    /// True only when the window was left with Selection Done.
    bool m_bSelection = false;
    std::shared_ptr<platform::geodatabase::FeatureClass> m_pFeatureClass;
    int16_t m_iSelType = 0;
    int16_t m_iDlgType = 0;
    bool m_bCurSel = false;
    std::string m_DlgCaption;
    std::string m_sFaultId;
    std::shared_ptr<platform::carto::FeatureLayer> m_pFeatureLayer;
    std::shared_ptr<platform::carto::FeatureLayer> m_pSrFeatureLayer;
    std::shared_ptr<platform::carto::FeatureLayer> m_pBaseLayer;
    std::shared_ptr<platform::carto::FeatureLayer> m_pEpicLayer;
    std::shared_ptr<platform::geodatabase::FeatureClass> m_pEpicFeatureClass;
    platform::geometry::Point pUserPoint;
    double m_dLong = 0.0;
    double m_dLat = 0.0;

    /// Loads the window from the properties, shows it modally (see ui::qt::runModalWindow) and
    /// unloads it once Selection Done, Back or the close box has hidden it.
    void showModal();

    // What the window shows, for those who test it.
    int16_t currentTool() const { return m_iCurTool; }
    /// The key of the toolbar button shown pressed, or "" when none is.
    std::string pressedTool() const;
    /// The name of the cursor the map shows.
    const std::string& mapCursor() const { return m_cursorShown; }
    const IdentifyWindow* identifyWindow() const { return m_pIdentifyDlg; }
    const std::optional<platform::geometry::Geometry>& faultCurve() const { return m_pFaultCurve; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    struct NamedCursor {
        std::string name;
        QCursor cursor;
    };

    void buildControls();
    QAction* button(const std::string& key) const;
    void showCursor(bool active);

    // Events.
    void Form_Load();
    void Form_Resize();
    void Form_Unload();
    void cmdMapSelToolBar_ButtonClick(const std::string& key);
    void picMapControl_MouseDown(const platform::display::MapMouseEvent& event);
    void picMapControl_MouseMove(const platform::display::MapMouseEvent& event);
    void picMapControl_MouseUp(const platform::display::MapMouseEvent& event);
    void cmdSelectionDone_Click();
    void cmdBack_Click();

    // The view.
    void InitializeDialog();
    void ShowSelectedLayer();
    void ZoomToLayer();
    void ZoomToSelection();
    void ZoomToSelectedFault();
    void ZoomToFullExtent();
    void CustomizeHazardDialog();
    void AddData();
    void Identify(const platform::display::MapMouseEvent& event);
    void setExtent(const platform::geometry::Envelope& extent);
    platform::geometry::Envelope boundaryExtent() const;

    // The selection rules.
    void SelectFeaturesMouseUp(const platform::display::MapMouseEvent& event,
                               const std::optional<platform::geometry::Envelope>& band);
    void MakeFaultSelection();
    void MakeEpicenterSelection();
    void UpdateSelectionButtons();
    void ApplyCurrentSelection();
    void UpdateUserSelectionFromMap();
    void UpdateFaultSelection();
    void SelectAll();
    void DeselectAll();
    void SwitchSelection();
    void redrawSelection();

    int16_t m_iCurTool = 7;
    bool m_bMouseDown = false;
    platform::geometry::Point m_pDownPoint;
    std::optional<platform::carto::EnvelopeFeedback> m_pFeedback;
    std::map<std::string, NamedCursor> m_colIdleCursors;
    std::map<std::string, NamedCursor> m_colActiveCursors;
    std::string m_cursorShown;
    IdentifyWindow* m_pIdentifyDlg = nullptr;
    int m_iBottomMargin = 0;
    int m_iRightMargin = 0;
    std::optional<platform::geometry::Geometry> m_pFaultCurve;
    bool m_loaded = false;

    QToolBar* cmdMapSelToolBar = nullptr;
    platform::display::MapWidget* picMapControl = nullptr;
    QLineEdit* LatLongText = nullptr;
    QLineEdit* Text1 = nullptr;
    QPushButton* cmdBack = nullptr;
    QPushButton* cmdSelectionDone = nullptr;
};

} // namespace brevant::selection
