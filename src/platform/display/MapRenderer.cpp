#include "platform/display/MapRenderer.h"

#include "platform/carto/AnnotationLayer.h"
#include "platform/carto/DisplayTransformation.h"
#include "platform/carto/Element.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/RasterLayer.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/SymbolPainter.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

#include <QImageReader>
#include <cmath>
#include <string>
#include <vector>

namespace brevant::platform::display {

using namespace carto;
using geodatabase::QueryFilter;
using geodatabase::Row;
using geometry::Geometry;
using geometry::ShapeType;

namespace {

// Selected features stand out by an outline or a mark of this many points.
constexpr double SelectionWidth = 1.5;
constexpr double SelectionMarker = 8.0;
// Above this many selected features the layer is scanned instead of asked by identifier.
constexpr int SelectionLookupLimit = 2000;
constexpr int IdentifiersPerQuery = 500;

/// Map units to device pixels for the fitted bounds of a transformation.
struct Projection {
    double xmin = 0.0;
    double ymax = 0.0;
    double pixelsPerUnit = 1.0;

    QPointF operator()(const geometry::Point& p) const
    {
        return {(p.x - xmin) * pixelsPerUnit, (ymax - p.y) * pixelsPerUnit};
    }
    QPolygonF operator()(const std::vector<geometry::Point>& points) const
    {
        QPolygonF polygon;
        polygon.reserve(static_cast<qsizetype>(points.size()));
        for (const auto& p : points) {
            polygon.append((*this)(p));
        }
        return polygon;
    }
};

/// Picks each feature's symbol from a layer's renderer.
class SymbolChooser {
public:
    explicit SymbolChooser(const FeatureLayer& layer) : m_renderer(layer.renderer())
    {
        if (const auto* breaks = std::get_if<ClassBreaksRenderer>(&m_renderer)) {
            m_field = layer.findField(breaks->field());
        } else if (const auto* unique = std::get_if<UniqueValueRenderer>(&m_renderer)) {
            m_field = unique->fieldCount() > 0 ? layer.findField(unique->field(0)) : -1;
        }
    }

    /// True when no feature can get a symbol (a renderer field the layer lacks, no symbol).
    bool drawsNothing() const
    {
        if (const auto* simple = std::get_if<SimpleRenderer>(&m_renderer)) {
            return !simple->symbol;
        }
        return m_field < 0;
    }

    const Symbol* operator()(const Row& row) const
    {
        if (const auto* simple = std::get_if<SimpleRenderer>(&m_renderer)) {
            return simple->symbol ? &*simple->symbol : nullptr;
        }
        const automation::Variant& value = row.value(m_field);
        if (const auto* unique = std::get_if<UniqueValueRenderer>(&m_renderer)) {
            return unique->symbolFor(value);
        }
        const auto& breaks = std::get<ClassBreaksRenderer>(m_renderer);
        if (value.isNull() || value.isEmpty() || !value.isNumeric()) {
            return nullptr;
        }
        const int index = breaks.classIndex(value.toDouble());
        if (index < 0) {
            return nullptr;
        }
        const auto& symbol = breaks.symbol(index);
        return symbol ? &*symbol : nullptr;
    }

private:
    const Renderer& m_renderer;
    int m_field = -1;
};

struct Label {
    std::string text;
    QPointF at;
};

/// One drawing of a map.
class Drawing {
public:
    Drawing(QPainter& painter, const DisplayTransformation& transformation)
        : m_painter(painter), m_symbols(painter, transformation.resolution() / 72.0),
          m_bounds(transformation.fittedBounds()), m_scale(transformation.scale())
    {
        m_project = {m_bounds.xmin(), m_bounds.ymax(), 1.0 / transformation.unitsPerPixel()};
        m_area = rectangleShape(m_bounds);
    }

    void drawLayer(const Layer& layer)
    {
        if (!layer.visible() || !layer.inScaleRange(m_scale)) {
            return;
        }
        switch (layer.kind()) {
        case LayerKind::Feature: {
            const auto& feature = static_cast<const FeatureLayer&>(layer);
            drawFeatures(feature);
            m_drawnFeatureLayers.push_back(&feature);
            break;
        }
        case LayerKind::Group: {
            const auto& members = static_cast<const GroupLayer&>(layer).layers();
            for (auto it = members.rbegin(); it != members.rend(); ++it) {
                drawLayer(**it);
            }
            break;
        }
        case LayerKind::Annotation:
            drawAnnotation(static_cast<const AnnotationLayer&>(layer));
            break;
        case LayerKind::Raster:
            drawRaster(static_cast<const RasterLayer&>(layer));
            break;
        }
    }

