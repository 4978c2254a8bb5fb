// The symbology pages of the layer control: the lower half of frmLayer.
#include "context/ErrorTrap.h"
#include "layers/frmLayer.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Layer.h"
#include "platform/carto/Map.h"
#include "platform/ui/UserPrompts.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cfenv>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace brevant::layers {

namespace carto = platform::carto;
using platform::automation::LibraryCode::Procedure;

namespace {

template <class Body> void handler(const char* phrase, Body&& body)
{
    context::runLogged(phrase, Procedure, std::forward<Body>(body));
}

constexpr const char* kIncompatibleTitle =
    "Incompatible symbols are being used in this layer.   This control cannot be used to edit them";
constexpr const char* kNotFeatureLayer =
    "The current layer is not a FeatureLayer and therefore its symbology cannot be displayed here.";

/// The simple renderer's symbol of a feature layer, or null when it has none of that kind.
template <class SymbolType> SymbolType* simpleSymbol(carto::FeatureLayer& layer)
{
    auto* renderer = std::get_if<carto::SimpleRenderer>(&layer.renderer());
    if (renderer == nullptr || !renderer->symbol) {
        return nullptr;
    }
    return std::get_if<SymbolType>(&*renderer->symbol);
}

template <class SymbolType> SymbolType& requireSymbol(const std::shared_ptr<carto::Layer>& layer)
{
    auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
    SymbolType* symbol = feature ? simpleSymbol<SymbolType>(*feature) : nullptr;
    if (symbol == nullptr) {
        throw std::runtime_error("Type mismatch: the layer's renderer has no symbol of this kind");
    }
    return *symbol;
}

carto::SimpleLineSymbol& requireOutline(carto::SimpleFillSymbol& fill)
{
    auto* outline = std::get_if<carto::SimpleLineSymbol>(&fill.outline);
    if (outline == nullptr) {
        throw std::runtime_error("Type mismatch: the fill's outline is not a simple line");
    }
    return *outline;
}

/// The text as a 16-bit whole number (halves to even); nothing for text that is not a number.
/// Throws std::overflow_error beyond the 16-bit range.
std::optional<int> wholeNumber(const QLineEdit& box)
{
    bool ok = false;
    const double value = box.text().trimmed().toDouble(&ok);
    if (!ok) {
        return std::nullopt;
    }
    const int previous = std::fegetround();
    std::fesetround(FE_TONEAREST);
    const double rounded = std::nearbyint(value);
    std::fesetround(previous);
    if (rounded > std::numeric_limits<std::int16_t>::max() ||
        rounded < std::numeric_limits<std::int16_t>::min()) {
        throw std::overflow_error("Overflow: " + box.text().toStdString());
    }
    return static_cast<int>(rounded);
}

void showColour(QPushButton& box, carto::RgbColor colour)
{
    // A push button paints a style sheet's background only when the sheet gives it a border.
    box.setStyleSheet(QString("background-color: rgb(%1, %2, %3); border: 1px solid gray;")
                          .arg(colour.red & 0xFF)
                          .arg(colour.green & 0xFF)
                          .arg(colour.blue & 0xFF));
    // What a script reads of the box: the colour as colour text ("000,000,255" is blue).
    box.setProperty("value", QString("%1,%2,%3")
                                 .arg(colour.red & 0xFF, 3, 10, QChar('0'))
                                 .arg(colour.green & 0xFF, 3, 10, QChar('0'))
                                 .arg(colour.blue & 0xFF, 3, 10, QChar('0')));
}

/// Asks for a colour with the preset shown; Cancel gives the preset back.
carto::RgbColor askColour(carto::RgbColor preset, const char* title)
{
    using platform::ui::ColourDialogFlags;
    const auto chosen = platform::ui::userPrompts().colourDialog(
        preset.rgb(), ColourDialogFlags::PresetColour | ColourDialogFlags::FullOpen, title);
    return carto::RgbColor::fromRgb(chosen.value_or(preset.rgb()));
}

QLabel* caption(const char* name, const char* text, QWidget* page)
{
    auto* label = new QLabel(text, page);
    label->setObjectName(name);
    label->setWordWrap(true);
    return label;
}

} // namespace

