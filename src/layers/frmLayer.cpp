#include "layers/frmLayer.h"

#include "context/ErrorTrap.h"
#include "layers/AddData.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/ClassBreaksRenderer.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/UniqueValueRenderer.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/UserPrompts.h"
#include "platform/ui/qt/ModalWindow.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <variant>

namespace brevant::layers {

namespace carto = platform::carto;
using platform::automation::LibraryCode::Procedure;

namespace {

constexpr int kItemRole = Qt::UserRole + 1;

/// Runs a handler under its phrase: a failure is recorded and the window carries on.
template <class Body> void handler(const char* phrase, Body&& body)
{
    context::runLogged(phrase, Procedure, std::forward<Body>(body));
}

std::string tableKey(int item, const std::string& name)
{
    return std::to_string(item) + name;
}

std::shared_ptr<carto::FeatureLayer> requireFeatureLayer(const std::shared_ptr<carto::Layer>& layer)
{
    auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
    if (!feature) {
        throw std::runtime_error(
            "Type mismatch: " + (layer ? layer->name() : std::string("nothing")) +
            " is not a feature layer");
    }
    return feature;
}

QString plainNumber(double value)
{
    return QString::number(value, 'g', 15);
}

std::string rendererSummary(const carto::FeatureLayer& layer)
{
    return std::visit(
        [](const auto& renderer) -> std::string {
            using R = std::decay_t<decltype(renderer)>;
            if constexpr (std::is_same_v<R, carto::SimpleRenderer>) {
                return "Single symbol";
            } else if constexpr (std::is_same_v<R, carto::ClassBreaksRenderer>) {
                return "Class breaks on " + renderer.field() + ", " +
                       std::to_string(renderer.breakCount()) + " classes";
            } else {
                const std::string field = renderer.fieldCount() > 0 ? renderer.field(0) : "";
                return "Unique values of " + field + ", " + std::to_string(renderer.valueCount()) +
                       " values";
            }
        },
        layer.renderer());
}

std::string sourceOf(const carto::Layer& layer)
{
    if (const auto* feature = dynamic_cast<const carto::FeatureLayer*>(&layer)) {
        if (const auto& featureClass = feature->featureClass()) {
            return featureClass->name() + " in " + featureClass->workspace().path().string();
        }
        return "no data source";
    }
    switch (layer.kind()) {
    case carto::LayerKind::Annotation:
        return "annotation";
    case carto::LayerKind::Raster:
        return "raster";
    case carto::LayerKind::Group:
        return "group of layers";
    case carto::LayerKind::Feature:
        break;
    }
    return {};
}

} // namespace

/// The layer list: a list box that tells the window of every button press on it, after the
/// press has moved the selection, as the list's mouse-down handling needs.
class LayerListBox : public QListWidget {
public:
    LayerListBox(frmLayer& form, QWidget* parent) : QListWidget(parent), m_form(form) {}

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        QListWidget::mousePressEvent(event);
        m_form.lstLayers_MouseDown(event->button(), event->position().toPoint());
    }

private:
    frmLayer& m_form;
};

frmLayer::frmLayer(QWidget* parent) : QDialog(parent)
{
    setObjectName("frmLayer");
    setWindowTitle("Layer Control");
    buildControls();
}

frmLayer::~frmLayer()
{
    setMap(nullptr);
}

