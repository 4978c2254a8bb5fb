#pragma once

#include <QDialog>
#include <map>
#include <memory>
#include <string>

class QAction;
class QComboBox;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPushButton;

namespace brevant::platform::carto {
class Layer;
class Map;
struct ViewEvent;
} // namespace brevant::platform::carto

namespace brevant::layers {

class LayerListBox;

/// The layer control window "Layer Control": lists a map's layers in drawing order and changes
/// their order, visibility, selectability, labels and scale range, removes them and shows their
/// properties. Layers the system maintains are protected against being hidden, made
/// unselectable or removed; the hazard-selection layer is not listed. The list follows the
/// map's active-view events. Every handler records its failures in the error log under its own
/// phrase and leaves the window open. Its close box hides the window, which keeps its state.
class frmLayer : public QDialog {
public:
    explicit frmLayer(QWidget* parent = nullptr);
    ~frmLayer() override;
    frmLayer(const frmLayer&) = delete;
    frmLayer& operator=(const frmLayer&) = delete;

    /// Stores the map, lists its layers, enables the controls and selects the first line.
    void CreateLayerList(std::shared_ptr<platform::carto::Map> map);
    /// The map listed; setting it also follows the map's active-view events.
    std::shared_ptr<platform::carto::Map> Map() const;
    void setMap(std::shared_ptr<platform::carto::Map> map);
    void RefreshActiveView();
    /// A window of the selected layer's name, source, visibility, scale range and renderer,
    /// titled "Layer NAME Properties"; confirming it refreshes the view.
    void ShowLayerProperties();
    /// Asks for a data set in the "Select Data" file dialog and adds a layer per feature class
    /// in it (a shapefile is one class; a geodatabase gives all of its classes): areas first,
    /// then lines, then points, so points end on top. Then names every map layer below the
    /// top one in a message box, and moves a hazard-selection layer to the top. Cancel adds
    /// nothing.
    void AddData();
    /// Takes the selected line's feature layer, brings the controls up to date and refreshes the
    /// view; a line that is no feature layer is logged. Nothing in the window calls it: it is
    /// there for an opener that changes the selection itself.
    void SelectedLayerChanged();
    /// Shows the window modally (see ui::qt::runModalWindow) and returns once it is hidden.
    void showModal();

    /// Set once a "HazardSelection" layer has been met while listing.
    bool hazardSelectionListed() const { return m_hazardSelection; }
    bool refreshFlag() const { return m_refresh; }
    /// The index of the symbology page shown, or -1.
    int symbologyPage() const { return m_page; }
    /// The layer listed on `line`, or null.
    std::shared_ptr<platform::carto::Layer> listedLayer(int line) const;

    /// True for the names of layers the system maintains (any case).
    static bool isProtectedName(const std::string& name);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    friend class LayerListBox;

    void buildControls();
    void AddLayerToList(const std::shared_ptr<platform::carto::Layer>& layer);
    void EnableLayerControls(bool flag);
    void UpdateLayersInterface();
    void ChangeLayerLocation(int direction);
    void RemoveSelectedLayer();
    std::shared_ptr<platform::carto::Layer> selectedLayer() const;

    void lstLayers_Click();
    void lstLayers_MouseDown(Qt::MouseButton button, QPoint at);
    void cmdUp_Click();
    void cmdDown_Click();
    void cmdTop_Click();
    void cmdBottom_Click();
    void chkVisible_MouseUp();
    void chkSelectable_MouseUp();
    void chkLabel_MouseUp();
    void txtMin_Change();
    void txtMax_Change();
    void mnuLayerPopup_Click(QPoint at);
    void mnuRemoveLayer_Click();
    void mnuVisible_Click();
    void mnuLabel_Click();
    void onViewEvent(const platform::carto::ViewEvent& event);

    // Symbology: one page per kind of layer; the geometry pages edit a simple symbol.
    struct SymbolFlags {
        bool simpleRenderer = true;
        bool simpleSymbol = true;
    };
    void buildSymbologyPages();
    void ShowSymbologyProperties(const std::shared_ptr<platform::carto::Layer>& layer);
    SymbolFlags ShowPointProperties(const std::shared_ptr<platform::carto::Layer>& layer);
    SymbolFlags ShowPolylineProperties(const std::shared_ptr<platform::carto::Layer>& layer);
    SymbolFlags ShowPolygonProperties(const std::shared_ptr<platform::carto::Layer>& layer);
    void EnablePointControls(bool flag);
    void EnablePolylineControls(bool flag);
    void EnablePolygonControls(bool flag);
    void cboPtStyle_Click();
    void cboPolylineStyle_Click();
    void cboPolyStyle_Click();
    void picPt_Click();
    void picPolyline_Click();
    void picPolyColor_Click();
    void picPolyOutline_Click();
    void txtPtSize_Change();
    void txtPolylineWidth_Change();
    void txtPolyOutlineWidth_Change();
    void refreshIfSet();
    void updateMenuMarks();

    std::shared_ptr<platform::carto::Map> m_map;
    int m_listener = 0;
    /// Listed layers keyed by item number and name ("3Roads").
    std::map<std::string, std::shared_ptr<platform::carto::Layer>> m_layerTable;
    bool m_hazardSelection = false;
    bool m_refresh = true;
    bool m_visibleMark = false;
    bool m_labelMark = false;

    QGroupBox* fraListHolder = nullptr;
    LayerListBox* lstLayers = nullptr;
    QPushButton* cmdUp = nullptr;
    QPushButton* cmdDown = nullptr;
    QPushButton* cmdTop = nullptr;
    QPushButton* cmdBottom = nullptr;
    QGroupBox* fraLayerProperties = nullptr;
    QCheckBox* chkVisible = nullptr;
    QCheckBox* chkSelectable = nullptr;
    QCheckBox* chkLabel = nullptr;
    QLabel* lblScaleRange = nullptr;
    QLineEdit* txtMin = nullptr;
    QLineEdit* txtMax = nullptr;
    QGroupBox* Frame1 = nullptr;
    /// Pages by index (5 is not used); -1 while none has been shown.
    std::map<int, QWidget*> fraDisplayPage;
    int m_page = -1;
    QComboBox* cboPtStyle = nullptr;
    QPushButton* picPt = nullptr;
    QLineEdit* txtPtSize = nullptr;
    QComboBox* cboPolylineStyle = nullptr;
    QPushButton* picPolyline = nullptr;
    QLineEdit* txtPolylineWidth = nullptr;
    QComboBox* cboPolyStyle = nullptr;
    QPushButton* picPolyColor = nullptr;
    QPushButton* picPolyOutline = nullptr;
    QLineEdit* txtPolyOutlineWidth = nullptr;
    QMenu* mnuLayerPopup = nullptr;
    QAction* mnuRemoveLayer = nullptr;
    QAction* mnuSep1 = nullptr;
    QAction* mnuVisible = nullptr;
    QAction* mnuLabel = nullptr;
};

} // namespace brevant::layers