void frmLayer::buildSymbologyPages()
{
    auto* pages = new QVBoxLayout(Frame1);
    const auto addPage = [&](int index) {
        auto* page = new QWidget(Frame1);
        page->setObjectName(QString("fraDisplayPage(%1)").arg(index));
        page->hide();
        pages->addWidget(page);
        fraDisplayPage[index] = page;
        return page;
    };
    const auto geometryPage = [&](int index,
                                  std::initializer_list<std::pair<QLabel*, QWidget*>> rows) {
        auto* page = fraDisplayPage.at(index);
        auto* grid = new QGridLayout(page);
        int row = 0;
        for (const auto& [label, control] : rows) {
            label->setParent(page);
            control->setParent(page);
            grid->addWidget(label, row, 0);
            grid->addWidget(control, row, 1);
            ++row;
        }
    };
    const auto styleList = [&](QComboBox*& list, const char* name, QStringList styles) {
        list = new QComboBox;
        list->setObjectName(name);
        list->addItems(styles);
        return list;
    };
    const auto colourBox = [&](QPushButton*& box, const char* name) {
        box = new QPushButton;
        box->setObjectName(name);
        box->setFlat(true);
        box->setAutoFillBackground(true);
        box->setMinimumSize(48, 20);
        return box;
    };
    const auto numberBox = [&](QLineEdit*& box, const char* name) {
        box = new QLineEdit;
        box->setObjectName(name);
        return box;
    };
    for (int index : {0, 1, 2, 3, 4, 6, 7}) {
        addPage(index);
    }
    // Form_Load: the style lists, each entry at the position of its style value.
    geometryPage(
        0, {{caption("lblPtStyle", "Point Symbol", nullptr),
             styleList(cboPtStyle, "cboPtStyle",
                       {"Circle", "Square", "Cross", "X Marker", "Diamond"})},
            {caption("lblPtColor", "Point Color", nullptr), colourBox(picPt, "picPt")},
            {caption("lblPtSize", "Point Size", nullptr), numberBox(txtPtSize, "txtPtSize")}});
    geometryPage(1, {{caption("lblPolylineStyle", "Line Symbol", nullptr),
                      styleList(cboPolylineStyle, "cboPolylineStyle",
                                {"Solid", "Dash", "Dot", "Dash Dot", "Dash Dot Dot"})},
                     {caption("lblPolyLineColor", "Line Color", nullptr),
                      colourBox(picPolyline, "picPolyline")},
                     {caption("lblPolylineWidth", "Line Width", nullptr),
                      numberBox(txtPolylineWidth, "txtPolylineWidth")}});
    geometryPage(2, {{caption("lblPolygonStyle", "Fill Symbol", nullptr),
                      styleList(cboPolyStyle, "cboPolyStyle",
                                {"Solid", "Hollow", "Horizontal", "Vertical", "Forward Diagonal",
                                 "Backward Diagonal", "Cross", "Diagonal Cross"})},
                     {caption("lblPolygonFillCol", "Fill Color", nullptr),
                      colourBox(picPolyColor, "picPolyColor")},
                     {caption("lblPolygonOutlineColor", "Outline Color", nullptr),
                      colourBox(picPolyOutline, "picPolyOutline")},
                     {caption("lblPolyOutWidth", "Outline Width", nullptr),
                      numberBox(txtPolyOutlineWidth, "txtPolyOutlineWidth")}});
    const auto textPage = [&](int index,
                              std::initializer_list<std::pair<const char*, const char*>> texts) {
        auto* page = fraDisplayPage.at(index);
        auto* column = new QVBoxLayout(page);
        for (const auto& [name, text] : texts) {
            column->addWidget(caption(name, text, page));
        }
    };
    textPage(3, {{"lblSimpleRendererWarning",
                  "Only layers using the Simple Renderer can be edited with this control.    For "
                  "layers using a complex renderer, ArcMap should be used to author the layers, "
                  "then these layers can be loaded into the map, either by the AddData Command or "
                  "at design time."}});
    textPage(4, {{"lblIncompatibleTitle4",
                  "Incompatible symbols are being used in this layer.   This control cannot be "
                  "used to edit them.  Use the layer properties page."},
                 {"lblIncompatibleText4",
                  "The symbols used by the renderer for this layer cannot be edited using this "
                  "control."}});
    textPage(6, {{"lblIncompatibleTitle6", kIncompatibleTitle},
                 {"lblAnnotationLayer",
                  "The current layer is an annotation layer and therefore its symbology cannot be "
                  "displayed here."},
                 {"lblNotFeatureLayer6", kNotFeatureLayer}});
    textPage(7, {{"lblIncompatibleTitle7", kIncompatibleTitle},
                 {"lblNotFeatureLayer7", kNotFeatureLayer}});

    // Programmatic changes run these too: filling a page writes its values back.
    connect(cboPtStyle, &QComboBox::currentIndexChanged, this, [this] { cboPtStyle_Click(); });
    connect(cboPolylineStyle, &QComboBox::currentIndexChanged, this,
            [this] { cboPolylineStyle_Click(); });
    connect(cboPolyStyle, &QComboBox::currentIndexChanged, this, [this] { cboPolyStyle_Click(); });
    connect(picPt, &QPushButton::clicked, this, [this] { picPt_Click(); });
    connect(picPolyline, &QPushButton::clicked, this, [this] { picPolyline_Click(); });
    connect(picPolyColor, &QPushButton::clicked, this, [this] { picPolyColor_Click(); });
    connect(picPolyOutline, &QPushButton::clicked, this, [this] { picPolyOutline_Click(); });
    connect(txtPtSize, &QLineEdit::textChanged, this, [this] { txtPtSize_Change(); });
    connect(txtPolylineWidth, &QLineEdit::textChanged, this, [this] { txtPolylineWidth_Change(); });
    connect(txtPolyOutlineWidth, &QLineEdit::textChanged, this,
            [this] { txtPolyOutlineWidth_Change(); });
}