void frmLayer::buildControls()
{
    auto* layout = new QVBoxLayout(this);

    fraListHolder = new QGroupBox("Layers", this);
    fraListHolder->setObjectName("fraListHolder");
    auto* listRow = new QHBoxLayout(fraListHolder);
    lstLayers = new LayerListBox(*this, fraListHolder);
    lstLayers->setObjectName("lstLayers");
    listRow->addWidget(lstLayers, 1);
    auto* buttons = new QVBoxLayout;
    const auto addButton = [&](QPushButton*& button, const char* name, const char* text) {
        button = new QPushButton(text, fraListHolder);
        button->setObjectName(name);
        button->setEnabled(false);
        buttons->addWidget(button);
    };
    addButton(cmdUp, "cmdUp", "Up");
    addButton(cmdDown, "cmdDown", "Down");
    addButton(cmdTop, "cmdTop", "Top");
    addButton(cmdBottom, "cmdBottom", "Bottom");
    buttons->addStretch();
    listRow->addLayout(buttons);
    layout->addWidget(fraListHolder, 1);

    fraLayerProperties = new QGroupBox("Feature Layer Properties", this);
    fraLayerProperties->setObjectName("fraLayerProperties");
    auto* properties = new QVBoxLayout(fraLayerProperties);
    auto* boxes = new QHBoxLayout;
    const auto addBox = [&](QCheckBox*& box, const char* name, const char* text) {
        box = new QCheckBox(text, fraLayerProperties);
        box->setObjectName(name);
        boxes->addWidget(box);
    };
    addBox(chkVisible, "chkVisible", "Visible");
    addBox(chkSelectable, "chkSelectable", "Selectable");
    addBox(chkLabel, "chkLabel", "Label");
    properties->addLayout(boxes);
    lblScaleRange = new QLabel("Visiblility Range", fraLayerProperties);
    lblScaleRange->setObjectName("lblScaleRange");
    properties->addWidget(lblScaleRange);
    const auto addScale = [&](QLineEdit*& box, const char* name, const char* caption) {
        auto* row = new QHBoxLayout;
        row->addWidget(new QLabel("1:", fraLayerProperties));
        box = new QLineEdit(fraLayerProperties);
        box->setObjectName(name);
        row->addWidget(box, 1);
        row->addWidget(new QLabel(caption, fraLayerProperties));
        properties->addLayout(row);
    };
    addScale(txtMin, "txtMin", "(Min Scale)");
    addScale(txtMax, "txtMax", "(Max Scale)");
    layout->addWidget(fraLayerProperties);

    Frame1 = new QGroupBox("Symbology", this);
    Frame1->setObjectName("Frame1");
    layout->addWidget(Frame1);
    buildSymbologyPages();

    mnuLayerPopup = new QMenu("Layer Popup", this);
    mnuLayerPopup->setObjectName("mnuLayerPopup");
    // A script picks an item of this menu by opening it with a right press on the list.
    mnuLayerPopup->setProperty("opener", "lstLayers");
    mnuRemoveLayer = mnuLayerPopup->addAction("Remove Layer");
    mnuRemoveLayer->setObjectName("mnuRemoveLayer");
    mnuSep1 = mnuLayerPopup->addSeparator();
    mnuSep1->setObjectName("mnuSep1");
    mnuVisible = mnuLayerPopup->addAction("Visible");
    mnuVisible->setObjectName("mnuVisible");
    mnuVisible->setCheckable(true);
    mnuLabel = mnuLayerPopup->addAction("Label");
    mnuLabel->setObjectName("mnuLabel");
    mnuLabel->setCheckable(true);

    connect(lstLayers, &QListWidget::currentRowChanged, this, [this](int) { lstLayers_Click(); });
    connect(cmdUp, &QPushButton::clicked, this, [this] { cmdUp_Click(); });
    connect(cmdDown, &QPushButton::clicked, this, [this] { cmdDown_Click(); });
    connect(cmdTop, &QPushButton::clicked, this, [this] { cmdTop_Click(); });
    connect(cmdBottom, &QPushButton::clicked, this, [this] { cmdBottom_Click(); });
    // clicked comes with the mouse release, after the box has taken its new state.
    connect(chkVisible, &QCheckBox::clicked, this, [this] { chkVisible_MouseUp(); });
    connect(chkSelectable, &QCheckBox::clicked, this, [this] { chkSelectable_MouseUp(); });
    connect(chkLabel, &QCheckBox::clicked, this, [this] { chkLabel_MouseUp(); });
    connect(txtMin, &QLineEdit::textChanged, this, [this] { txtMin_Change(); });
    connect(txtMax, &QLineEdit::textChanged, this, [this] { txtMax_Change(); });
    connect(mnuRemoveLayer, &QAction::triggered, this, [this] { mnuRemoveLayer_Click(); });
    connect(mnuVisible, &QAction::triggered, this, [this] { mnuVisible_Click(); });
    connect(mnuLabel, &QAction::triggered, this, [this] { mnuLabel_Click(); });
    connect(mnuLayerPopup, &QMenu::aboutToHide, this, [this] { updateMenuMarks(); });
}

bool frmLayer::isProtectedName(const std::string& name)
{
    using platform::automation::equalsIgnoreCase;
    for (const char* maintained :
         {"regionSelection", "EqFault", "eqEpicenter", "Region boundary", "hazardselection"}) {
        if (equalsIgnoreCase(name, maintained)) {
            return true;
        }
    }
    return false;
}

std::shared_ptr<carto::Map> frmLayer::Map() const
{
    std::shared_ptr<carto::Map> map;
    handler(" get map", [&] { map = m_map; });
    return map;
}