    void drawLabels()
    {
        const TextSymbol text{.size = 8.0,
                              .horizontalAlignment = HorizontalAlignment::Center,
                              .verticalAlignment = VerticalAlignment::Center};
        for (const Label& label : m_labels) {
            m_symbols.drawText(label.text, text, label.at);
        }
    }

    void drawSelections(const RgbColor& defaultColor)
    {
        for (const FeatureLayer* layer : m_drawnFeatureLayers) {
            if (!layer->selectionSet().isEmpty() && layer->featureClass()) {
                drawSelection(*layer, layer->selectionColor().value_or(defaultColor));
            }
        }
    }

private:
    /// The filter that reads what the drawn area shows; none when it shows the whole class.
    QueryFilter areaFilter(const geometry::Envelope& dataExtent) const
    {
        if (m_bounds.contains(dataExtent)) {
            return {};
        }
        return QueryFilter::spatial(m_area);
    }

    void drawFeatures(const FeatureLayer& layer)
    {
        if (!layer.featureClass()) {
            return;
        }
        const SymbolChooser choose(layer);
        const bool symbols = !choose.drawsNothing();
        const int labelField = layer.displayAnnotation() ? layer.labelFieldIndex() : -1;
        if (!symbols && labelField < 0) {
            return;
        }
        layer.search(areaFilter(layer.extent()), [&](const Row& row) {
            if (const Symbol* symbol = symbols ? choose(row) : nullptr) {
                drawShape(*symbol, row.shape());
            }
            if (labelField >= 0) {
                addLabel(row, labelField);
            }
            return true;
        });
    }

    void drawShape(const Symbol& symbol, const Geometry& shape)
    {
        const SymbolKind kind = symbolKind(symbol);
        switch (shape.type()) {
        case ShapeType::Point:
            if (kind == SymbolKind::Marker) {
                m_symbols.drawMarker(symbol, m_project(shape.firstPoint()));
            }
            break;
        case ShapeType::Multipoint:
            if (kind == SymbolKind::Marker) {
                for (const auto& part : shape.parts()) {
                    for (const auto& p : part) {
                        m_symbols.drawMarker(symbol, m_project(p));
                    }
                }
            }
            break;
        case ShapeType::Polyline:
            if (kind == SymbolKind::Line) {
                for (const auto& part : shape.parts()) {
                    m_symbols.drawLine(symbol, m_project(part));
                }
            }
            break;
        case ShapeType::Polygon:
            drawArea(symbol, kind, shape);
            break;
        case ShapeType::Null:
            break;
        }
    }

    void drawArea(const Symbol& symbol, SymbolKind kind, const Geometry& shape)
    {
        if (kind == SymbolKind::Marker) {
            return;
        }
        const auto rings = shape.parts();
        if (kind == SymbolKind::Line) {
            for (const auto& ring : rings) {
                m_symbols.drawLine(symbol, m_project(ring));
            }
            return;
        }
        const auto& fill = std::get<SimpleFillSymbol>(symbol);
        if (rings.size() == 1) {
            m_symbols.drawFill(fill, m_project(rings.front()));
            return;
        }
        // Holes lie inside their outer ring and outer rings never overlap, so even-odd
        // filling leaves the holes open.
        QPainterPath area;
        area.setFillRule(Qt::OddEvenFill);
        for (const auto& ring : rings) {
            area.addPolygon(m_project(ring));
            area.closeSubpath();
        }
        m_symbols.drawFill(fill, area);
    }

    void addLabel(const Row& row, int field)
    {
        const automation::Variant& value = row.value(field);
        const Geometry& shape = row.shape();
        if (value.isNull() || value.isEmpty() || shape.isEmpty()) {
            return;
        }
        std::string text = value.toString();
        if (text.empty()) {
            return;
        }
        geometry::Point anchor;
        switch (shape.type()) {
        case ShapeType::Polygon:
        case ShapeType::Polyline:
            anchor = shape.interiorPoint();
            break;
        default:
            anchor = shape.firstPoint();
            break;
        }
        QPointF at = m_project(anchor);
        if (shape.type() == ShapeType::Point) {
            // Beside the marker rather than over it.
            at.ry() -= 10.0 * m_symbols.pixelsPerPoint();
        }
        m_labels.push_back({std::move(text), at});
    }

    void drawAnnotation(const AnnotationLayer& layer)
    {
        if (!layer.featureClass()) {
            return;
        }
        const auto& features = *layer.featureClass();
        const int field = features.findField(layer.textField());
        if (field < 0) {
            return;
        }
        geodatabase::Cursor cursor = features.search(areaFilter(features.extent()));
        Row row;
        while (cursor.next(row)) {
            const automation::Variant& value = row.value(field);
            if (!value.isNull() && !value.isEmpty() && !row.shape().isEmpty()) {
                m_symbols.drawText(value.toString(), layer.textSymbol(),
                                   m_project(row.shape().firstPoint()));
            }
        }
    }