void frmLayer::ShowSymbologyProperties(const std::shared_ptr<carto::Layer>& layer)
{
    handler(" symbology properties ", [&] {
        int page = 6;
        const auto feature = std::dynamic_pointer_cast<carto::FeatureLayer>(layer);
        if (feature && !feature->featureClass()) {
            page = 7;
        } else if (feature) {
            SymbolFlags flags{false, false};
            switch (feature->shapeType()) {
            case platform::geometry::ShapeType::Point:
                page = 0;
                flags = ShowPointProperties(layer);
                break;
            case platform::geometry::ShapeType::Polyline:
                page = 1;
                flags = ShowPolylineProperties(layer);
                break;
            case platform::geometry::ShapeType::Polygon:
                page = 2;
                flags = ShowPolygonProperties(layer);
                break;
            default:
                break;
            }
            if (!flags.simpleRenderer) {
                page = 3;
            } else if (!flags.simpleSymbol) {
                page = 4;
            }
        }
        if (m_page >= 0 && m_page != page) {
            fraDisplayPage.at(m_page)->hide();
        }
        fraDisplayPage.at(page)->show();
        m_page = page;
    });
}

frmLayer::SymbolFlags frmLayer::ShowPointProperties(const std::shared_ptr<carto::Layer>& layer)
{
    SymbolFlags flags;
    handler(" point properties ", [&] {
        auto& feature = dynamic_cast<carto::FeatureLayer&>(*layer);
        if (!std::holds_alternative<carto::SimpleRenderer>(feature.renderer())) {
            flags.simpleRenderer = false;
            return;
        }
        auto* marker = simpleSymbol<carto::SimpleMarkerSymbol>(feature);
        if (marker == nullptr) {
            flags.simpleSymbol = false;
            return;
        }
        const auto symbol = *marker;
        cboPtStyle->setCurrentIndex(static_cast<int>(symbol.style));
        showColour(*picPt, symbol.color);
        txtPtSize->setText(QString::number(symbol.size, 'g', 15));
        EnablePointControls(true);
    });
    return flags;
}