void frmLayer::setMap(std::shared_ptr<carto::Map> map)
{
    handler(" set map", [&] {
        if (m_map && m_listener != 0) {
            m_map->removeListener(m_listener);
            m_listener = 0;
        }
        m_map = std::move(map);
        if (m_map) {
            m_listener = m_map->addListener([this](const carto::ViewEvent& e) { onViewEvent(e); });
        }
    });
}

void frmLayer::onViewEvent(const carto::ViewEvent& event)
{
    switch (event.kind) {
    case carto::ViewEvent::Kind::ContentsChanged:
        handler(" view contents changed ", [&] { CreateLayerList(m_map); });
        break;
    case carto::ViewEvent::Kind::ItemAdded:
        handler(" view item added ", [&] { CreateLayerList(m_map); });
        break;
    case carto::ViewEvent::Kind::ItemDeleted:
        handler(" view item deleted", [&] { CreateLayerList(m_map); });
        break;
    case carto::ViewEvent::Kind::Refreshed:
        break;
    }
}

void frmLayer::CreateLayerList(std::shared_ptr<carto::Map> map)
{
    handler(" create layer list ", [&] {
        if (map != m_map) {
            setMap(std::move(map));
        }
        m_layerTable.clear();
        {
            const QSignalBlocker quiet(lstLayers);
            lstLayers->clear();
        }
        if (m_map) {
            for (const auto& layer : m_map->layers()) {
                AddLayerToList(layer);
            }
        }
        EnableLayerControls(lstLayers->count() > 0);
        lstLayers_Click();
    });
}

void frmLayer::AddLayerToList(const std::shared_ptr<carto::Layer>& layer)
{
    handler(" add layer to list ", [&] {
        if (const auto group = std::dynamic_pointer_cast<carto::GroupLayer>(layer)) {
            for (const auto& member : group->layers()) {
                AddLayerToList(member);
            }
            return;
        }
        if (platform::automation::equalsIgnoreCase(layer->name(), "HazardSelection")) {
            m_hazardSelection = true;
            return;
        }
        int highest = 0;
        const QString name = QString::fromStdString(layer->name());
        for (int line = 0; line < lstLayers->count(); ++line) {
            const auto* item = lstLayers->item(line);
            if (item->text() == name) {
                highest = std::max(highest, item->data(kItemRole).toInt());
            }
        }
        auto* item = new QListWidgetItem(name);
        item->setData(kItemRole, highest + 1);
        {
            const QSignalBlocker quiet(lstLayers);
            lstLayers->addItem(item);
        }
        m_layerTable[tableKey(highest + 1, layer->name())] = layer;
    });
}

void frmLayer::EnableLayerControls(bool flag)
{
    handler(" enable layer controls ", [&] {
        fraListHolder->setEnabled(flag);
        fraLayerProperties->setEnabled(flag);
        chkVisible->setEnabled(flag);
        chkSelectable->setEnabled(flag);
        lstLayers->setEnabled(flag);
        chkVisible->setChecked(false);
        chkSelectable->setChecked(false);
        EnablePointControls(flag);
        EnablePolylineControls(flag);
        EnablePolygonControls(flag);
        if (flag) {
            lstLayers->setCurrentRow(0);
        }
    });
}

std::shared_ptr<carto::Layer> frmLayer::listedLayer(int line) const
{
    const auto* item = lstLayers->item(line);
    if (item == nullptr) {
        return nullptr;
    }
    const auto found =
        m_layerTable.find(tableKey(item->data(kItemRole).toInt(), item->text().toStdString()));
    return found == m_layerTable.end() ? nullptr : found->second;
}

std::shared_ptr<carto::Layer> frmLayer::selectedLayer() const
{
    auto layer = listedLayer(lstLayers->currentRow());
    if (!layer) {
        throw std::runtime_error("no layer is selected in the list");
    }
    return layer;
}

void frmLayer::lstLayers_Click()
{
    handler(" layer selection on list ", [&] {
        UpdateLayersInterface();
        for (auto* button : {cmdUp, cmdDown, cmdTop, cmdBottom}) {
            button->setEnabled(true);
        }
    });
}