    void drawRaster(const RasterLayer& layer)
    {
        const geometry::Envelope extent = layer.extent();
        if (extent.isEmpty() || !m_bounds.intersects(extent)) {
            return;
        }
        QImageReader reader(QString::fromStdString(layer.file().string()));
        const QImage image = reader.read();
        if (image.isNull()) {
            return;
        }
        const QRectF target(m_project({extent.xmin(), extent.ymax()}),
                            m_project({extent.xmax(), extent.ymin()}));
        const double opacity = m_painter.opacity();
        m_painter.setOpacity(opacity * layer.opacity());
        m_painter.drawImage(target, image);
        m_painter.setOpacity(opacity);
    }

    void drawSelection(const FeatureLayer& layer, const RgbColor& color)
    {
        const QColor qcolor = toQColor(color);
        const double ppp = m_symbols.pixelsPerPoint();
        const QPen outline(qcolor, SelectionWidth * ppp, Qt::SolidLine, Qt::RoundCap,
                           Qt::RoundJoin);
        const double mark = SelectionMarker * ppp / 2;
        const auto highlight = [&](const Row& row) {
            const Geometry& shape = row.shape();
            m_painter.setPen(outline);
            m_painter.setBrush(Qt::NoBrush);
            switch (shape.type()) {
            case ShapeType::Point:
            case ShapeType::Multipoint:
                m_painter.setPen(Qt::NoPen);
                m_painter.setBrush(qcolor);
                for (const auto& part : shape.parts()) {
                    for (const auto& p : part) {
                        m_painter.drawEllipse(m_project(p), mark, mark);
                    }
                }
                break;
            case ShapeType::Polyline:
            case ShapeType::Polygon:
                for (const auto& part : shape.parts()) {
                    m_painter.drawPolyline(m_project(part));
                }
                break;
            case ShapeType::Null:
                break;
            }
        };

        const auto& features = *layer.featureClass();
        const auto& ids = layer.selectionSet().ids();
        if (layer.selectionSet().count() <= SelectionLookupLimit) {
            const std::string key = features.fields().field(0).name;
            for (std::size_t first = 0; first < ids.size(); first += IdentifiersPerQuery) {
                std::string clause = key + " In (";
                const std::size_t last = std::min(ids.size(), first + IdentifiersPerQuery);
                for (std::size_t i = first; i < last; ++i) {
                    if (i > first) {
                        clause += ',';
                    }
                    clause += std::to_string(ids[i]);
                }
                geodatabase::Cursor cursor = features.search(QueryFilter::where(clause + ")"));
                Row row;
                while (cursor.next(row)) {
                    highlight(row);
                }
            }
            return;
        }
        geodatabase::Cursor cursor = features.search(areaFilter(features.extent()));
        Row row;
        while (cursor.next(row)) {
            if (layer.selectionSet().contains(row.oid())) {
                highlight(row);
            }
        }
    }

    QPainter& m_painter;
    SymbolPainter m_symbols;
    geometry::Envelope m_bounds;
    double m_scale;
    Projection m_project;
    Geometry m_area;
    std::vector<Label> m_labels;
    std::vector<const FeatureLayer*> m_drawnFeatureLayers;
};

} // namespace

void MapRenderer::draw(QPainter& painter, const DisplayTransformation& transformation) const
{
    ensureGuiApplication();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(QRectF(0, 0, transformation.deviceWidth(), transformation.deviceHeight()),
                        Qt::IntersectClip);
    Drawing drawing(painter, transformation);
    const auto& layers = m_map.layers();
    for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
        drawing.drawLayer(**it);
    }
    drawing.drawLabels();
    drawing.drawSelections(m_map.selectionEnvironment().defaultColor);
    painter.restore();
}

QImage MapRenderer::render(const geometry::Envelope& extent, QSize size, double dotsPerInch) const
{
    ensureGuiApplication();
    DisplayTransformation transformation;
    transformation.setDeviceFrame(size.width(), size.height());
    transformation.setResolution(dotsPerInch);
    transformation.setMetersPerUnit(m_map.displayTransformation().metersPerUnit());
    transformation.setVisibleBounds(extent.isEmpty() ? m_map.extent() : extent);

    QImage image = blankImage(size, dotsPerInch);
    QPainter painter(&image);
    draw(painter, transformation);
    return image;
}

QImage MapRenderer::renderActiveView() const
{
    const DisplayTransformation& view = m_map.displayTransformation();
    return render(m_map.extent(), QSize(view.deviceWidth(), view.deviceHeight()),
                  view.resolution());
}

} // namespace brevant::platform::display