frmLayer::SymbolFlags frmLayer::ShowPolylineProperties(const std::shared_ptr<carto::Layer>& layer)
{
    SymbolFlags flags;
    handler(" polyline properties ", [&] {
        auto& feature = dynamic_cast<carto::FeatureLayer&>(*layer);
        if (!std::holds_alternative<carto::SimpleRenderer>(feature.renderer())) {
            flags.simpleRenderer = false;
            return;
        }
        auto* line = simpleSymbol<carto::SimpleLineSymbol>(feature);
        if (line == nullptr) {
            flags.simpleSymbol = false;
            return;
        }
        const auto symbol = *line;
        cboPolylineStyle->setCurrentIndex(static_cast<int>(symbol.style));
        showColour(*picPolyline, symbol.color);
        txtPolylineWidth->setText(QString::number(symbol.width, 'g', 15));
        EnablePolylineControls(true);
    });
    return flags;
}

frmLayer::SymbolFlags frmLayer::ShowPolygonProperties(const std::shared_ptr<carto::Layer>& layer)
{
    SymbolFlags flags;
    handler(" polygon properties ", [&] {
        auto& feature = dynamic_cast<carto::FeatureLayer&>(*layer);
        if (!std::holds_alternative<carto::SimpleRenderer>(feature.renderer())) {
            flags.simpleRenderer = false;
            return;
        }
        auto* fill = simpleSymbol<carto::SimpleFillSymbol>(feature);
        const auto* outline = fill ? std::get_if<carto::SimpleLineSymbol>(&fill->outline) : nullptr;
        if (outline == nullptr) {
            flags.simpleSymbol = false;
            return;
        }
        // The outline is read as a copy; a zero width shows as 1 without touching the symbol.
        auto shownOutline = *outline;
        if (shownOutline.width == 0.0) {
            shownOutline.width = 1.0;
        }
        const auto symbol = *fill;
        cboPolyStyle->setCurrentIndex(static_cast<int>(symbol.style));
        showColour(*picPolyColor, symbol.color);
        showColour(*picPolyOutline, shownOutline.color);
        txtPolyOutlineWidth->setText(QString::number(shownOutline.width, 'g', 15));
        EnablePolygonControls(true);
    });
    return flags;
}

void frmLayer::EnablePointControls(bool flag)
{
    handler(" enabling point layer interface", [&] {
        for (const char* name :
             {"cboPtStyle", "picPt", "txtPtSize", "lblPtStyle", "lblPtColor", "lblPtSize"}) {
            findChild<QWidget*>(name)->setEnabled(flag);
        }
    });
}

void frmLayer::EnablePolylineControls(bool flag)
{
    handler(" enabling polyline layer interface ", [&] {
        for (const char* name : {"cboPolylineStyle", "picPolyline", "txtPolylineWidth",
                                 "lblPolylineStyle", "lblPolyLineColor", "lblPolylineWidth"}) {
            findChild<QWidget*>(name)->setEnabled(flag);
        }
    });
}

void frmLayer::EnablePolygonControls(bool flag)
{
    handler(" enabling polygon layer interface ", [&] {
        for (const char* name : {"cboPolyStyle", "picPolyColor", "picPolyOutline",
                                 "txtPolyOutlineWidth", "lblPolygonStyle", "lblPolygonFillCol",
                                 "lblPolygonOutlineColor", "lblPolyOutWidth"}) {
            findChild<QWidget*>(name)->setEnabled(flag);
        }
    });
}