void frmLayer::UpdateLayersInterface()
{
    handler(" updating layers interface ", [&] {
        if (lstLayers->count() == 0) {
            return;
        }
        const auto layer = selectedLayer();
        chkVisible->setChecked(layer->visible());
        txtMin->setText(plainNumber(layer->minimumScale()));
        txtMax->setText(plainNumber(layer->maximumScale()));
        const auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
        chkSelectable->setEnabled(feature != nullptr);
        chkSelectable->setChecked(feature && feature->selectable());
        chkLabel->setEnabled(feature != nullptr);
        chkLabel->setChecked(feature && feature->displayAnnotation());
        const bool maintained = isProtectedName(layer->name());
        chkVisible->setEnabled(!maintained);
        chkSelectable->setEnabled(!maintained);
        m_refresh = false;
        ShowSymbologyProperties(layer);
        m_refresh = true;
    });
}

void frmLayer::ChangeLayerLocation(int direction)
{
    handler(" layer location change ", [&] {
        const int n = lstLayers->count();
        if (n < 2) {
            return;
        }
        const auto layer = requireFeatureLayer(selectedLayer());
        bool onTop = false;
        for (const auto& top : m_map->layers()) {
            onTop = onTop || top->name() == layer->name();
        }
        if (!onTop) {
            return;
        }
        const int i = lstLayers->currentRow();
        const int h = m_hazardSelection ? 1 : 0;
        int position = 0;
        int line = 0;
        switch (direction) {
        case 0:
            if (i == 0) {
                return;
            }
            position = i - 1 + h;
            line = i - 1;
            break;
        case 1:
            if (i >= n - 1) {
                return;
            }
            position = i + 1 + h;
            line = i + 1;
            break;
        case 2:
            position = h;
            line = 0;
            break;
        default:
            position = n;
            line = n - 1;
            break;
        }
        const auto map = m_map;
        map->moveLayer(layer, position);
        CreateLayerList(map);
        lstLayers->setCurrentRow(line);
        RefreshActiveView();
    });
}

void frmLayer::cmdUp_Click()
{
    handler(" move up ", [&] { ChangeLayerLocation(0); });
}

void frmLayer::cmdDown_Click()
{
    handler(" move down ", [&] { ChangeLayerLocation(1); });
}

void frmLayer::cmdTop_Click()
{
    handler(" move Top ", [&] { ChangeLayerLocation(2); });
}

void frmLayer::cmdBottom_Click()
{
    handler(" move bottom ", [&] { ChangeLayerLocation(3); });
}

void frmLayer::chkVisible_MouseUp()
{
    handler(" layer visible ", [&] {
        selectedLayer()->setVisible(chkVisible->isChecked());
        if (m_refresh) {
            RefreshActiveView();
        }
    });
}

void frmLayer::chkSelectable_MouseUp()
{
    handler(" layer selectable ", [&] {
        requireFeatureLayer(selectedLayer())->setSelectable(chkSelectable->isChecked());
    });
}

void frmLayer::chkLabel_MouseUp()
{
    handler(" label selection ", [&] {
        requireFeatureLayer(selectedLayer())->setDisplayAnnotation(chkLabel->isChecked());
        if (m_refresh) {
            RefreshActiveView();
        }
    });
}

namespace {
/// The number a scale box holds, or nothing when its text is not a number.
std::optional<double> numericText(const QLineEdit& box)
{
    bool ok = false;
    const double value = box.text().trimmed().toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}
} // namespace

void frmLayer::txtMin_Change()
{
    handler(" minimum range change", [&] {
        if (const auto value = numericText(*txtMin)) {
            selectedLayer()->setMinimumScale(*value);
        }
    });
}

void frmLayer::txtMax_Change()
{
    handler(" maximum range change", [&] {
        if (const auto value = numericText(*txtMax)) {
            selectedLayer()->setMaximumScale(*value);
        }
    });
}

void frmLayer::lstLayers_MouseDown(Qt::MouseButton button, QPoint at)
{
    handler(" layer selection in layer list ", [&] {
        if (button == Qt::RightButton) {
            mnuLayerPopup_Click(lstLayers->viewport()->mapToGlobal(at));
            // The marks follow once the menu has closed.
            return;
        }
        updateMenuMarks();
    });
}

void frmLayer::updateMenuMarks()
{
    handler(" layer selection in layer list ", [&] {
        if (lstLayers->count() == 0 || lstLayers->currentRow() < 0) {
            return;
        }
        const auto layer = selectedLayer();
        m_visibleMark = layer->visible();
        mnuVisible->setChecked(m_visibleMark);
        const auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
        m_labelMark = feature && feature->displayAnnotation();
        mnuLabel->setEnabled(feature != nullptr);
        mnuLabel->setChecked(m_labelMark);
    });
}

