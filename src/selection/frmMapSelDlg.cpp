#include "selection/frmMapSelDlg.h"

#include "context/EqSimpleRenderer.h"
#include "layers/AddData.h"
#include "layers/frmLayer.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/display/widgets/MapWidget.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/ui/UserPrompts.h"
#include "platform/ui/qt/ModalWindow.h"
#include "selection/FormEvents.h"
#include "selection/IdentifyWindow.h"
#include "selection/MapSelectionArt.h"
#include "selection/MapSelectionView.h"

#include <QAction>
#include <QCloseEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QToolBar>
#include <functional>
#include <stdexcept>

namespace brevant::selection {

namespace carto = platform::carto;
namespace geometry = platform::geometry;

namespace {

struct ToolButton {
    const char* key;
    const char* tooltip;
};

/// In toolbar order: a button's position from 1 is its tool number.
constexpr ToolButton kToolButtons[] = {
    {"ZoomIn", "Zoom In"},
    {"ZoomOut", "Zoom Out"},
    {"Pan", "Pan"},
    {"FullExtent", "Full Extent"},
    {"Identify", "Identify"},
    {"SelectElement", "Select Element"},
    {"SelectFeatures", "Select Features"},
    {"SelectAll", "Select All"},
    {"DeSelectAll", "Deselect All"},
    {"SwitchSelection", "Switch Selection"},
    {"Layers", "Configure Layers"},
    {"AddData", "Add Data"},
};

/// The cursor names of each tool key, idle and while a button is down.
struct ToolCursors {
    const char* key;
    const char* idle;
    const char* active;
};

constexpr ToolCursors kToolCursors[] = {
    {"0", "DEFAULT", "DEFAULT"},     {"1", "ZOOMIN", "ZOOMINMOVE"},
    {"2", "ZOOMOUT", "ZOOMOUTMOVE"}, {"3", "PAN", "PANMOVE"},
    {"4", "DEFAULT", "DEFAULT"},     {"5", "IDENTIFY", "IDENTIFY"},
    {"6", "DEFAULT", "DEFAULT"},     {"7", "SELECTFEATURES", "SELECTFEATURESMOVE"},
    {"8", "DEFAULT", "DEFAULT"},     {"9", "DEFAULT", "DEFAULT"},
    {"10", "DEFAULT", "DEFAULT"},    {"11", "DEFAULT", "DEFAULT"},
    {"12", "DEFAULT", "DEFAULT"},
};

constexpr int kFormWidth = 640;
constexpr int kFormHeight = 520;
constexpr int kButtonWidth = 110;
constexpr int kButtonHeight = 28;
constexpr int kToolbarHeight = 34;

bool isHazardDialog(int16_t kind)
{
    return kind >= 1 && kind <= 4;
}

/// Hides a layer while it joins the map, so the map does not draw it half set up.
void addQuietly(carto::Map& map, const std::shared_ptr<carto::FeatureLayer>& layer,
                bool giveRenderer)
{
    layer->setVisible(false);
    layer->setSelectable(false);
    map.addLayer(layer);
    if (giveRenderer) {
        context::CreateRendrer(*layer, layer->name());
    }
    layer->setVisible(true);
}

/// The union of the selected features' extents, each selected feature handed to `each` (if any)
/// in identifier order.
geometry::Envelope
selectedExtent(const carto::FeatureLayer& layer,
               const std::function<void(const platform::geodatabase::Row&)>& each)
{
    const auto& selected = layer.selectionSet();
    geometry::Envelope extent;
    layer.search({}, [&](const platform::geodatabase::Row& row) {
        if (selected.contains(row.oid()) && !row.shape().isNull()) {
            extent = extent.united(row.shape().envelope());
            if (each) {
                each(row);
            }
        }
        return true;
    });
    return extent;
}

} // namespace

frmMapSelDlg::frmMapSelDlg(QWidget* parent) : QDialog(parent)
{
    setObjectName("frmMapSelDlg");
    setWindowTitle("Select features from the map");
    handler(" creating map selection dialog ", [&] { buildControls(); });
}

frmMapSelDlg::~frmMapSelDlg()
{
    if (picMapControl != nullptr) {
        picMapControl->setMap(nullptr);
    }
}

void frmMapSelDlg::buildControls()
{
    resize(kFormWidth, kFormHeight);
    cmdMapSelToolBar = new QToolBar(this);
    cmdMapSelToolBar->setObjectName("cmdMapSelToolBar");
    cmdMapSelToolBar->setIconSize(QSize(24, 24));
    cmdMapSelToolBar->setGeometry(0, 0, kFormWidth, kToolbarHeight);
    for (const auto& tool : kToolButtons) {
        QAction* action = cmdMapSelToolBar->addAction(toolIcon(tool.key), tool.tooltip);
        action->setObjectName(tool.key);
        action->setProperty("key", tool.key);
        action->setToolTip(tool.tooltip);
        action->setCheckable(true);
        const std::string key = tool.key;
        connect(action, &QAction::triggered, this,
                [this, key] { cmdMapSelToolBar_ButtonClick(key); });
    }

    picMapControl = new platform::display::MapWidget(this);
    picMapControl->setObjectName("picMapControl");
    picMapControl->setGeometry(0, kToolbarHeight, kFormWidth,
                               kFormHeight - kToolbarHeight - kButtonHeight - 3 * 8);
    picMapControl->onMousePress(
        [this](const platform::display::MapMouseEvent& e) { picMapControl_MouseDown(e); });
    picMapControl->onMouseMove(
        [this](const platform::display::MapMouseEvent& e) { picMapControl_MouseMove(e); });
    picMapControl->onMouseRelease(
        [this](const platform::display::MapMouseEvent& e) { picMapControl_MouseUp(e); });

    const int buttonTop = kFormHeight - 8 - kButtonHeight;
    LatLongText = new QLineEdit(this);
    LatLongText->setObjectName("LatLongText");
    LatLongText->setReadOnly(true);
    LatLongText->setGeometry(6, buttonTop, 220, kButtonHeight);
    Text1 = new QLineEdit(this);
    Text1->setObjectName("Text1");
    Text1->setGeometry(232, buttonTop, 100, kButtonHeight);
    Text1->hide();

    cmdSelectionDone = new QPushButton("Selection Done", this);
    cmdSelectionDone->setObjectName("cmdSelectionDone");
    cmdSelectionDone->setGeometry(kFormWidth - 2 * kButtonWidth - 10, buttonTop, kButtonWidth,
                                  kButtonHeight);
    cmdSelectionDone->setAutoDefault(false);
    connect(cmdSelectionDone, &QPushButton::clicked, this, [this] { cmdSelectionDone_Click(); });
    cmdBack = new QPushButton("Back", this);
    cmdBack->setObjectName("cmdBack");
    cmdBack->setGeometry(kFormWidth - kButtonWidth, buttonTop, kButtonWidth, kButtonHeight);
    cmdBack->setAutoDefault(false);
    connect(cmdBack, &QPushButton::clicked, this, [this] { cmdBack_Click(); });
}

QAction* frmMapSelDlg::button(const std::string& key) const
{
    for (auto* action : cmdMapSelToolBar->actions()) {
        if (action->objectName().toStdString() == key) {
            return action;
        }
    }
    throw std::logic_error("the toolbar has no button " + key);
}

std::string frmMapSelDlg::pressedTool() const
{
    for (auto* action : cmdMapSelToolBar->actions()) {
        if (action->isChecked()) {
            return action->objectName().toStdString();
        }
    }
    return {};
}

void frmMapSelDlg::showCursor(bool active)
{
    const auto& cursors = active ? m_colActiveCursors : m_colIdleCursors;
    const auto found = cursors.find(std::to_string(m_iCurTool));
    if (found == cursors.end()) {
        return;
    }
    picMapControl->setCursor(found->second.cursor);
    m_cursorShown = found->second.name;
    // A script reads the map control to see which cursor it shows.
    picMapControl->setProperty("value", QString::fromStdString(m_cursorShown));
}

void frmMapSelDlg::showModal()
{
    platform::ui::qt::ensureWidgetApplication();
    Form_Load();
    platform::ui::qt::runModalWindow(*this, "frmMapSelDlg");
    Form_Unload();
}

void frmMapSelDlg::InitializeDialog()
{
    handler(" initilizing map selection dialog", [&] {
        for (const auto& tool : kToolCursors) {
            m_colIdleCursors[tool.key] = {tool.idle, selectionCursor(tool.idle)};
            m_colActiveCursors[tool.key] = {tool.active, selectionCursor(tool.active)};
        }
        if (!m_pMap) {
            throw std::runtime_error("the map selection dialog was given no map");
        }
        if (m_pActiveView == nullptr) {
            m_pActiveView = &m_pMap->activeView();
        }
        picMapControl->setMap(m_pMap);
        m_pIdentifyDlg = new IdentifyWindow(this);
        m_iCurTool = 7;
        button("SelectFeatures")->setChecked(true);
        showCursor(false);
        m_iBottomMargin = height() - (cmdBack->y() + cmdBack->height());
        m_iRightMargin = width() - (cmdSelectionDone->x() + cmdSelectionDone->width());
        setWindowTitle(QString::fromStdString(m_DlgCaption));
        if (isHazardDialog(m_iDlgType)) {
            CustomizeHazardDialog();
        }
    });
}

void frmMapSelDlg::CustomizeHazardDialog()
{
    handler(" customizing hazard scenario dialog", [&] {
        for (const char* key : {"SelectAll", "DeSelectAll", "SwitchSelection", "SelectElement"}) {
            button(key)->setVisible(false);
        }
        button("FullExtent")->setText("Zoom To Study Region");
        button("FullExtent")->setToolTip("Zoom To Study Region");
    });
}

void frmMapSelDlg::Form_Load()
{
    m_loaded = true;
    InitializeDialog();
    handler(" creating map selection dialog ", [&] {
        if (!m_pMap) {
            // Initialising has recorded why; there is nothing to load onto.
            return;
        }
        if (isHazardDialog(m_iDlgType)) {
            addQuietly(*m_pMap, m_pSrFeatureLayer, true);
            if (m_iDlgType >= 3) {
                addQuietly(*m_pMap, m_pEpicLayer, false);
            }
        }
        if (m_iDlgType == 0) {
            context::CreateRendrer(*m_pFeatureLayer, m_pFeatureLayer->name());
            m_pFeatureLayer->setSelectionColor(carto::RgbColor{190, 255, 232});
            if (!m_bCurSel) {
                cmdSelectionDone->setEnabled(false);
            }
        }
        ShowSelectedLayer();
        if (isHazardDialog(m_iDlgType)) {
            ZoomToSelectedFault();
        } else {
            ZoomToLayer();
            if (m_bCurSel) {
                ApplyCurrentSelection();
            }
        }
    });
}

void frmMapSelDlg::ShowSelectedLayer()
{
    handler(" selected layer ", [&] {
        m_pFeatureLayer->setVisible(false);
        m_pMap->addLayer(m_pFeatureLayer);
        m_pFeatureLayer->setVisible(true);
    });
}

void frmMapSelDlg::ZoomToLayer()
{
    handler(" setting zoom to layer", [&] {
        if (platform::automation::equalsIgnoreCase(m_pFeatureLayer->name(), "SYSTATE")) {
            m_pFeatureLayer->selectFeatures(
                platform::geodatabase::QueryFilter::where(
                    "[StateFips]  <> '02' AND [StateFips] <> '15'  AND [StateFips]  <> '60' AND "
                    "[StateFips]  <> '74' AND [StateFips] <> '78'  AND [StateFips]  <> '66'  AND "
                    "[StateFips]  <> '69'"),
                carto::SelectionResult::New);
        } else {
            m_pFeatureLayer->selectFeatures({}, carto::SelectionResult::New);
        }
        redrawSelection();
        ZoomToSelection();
        redrawSelection();
        // The selection served only to find the extent.
        m_pMap->clearSelection();
        m_pActiveView->refresh();
    });
}

void frmMapSelDlg::ZoomToSelection()
{
    handler(" zooming to selection", [&] {
        const auto& selected = m_pFeatureLayer->selectionSet();
        if (selected.isEmpty()) {
            return;
        }
        const geometry::Envelope extent = selectedExtent(*m_pFeatureLayer, {});
        if (!extent.isEmpty()) {
            setExtent(extent);
        }
    });
}

geometry::Envelope frmMapSelDlg::boundaryExtent() const
{
    const auto boundary = m_pSrFeatureLayer->featureClass()->row(1);
    if (!boundary) {
        throw std::runtime_error("the study region boundary has no feature 1");
    }
    return boundary->shape().envelope();
}

void frmMapSelDlg::ZoomToSelectedFault()
{
    handler(" zooming to selected fault", [&] {
        cmdSelectionDone->setEnabled(false);
        geometry::Envelope selection;
        const auto& selected = m_pFeatureLayer->selectionSet();
        if (!selected.isEmpty()) {
            if (m_iDlgType == 1 || m_iDlgType == 2) {
                cmdSelectionDone->setEnabled(true);
            }
            selection =
                selectedExtent(*m_pFeatureLayer, [&](const platform::geodatabase::Row& row) {
                    if (m_iDlgType == 3) {
                        m_pFaultCurve = row.shape();
                    }
                });
        }
        setExtent(boundaryExtent().united(selection));
    });
}

void frmMapSelDlg::ZoomToFullExtent()
{
    handler(" zoom to full extent", [&] {
        if (m_iDlgType == 0) {
            m_pActiveView->setExtent(m_pActiveView->fullExtent());
        } else {
            setExtent(boundaryExtent());
        }
        m_pActiveView->refresh();
    });
}

void frmMapSelDlg::setExtent(const geometry::Envelope& extent)
{
    m_pActiveView->setExtent(extent);
    m_pActiveView->partialRefresh(carto::ViewPhase::Geography);
}

void frmMapSelDlg::redrawSelection()
{
    m_pActiveView->partialRefresh(carto::ViewPhase::GeoSelection);
}

void frmMapSelDlg::AddData()
{
    handler(" for add data", [&] {
        platform::ui::FileDialogRequest request;
        request.title = "Select Data";
        request.filter = layers::kDataSetFilter;
        const auto chosen = platform::ui::userPrompts().fileDialog(request);
        if (!chosen) {
            return;
        }
        layers::addByShapeType(*m_pMap, layers::layersOfDataSet(*chosen));
        for (int index = 1; index < m_pMap->layerCount(); ++index) {
            const auto layer = m_pMap->layer(index);
            if (platform::automation::equalsIgnoreCase(layer->name(), "hazardselection")) {
                m_pMap->moveLayer(layer, 0);
            }
        }
    });
}

void frmMapSelDlg::cmdMapSelToolBar_ButtonClick(const std::string& key)
{
    handler(" seleting button on the toolbar", [&] {
        for (auto* action : cmdMapSelToolBar->actions()) {
            action->setChecked(false);
        }
        static const std::map<std::string, int16_t> pressedTools = {
            {"ZoomIn", 1},   {"ZoomOut", 2},       {"Pan", 3},
            {"Identify", 5}, {"SelectElement", 6}, {"SelectFeatures", 7}};
        if (const auto found = pressedTools.find(key); found != pressedTools.end()) {
            m_iCurTool = found->second;
            button(key)->setChecked(true);
        } else if (key == "FullExtent") {
            m_iCurTool = 4;
            ZoomToFullExtent();
        } else if (key == "Layers") {
            m_iCurTool = 11;
            layers::frmLayer layerControl(this);
            layerControl.CreateLayerList(m_pMap);
            layerControl.showModal();
        } else if (key == "AddData") {
            m_iCurTool = 12;
            AddData();
        } else if (key == "SelectAll") {
            m_iCurTool = 8;
            SelectAll();
        } else if (key == "DeSelectAll") {
            m_iCurTool = 9;
            DeselectAll();
        } else if (key == "SwitchSelection") {
            m_iCurTool = 10;
            SwitchSelection();
        }
        showCursor(false);
    });
}

void frmMapSelDlg::picMapControl_MouseDown(const platform::display::MapMouseEvent& event)
{
    handler(" mouse down event", [&] {
        m_bMouseDown = true;
        m_pDownPoint = event.point;
        if (m_iCurTool == 3) {
            showCursor(true);
            m_pActiveView->screenDisplay().panStart(m_pDownPoint);
        } else if (m_iCurTool == 5) {
            showCursor(true);
        }
    });
}

void frmMapSelDlg::picMapControl_MouseMove(const platform::display::MapMouseEvent& event)
{
    handler(" mouse move event", [&] {
        if (m_bMouseDown) {
            if (m_iCurTool == 1 || m_iCurTool == 2 || m_iCurTool == 7) {
                if (!m_pFeedback) {
                    m_pFeedback.emplace();
                    m_pFeedback->start(m_pDownPoint);
                    showCursor(true);
                }
                m_pFeedback->moveTo(event.point);
                picMapControl->setRubberBand(m_pFeedback->current());
            } else if (m_iCurTool == 3) {
                m_pActiveView->screenDisplay().panMoveTo(event.point);
                picMapControl->update();
            }
            return;
        }
        showCursor(false);
        LatLongText->setText(
            QString::fromStdString(selection::LatLongText(event.point.x, event.point.y)));
    });
}

void frmMapSelDlg::picMapControl_MouseUp(const platform::display::MapMouseEvent& event)
{
    handler(" mouse up event", [&] {
        if (!m_bMouseDown) {
            return;
        }
        pUserPoint = event.point;
        std::optional<geometry::Envelope> band;
        if (m_pFeedback) {
            band = m_pFeedback->stop();
        }
        std::optional<geometry::Envelope> extent;
        switch (m_iCurTool) {
        case 1:
            extent =
                band ? zoomInByBand(*band) : zoomInByClick(m_pActiveView->extent(), m_pDownPoint);
            break;
        case 2:
            extent = band ? zoomOutByBand(m_pActiveView->extent(), *band)
                          : zoomOutByClick(m_pActiveView->extent(), m_pDownPoint);
            break;
        case 3:
            extent = m_pActiveView->screenDisplay().panStop();
            break;
        case 5:
            Identify(event);
            break;
        case 7:
            SelectFeaturesMouseUp(event, band);
            break;
        default:
            break;
        }
        if (extent) {
            m_pActiveView->setExtent(*extent);
            m_pActiveView->refresh();
        }
        showCursor(false);
        m_pFeedback.reset();
        picMapControl->setRubberBand(std::nullopt);
        m_bMouseDown = false;
    });
    // A failure half-way must not leave the next move drawing a band.
    m_bMouseDown = false;
    m_pFeedback.reset();
}

void frmMapSelDlg::Identify(const platform::display::MapMouseEvent& event)
{
    if (!(event.modifiers & Qt::ShiftModifier)) {
        m_pIdentifyDlg->clear();
    }
    // The pixel under the pointer, widened by the map's search tolerance as a selection is.
    const auto& transformation = m_pActiveView->displayTransformation();
    const double reach =
        transformation.toMapDistance(m_pMap->selectionEnvironment().searchTolerance);
    const geometry::Point at = event.point;
    const auto probe = geometry::Geometry::polygon({{{at.x - reach, at.y - reach},
                                                     {at.x + reach, at.y - reach},
                                                     {at.x + reach, at.y + reach},
                                                     {at.x - reach, at.y + reach},
                                                     {at.x - reach, at.y - reach}}});
    for (const auto& layer : m_pMap->featureLayers()) {
        m_pIdentifyDlg->addResults(layer->name(), layer->identify(probe));
    }
    if (!m_pIdentifyDlg->isVisible()) {
        // Beside the form, so the map stays in sight.
        m_pIdentifyDlg->move(geometry().topRight() + QPoint(8, 0));
    }
    m_pIdentifyDlg->show();
    m_pIdentifyDlg->raise();
}

void frmMapSelDlg::Form_Resize()
{
    handler(" resizing map selection dialog", [&] {
        const int w = width();
        const int h = height();
        const int top = h - (m_iBottomMargin + cmdBack->height());
        cmdBack->move(w - cmdBack->width(), top);
        cmdSelectionDone->move(w - (m_iRightMargin + cmdBack->width()), top);
        LatLongText->move(LatLongText->x(), top);
        Text1->move(Text1->x(), top);
        cmdMapSelToolBar->setGeometry(0, 0, w, cmdMapSelToolBar->height());
        const int bottomMargin = h - (cmdBack->y() + cmdBack->height());
        const int mapHeight = h - cmdMapSelToolBar->height() - cmdBack->height() - 3 * bottomMargin;
        picMapControl->setGeometry(0, cmdMapSelToolBar->height(), w, std::max(1, mapHeight));
        if (m_pActiveView != nullptr) {
            m_pActiveView->refresh();
        }
    });
}

void frmMapSelDlg::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    if (m_loaded) {
        Form_Resize();
    }
}

void frmMapSelDlg::Form_Unload()
{
    handler(" closing map selection dialog", [&] {
        m_colIdleCursors.clear();
        m_colActiveCursors.clear();
        delete m_pIdentifyDlg;
        m_pIdentifyDlg = nullptr;
        m_iBottomMargin = 0;
        m_iRightMargin = 0;
        m_loaded = false;
    });
}

void frmMapSelDlg::closeEvent(QCloseEvent* event)
{
    // The close box leaves the selection unstored, as Back does.
    m_bSelection = false;
    QDialog::closeEvent(event);
}

} // namespace brevant::selection