void frmLayer::refreshIfSet()
{
    if (m_refresh) {
        RefreshActiveView();
    }
}

void frmLayer::cboPtStyle_Click()
{
    handler(" point style ", [&] {
        auto& marker = requireSymbol<carto::SimpleMarkerSymbol>(selectedLayer());
        if (!cboPtStyle->currentText().isEmpty() &&
            cboPtStyle->currentIndex() != static_cast<int>(marker.style)) {
            marker.style = static_cast<carto::SimpleMarkerStyle>(cboPtStyle->currentIndex());
        }
        refreshIfSet();
    });
}

void frmLayer::cboPolylineStyle_Click()
{
    handler(" polyline style ", [&] {
        auto& line = requireSymbol<carto::SimpleLineSymbol>(selectedLayer());
        if (!cboPolylineStyle->currentText().isEmpty() &&
            cboPolylineStyle->currentIndex() != static_cast<int>(line.style)) {
            line.style = static_cast<carto::SimpleLineStyle>(cboPolylineStyle->currentIndex());
        }
        refreshIfSet();
    });
}

void frmLayer::cboPolyStyle_Click()
{
    handler(" polyline style selection ", [&] {
        auto& fill = requireSymbol<carto::SimpleFillSymbol>(selectedLayer());
        if (!cboPolyStyle->currentText().isEmpty() &&
            cboPolyStyle->currentIndex() != static_cast<int>(fill.style)) {
            fill.style = static_cast<carto::SimpleFillStyle>(cboPolyStyle->currentIndex());
        }
        refreshIfSet();
    });
}

void frmLayer::picPt_Click()
{
    handler(" point type selection", [&] {
        auto& marker = requireSymbol<carto::SimpleMarkerSymbol>(selectedLayer());
        marker.color = askColour(marker.color, "Select Point Color");
        showColour(*picPt, marker.color);
        refreshIfSet();
    });
}

void frmLayer::picPolyline_Click()
{
    handler(" polyline selection", [&] {
        auto& line = requireSymbol<carto::SimpleLineSymbol>(selectedLayer());
        line.color = askColour(line.color, "Select Line Color");
        showColour(*picPolyline, line.color);
        refreshIfSet();
    });
}

void frmLayer::picPolyColor_Click()
{
    handler(" polygon color change ", [&] {
        auto& fill = requireSymbol<carto::SimpleFillSymbol>(selectedLayer());
        fill.color = askColour(fill.color, "Select Fill Color");
        showColour(*picPolyColor, fill.color);
        refreshIfSet();
    });
}

void frmLayer::picPolyOutline_Click()
{
    handler(" polygon ouline selection", [&] {
        auto& outline = requireOutline(requireSymbol<carto::SimpleFillSymbol>(selectedLayer()));
        outline.color = askColour(outline.color, "Select Outline Color");
        showColour(*picPolyOutline, outline.color);
        refreshIfSet();
    });
}

void frmLayer::txtPtSize_Change()
{
    handler(" point size change", [&] {
        if (const auto size = wholeNumber(*txtPtSize)) {
            requireSymbol<carto::SimpleMarkerSymbol>(selectedLayer()).size = *size;
            refreshIfSet();
        }
    });
}

void frmLayer::txtPolylineWidth_Change()
{
    handler(" polyine width change", [&] {
        if (const auto width = wholeNumber(*txtPolylineWidth)) {
            requireSymbol<carto::SimpleLineSymbol>(selectedLayer()).width = *width;
            refreshIfSet();
        }
    });
}

void frmLayer::txtPolyOutlineWidth_Change()
{
    handler(" polygon outline width change", [&] {
        if (const auto width = wholeNumber(*txtPolyOutlineWidth)) {
            requireOutline(requireSymbol<carto::SimpleFillSymbol>(selectedLayer())).width = *width;
            refreshIfSet();
        }
    });
}

} // namespace brevant::layers