void frmLayer::mnuLayerPopup_Click(QPoint at)
{
    handler(" creating pop up menu", [&] {
        const auto layer = listedLayer(lstLayers->currentRow());
        const bool maintained = layer && isProtectedName(layer->name());
        mnuRemoveLayer->setEnabled(!maintained);
        mnuVisible->setEnabled(!maintained);
        // Not exec(): a modal menu would stop a scripted window, which picks its item itself.
        mnuLayerPopup->popup(at);
    });
}

void frmLayer::mnuVisible_Click()
{
    handler(" visible selection", [&] {
        // The mark is the one shown when the menu opened, not the toggled one.
        selectedLayer()->setVisible(!m_visibleMark);
        UpdateLayersInterface();
        RefreshActiveView();
    });
}

void frmLayer::mnuLabel_Click()
{
    handler(" label menu", [&] {
        requireFeatureLayer(selectedLayer())->setDisplayAnnotation(!m_labelMark);
        UpdateLayersInterface();
        RefreshActiveView();
    });
}

void frmLayer::mnuRemoveLayer_Click()
{
    handler(" remove layer selection", [&] { RemoveSelectedLayer(); });
}

void frmLayer::RemoveSelectedLayer()
{
    handler(" remove layer", [&] {
        const auto layer = requireFeatureLayer(selectedLayer());
        const auto map = m_map;
        map->deleteLayer(layer);
        CreateLayerList(map);
        RefreshActiveView();
    });
}

void frmLayer::SelectedLayerChanged()
{
    handler(" is layer selectable selection", [&] {
        requireFeatureLayer(selectedLayer());
        UpdateLayersInterface();
        RefreshActiveView();
    });
}

void frmLayer::RefreshActiveView()
{
    handler(" refresh map", [&] {
        if (m_map) {
            m_map->refresh();
        }
    });
}

void frmLayer::ShowLayerProperties()
{
    handler(" layer properties menu", [&] {
        const auto layer = selectedLayer();
        QDialog sheet(this);
        sheet.setObjectName("LayerProperties");
        sheet.setWindowTitle(QString::fromStdString("Layer " + layer->name() + " Properties"));
        auto* form = new QFormLayout(&sheet);
        const auto addRow = [&](const char* caption, const char* name, const std::string& text) {
            auto* value = new QLabel(QString::fromStdString(text), &sheet);
            value->setObjectName(name);
            form->addRow(caption, value);
        };
        addRow("Name:", "lblName", layer->name());
        addRow("Source:", "lblSource", sourceOf(*layer));
        addRow("Visible:", "lblVisible", layer->visible() ? "Yes" : "No");
        addRow("Scale range:", "lblScaleRange",
               "1:" + plainNumber(layer->minimumScale()).toStdString() +
                   " to 1:" + plainNumber(layer->maximumScale()).toStdString());
        const auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
        addRow("Renderer:", "lblRenderer", feature ? rendererSummary(*feature) : "none");
        auto* buttons =
            new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &sheet);
        buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
        buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
        connect(buttons, &QDialogButtonBox::accepted, &sheet, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, &sheet, &QDialog::reject);
        form->addRow(buttons);
        platform::ui::qt::runModalWindow(sheet, "LayerProperties");
        if (sheet.result() == QDialog::Accepted) {
            RefreshActiveView();
        }
    });
}

void frmLayer::AddData()
{
    handler(" add data", [&] {
        if (!m_map) {
            throw std::runtime_error("no map to add data to");
        }
        platform::ui::FileDialogRequest request;
        request.title = "Select Data";
        request.filter = kDataSetFilter;
        const auto chosen = platform::ui::userPrompts().fileDialog(request);
        if (!chosen) {
            return;
        }
        addByShapeType(*m_map, layersOfDataSet(*chosen));
        for (int index = 1; index < m_map->layerCount(); ++index) {
            const auto layer = m_map->layer(index);
            platform::ui::userPrompts().messageBox(layer->name(), "",
                                                   platform::ui::MessageButtons::Ok);
            if (platform::automation::equalsIgnoreCase(layer->name(), "hazardselection")) {
                m_map->moveLayer(layer, 0);
            }
        }
    });
}

void frmLayer::showModal()
{
    platform::ui::qt::runModalWindow(*this, "frmLayer");
}

void frmLayer::closeEvent(QCloseEvent* event)
{
    // The close box only hides the window, which keeps its state for the next opening.
    handler(" layer query ", [&] {
        event->ignore();
        hide();
    });
}

} // namespace brevant::layers
