#include "platform/display/LayoutRenderer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/FrameElement.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Legend.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/MarkerNorthArrow.h"
#include "platform/carto/PageLayout.h"
#include "platform/carto/PictureElement.h"
#include "platform/carto/ScaleLine.h"
#include "platform/carto/TextElement.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/MapRenderer.h"
#include "platform/display/SymbolPainter.h"

#include <QFontMetricsF>
#include <QImageReader>
#include <QPageLayout>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::display {

using namespace carto;
using geometry::Geometry;

namespace {

constexpr double PointsPerInch = 72.0;

QPolygonF outline(const QRectF& r)
{
    QPolygonF ring;
    ring << r.topLeft() << r.topRight() << r.bottomRight() << r.bottomLeft() << r.topLeft();
    return ring;
}

void drawBox(SymbolPainter& symbols, const QRectF& r, const std::optional<SimpleFillSymbol>& fill,
             const std::optional<LineSymbol>& border)
{
    if (fill) {
        SimpleFillSymbol background = *fill;
        background.outline = SimpleLineSymbol{SimpleLineStyle::Null};
        QPainterPath area;
        area.addRect(r);
        symbols.drawFill(background, area);
    }
    if (border) {
        symbols.drawLine(*border, outline(r));
    }
}

/// How a map frame maps its map onto a device of `dotsPerInch`.
DisplayTransformation frameTransformation(const Map& map, const QRectF& frame, double dotsPerInch)
{
    DisplayTransformation transformation;
    transformation.setDeviceFrame(std::max(1, static_cast<int>(std::lround(frame.width()))),
                                  std::max(1, static_cast<int>(std::lround(frame.height()))));
    transformation.setResolution(dotsPerInch);
    transformation.setMetersPerUnit(map.displayTransformation().metersPerUnit());
    transformation.setVisibleBounds(map.extent());
    return transformation;
}

/// One line of a legend.
struct LegendRow {
    enum class Kind { Title, LayerName, Heading, Item };
    Kind kind;
    std::string text;
    std::optional<Symbol> symbol;
};

/// The feature layers a map draws, top first: visible, in visible groups.
void drawnFeatureLayers(const std::vector<std::shared_ptr<Layer>>& layers,
                        std::vector<std::shared_ptr<FeatureLayer>>& out)
{
    for (const auto& layer : layers) {
        if (!layer->visible()) {
            continue;
        }
        if (auto feature = std::dynamic_pointer_cast<FeatureLayer>(layer)) {
            out.push_back(std::move(feature));
        } else if (const auto* group = dynamic_cast<const GroupLayer*>(layer.get())) {
            drawnFeatureLayers(group->layers(), out);
        }
    }
}

std::vector<LegendRow> legendRows(const Legend& legend, const Map& map)
{
    using Kind = LegendRow::Kind;
    std::vector<LegendRow> rows;
    if (legend.showTitle() && !legend.title().empty()) {
        rows.push_back({Kind::Title, legend.title(), std::nullopt});
    }
    std::vector<std::shared_ptr<FeatureLayer>> layers;
    drawnFeatureLayers(map.layers(), layers);
    for (const auto& layer : layers) {
        const Renderer& renderer = layer->renderer();
        if (const auto* simple = std::get_if<SimpleRenderer>(&renderer)) {
            if (simple->symbol) {
                rows.push_back({Kind::Item, simple->label.empty() ? layer->name() : simple->label,
                                simple->symbol});
            }
        } else if (const auto* breaks = std::get_if<ClassBreaksRenderer>(&renderer)) {
            rows.push_back({Kind::LayerName, layer->name(), std::nullopt});
            if (!breaks->legendHeading().empty()) {
                rows.push_back({Kind::Heading, breaks->legendHeading(), std::nullopt});
            }
            for (int i = 0; i < breaks->breakCount(); ++i) {
                rows.push_back({Kind::Item, breaks->label(i), breaks->symbol(i)});
            }
        } else if (const auto* unique = std::get_if<UniqueValueRenderer>(&renderer)) {
            rows.push_back({Kind::LayerName, layer->name(), std::nullopt});
            std::string heading;
            for (int i = 0; i < unique->valueCount(); ++i) {
                const std::string& value = unique->value(i);
                if (unique->heading(value) != heading) {
                    heading = unique->heading(value);
                    if (!heading.empty()) {
                        rows.push_back({Kind::Heading, heading, std::nullopt});
                    }
                }
                rows.push_back({Kind::Item, unique->label(value), unique->symbol(value)});
            }
            if (unique->useDefaultSymbol() && unique->defaultSymbol()) {
                rows.push_back({Kind::Item, unique->defaultLabel(), unique->defaultSymbol()});
            }
        }
    }
    return rows;
}

class PageDrawing {
public:
    PageDrawing(QPainter& painter, const PageLayout& layout, double dotsPerInch)
        : m_painter(painter), m_layout(layout), m_dpi(dotsPerInch),
          m_symbols(painter, dotsPerInch / PointsPerInch)
    {
    }

    QRectF toDevice(const geometry::Envelope& r) const
    {
        return QRectF(QPointF(r.xmin() * m_dpi, (m_layout.pageHeight() - r.ymax()) * m_dpi),
                      QPointF(r.xmax() * m_dpi, (m_layout.pageHeight() - r.ymin()) * m_dpi));
    }

    void drawElement(const Element& element)
    {
        if (const auto* text = dynamic_cast<const TextElement*>(&element)) {
            drawText(*text);
            return;
        }
        const geometry::Envelope bounds = element.bounds();
        if (bounds.isEmpty()) {
            return;
        }
        const QRectF r = toDevice(bounds);
        if (const auto* mapFrame = dynamic_cast<const MapFrame*>(&element)) {
            drawMapFrame(*mapFrame, r);
        } else if (const auto* frame = dynamic_cast<const FrameElement*>(&element)) {
            drawBox(m_symbols, r, frame->background(), frame->border());
        } else if (const auto* surround = dynamic_cast<const MapSurroundFrame*>(&element)) {
            drawBox(m_symbols, r, surround->background(), std::nullopt);
            drawSurround(*surround, r);
            drawBox(m_symbols, r, std::nullopt, surround->border());
        } else if (const auto* picture = dynamic_cast<const PictureElement*>(&element)) {
            drawPicture(*picture, r);
        }
    }

private:
    void drawText(const TextElement& element)
    {
        const Geometry& shape = element.geometry();
        if (shape.isEmpty() || element.text().empty()) {
            return;
        }
        const geometry::Point at =
            shape.type() == geometry::ShapeType::Point
                ? shape.firstPoint()
                : geometry::Point{shape.envelope().xmin(), shape.envelope().ymin()};
        m_symbols.drawText(element.text(), element.symbol(),
                           QPointF(at.x * m_dpi, (m_layout.pageHeight() - at.y) * m_dpi));
    }

    void drawMapFrame(const MapFrame& frame, const QRectF& r)
    {
        m_painter.fillRect(r, Qt::white);
        if (frame.map()) {
            m_painter.save();
            m_painter.translate(r.topLeft());
            MapRenderer(*frame.map()).draw(m_painter, frameTransformation(*frame.map(), r, m_dpi));
            m_painter.restore();
        }
        drawBox(m_symbols, r, std::nullopt, frame.border());
    }

    void drawPicture(const PictureElement& picture, const QRectF& r)
    {
        if (picture.file().empty()) {
            return;
        }
        QImageReader reader(QString::fromStdString(picture.file().string()));
        const QImage image = reader.read();
        if (image.isNull()) {
            return;
        }
        QRectF target = r;
        if (picture.maintainAspectRatio()) {
            const QSizeF fitted = QSizeF(image.size()).scaled(r.size(), Qt::KeepAspectRatio);
            target = QRectF(QPointF(), fitted);
            target.moveCenter(r.center());
        }
        m_painter.drawImage(target, image);
    }

    void drawSurround(const MapSurroundFrame& frame, const QRectF& r)
    {
        const auto& surround = frame.mapSurround();
        if (!surround) {
            return;
        }
        m_painter.save();
        m_painter.setClipRect(r, Qt::IntersectClip);
        switch (surround->kind()) {
        case SurroundKind::Legend:
            if (const auto map = surround->map()) {
                drawLegend(static_cast<const Legend&>(*surround), *map, r);
            }
            break;
        case SurroundKind::MarkerNorthArrow:
            drawNorthArrow(static_cast<const MarkerNorthArrow&>(*surround), r);
            break;
        case SurroundKind::ScaleLine:
            if (const auto mapFrame = frame.mapFrame(); mapFrame && mapFrame->map()) {
                drawScaleLine(static_cast<const ScaleLine&>(*surround), *mapFrame, r);
            }
            break;
        }
        m_painter.restore();
    }

    void drawLegend(const Legend& legend, const Map& map, const QRectF& r)
    {
        using Kind = LegendRow::Kind;
        const std::vector<LegendRow> rows = legendRows(legend, map);
        if (rows.empty()) {
            return;
        }
        const double ppp = m_symbols.pixelsPerPoint();
        const TextSymbol item = legend.textSymbol();
        const auto styleOf = [&item](Kind kind) {
            TextSymbol style = item;
            style.verticalAlignment = VerticalAlignment::Center;
            if (kind == Kind::Title) {
                style.size = item.size + 2;
                style.bold = true;
            } else if (kind == Kind::LayerName) {
                style.bold = true;
            } else if (kind == Kind::Heading) {
                style.italic = true;
            }
            return style;
        };
        // Laid out at full size, then shrunk as a whole to the frame.
        const double pad = 3 * ppp;
        const QSizeF patch(18 * ppp, 10 * ppp);
        const double gap = 2 * ppp;
        double width = 0.0;
        double height = pad;
        std::vector<double> rowHeights;
        for (const LegendRow& row : rows) {
            const QFontMetricsF metrics(m_symbols.font(styleOf(row.kind)), m_painter.device());
            double w = metrics.horizontalAdvance(QString::fromStdString(row.text));
            double h = metrics.height();
            if (row.kind == Kind::Item) {
                w += patch.width() + gap * 2;
                h = std::max(h, patch.height());
            }
            width = std::max(width, w);
            rowHeights.push_back(h + gap);
            height += h + gap;
        }
        width += 2 * pad;
        height += pad;
        const double shrink = std::min({1.0, r.width() / width, r.height() / height});
        const QTransform base = m_painter.worldTransform();
        m_painter.setWorldTransform(
            QTransform(base).translate(r.left(), r.top()).scale(shrink, shrink));
        // Legends often lie over the map; the map must not show through the labels.
        m_painter.fillRect(QRectF(0, 0, width, height), Qt::white);
        double y = pad;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const LegendRow& row = rows[i];
            const double middle = y + (rowHeights[i] - gap) / 2;
            double x = pad;
            if (row.kind == Kind::Item) {
                if (row.symbol) {
                    m_symbols.drawPatch(*row.symbol,
                                        QRectF(QPointF(x, middle - patch.height() / 2), patch));
                }
                x += patch.width() + gap * 2;
            }
            m_symbols.drawText(row.text, styleOf(row.kind), QPointF(x, middle));
            y += rowHeights[i];
        }
        m_painter.setWorldTransform(base);
    }

    void drawNorthArrow(const MarkerNorthArrow& arrow, const QRectF& r)
    {
        const MarkerLayer& marker = arrow.markerSymbol();
        const auto* character = std::get_if<CharacterMarkerSymbol>(&marker);
        const double size =
            std::visit([](const auto& m) { return m.size; }, marker) * m_symbols.pixelsPerPoint();
        const double fit = std::min({size, r.width(), r.height()});
        if (fit <= 0.0) {
            return;
        }
        if (!character || SymbolPainter::isFontInstalled(character->fontName)) {
            const QTransform base = m_painter.worldTransform();
            const QPointF c = r.center();
            m_painter.setWorldTransform(QTransform(base)
                                            .translate(c.x(), c.y())
                                            .scale(fit / size, fit / size)
                                            .translate(-c.x(), -c.y()));
            m_symbols.drawMarker(marker, c);
            m_painter.setWorldTransform(base);
            return;
        }
        // Without the arrow font: an arrow under an N, half filled, in the marker's colour.
        const QColor color = toQColor(character->color);
        const QPointF c = r.center();
        const double letter = fit * 0.32;
        const double top = c.y() - fit / 2 + letter;
        const double bottom = c.y() + fit / 2;
        const double half = fit * 0.22;
        QPolygonF left;
        left << QPointF(c.x(), top) << QPointF(c.x() - half, bottom)
             << QPointF(c.x(), bottom - fit * 0.15);
        QPolygonF right;
        right << QPointF(c.x(), top) << QPointF(c.x() + half, bottom)
              << QPointF(c.x(), bottom - fit * 0.15);
        m_painter.setPen(
            QPen(color, std::max(1.0, fit / 40), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.setBrush(color);
        m_painter.drawPolygon(left);
        m_painter.setBrush(Qt::white);
        m_painter.drawPolygon(right);
        TextSymbol north{.size = letter / m_symbols.pixelsPerPoint(),
                         .color = character->color,
                         .bold = true,
                         .horizontalAlignment = HorizontalAlignment::Center,
                         .verticalAlignment = VerticalAlignment::Center};
        m_symbols.drawText("N", north, QPointF(c.x(), c.y() - fit / 2 + letter / 2));
    }

    void drawScaleLine(const ScaleLine& scaleLine, const MapFrame& mapFrame, const QRectF& r)
    {
        const Map& map = *mapFrame.map();
        const geometry::Envelope frameBounds = mapFrame.bounds();
        if (frameBounds.isEmpty() || map.extent().isEmpty()) {
            return;
        }
        const DisplayTransformation frame = frameTransformation(map, toDevice(frameBounds), m_dpi);
        const double metersPerPixel = frame.unitsPerPixel() * frame.metersPerUnit();
        const bool miles = scaleLine.units() == ScaleUnits::Miles;
        const double unitMeters = miles ? 1609.344 : 1000.0;
        const std::string unitName = miles ? "Miles" : "Kilometers";

        const double ppp = m_symbols.pixelsPerPoint();
        TextSymbol text{.size = std::min(7.0, r.height() * 0.38 / ppp),
                        .horizontalAlignment = HorizontalAlignment::Center,
                        .verticalAlignment = VerticalAlignment::Bottom};
        const QFontMetricsF metrics(m_symbols.font(text), m_painter.device());
        const double pad = 2 * ppp;
        const double unitWidth = metrics.horizontalAdvance(QString::fromStdString(unitName));
        const double available =
            r.width() - 2 * pad - unitWidth - metrics.horizontalAdvance("0000");
        if (available <= 0.0 || metersPerPixel <= 0.0) {
            return;
        }
        const double length = roundDistance(available * metersPerPixel / unitMeters);
        const double bar = length * unitMeters / metersPerPixel;
        const double x0 = r.left() + pad + metrics.horizontalAdvance("00") / 2;
        const double line = r.top() + r.height() * 0.45;
        const double tick = r.height() * 0.3;
        const int divisions = scaleLine.divisions();

        m_painter.setPen(QPen(Qt::black, std::max(1.0, 0.75 * ppp), Qt::SolidLine, Qt::FlatCap));
        m_painter.drawLine(QPointF(x0, line), QPointF(x0 + bar, line));
        for (int i = 0; i <= divisions; ++i) {
            const double x = x0 + bar * i / divisions;
            const bool major = i == 0 || i == divisions || 2 * i == divisions;
            m_painter.drawLine(QPointF(x, line), QPointF(x, line - (major ? tick : tick * 0.55)));
        }
        const double baseline = r.bottom() - r.height() * 0.06;
        m_symbols.drawText("0", text, QPointF(x0, baseline));
        if (divisions % 2 == 0) {
            m_symbols.drawText(number(length / 2), text, QPointF(x0 + bar / 2, baseline));
        }
        m_symbols.drawText(number(length), text, QPointF(x0 + bar, baseline));
        TextSymbol units = text;
        units.horizontalAlignment = HorizontalAlignment::Left;
        m_symbols.drawText(
            unitName, units,
            QPointF(x0 + bar + metrics.horizontalAdvance("0000") / 2 + pad, baseline));
    }

    /// The largest of 1, 2, 2.5 and 5 times a power of ten not above `most`.
    static double roundDistance(double most)
    {
        const double power = std::pow(10.0, std::floor(std::log10(most)));
        for (const double step : {5.0, 2.5, 2.0, 1.0}) {
            if (step * power <= most) {
                return step * power;
            }
        }
        return power;
    }

    static std::string number(double value) { return QString::number(value, 'g', 6).toStdString(); }

    QPainter& m_painter;
    const PageLayout& m_layout;
    double m_dpi;
    SymbolPainter m_symbols;
};

} // namespace

void LayoutRenderer::draw(QPainter& painter, double dotsPerInch) const
{
    ensureGuiApplication();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.fillRect(
        QRectF(0, 0, m_layout.pageWidth() * dotsPerInch, m_layout.pageHeight() * dotsPerInch),
        Qt::white);
    PageDrawing page(painter, m_layout, dotsPerInch);
    for (const auto& element : m_layout.graphicsContainer().elements()) {
        page.drawElement(*element);
    }
    painter.restore();
}

QImage LayoutRenderer::render(double dotsPerInch) const
{
    ensureGuiApplication();
    const QSize size(static_cast<int>(std::lround(m_layout.pageWidth() * dotsPerInch)),
                     static_cast<int>(std::lround(m_layout.pageHeight() * dotsPerInch)));
    QImage image = blankImage(size, dotsPerInch);
    QPainter painter(&image);
    draw(painter, dotsPerInch);
    return image;
}

void LayoutRenderer::exportPng(const std::filesystem::path& file, double dotsPerInch) const
{
    const QImage image = render(dotsPerInch);
    if (!image.save(QString::fromStdString(file.string()), "PNG")) {
        throw automation::PlatformError(automation::ErrorNumber::PermissionDenied, "Display",
                                        "cannot write the page picture " + file.string());
    }
}

void LayoutRenderer::exportPdf(const std::filesystem::path& file, int dotsPerInch) const
{
    ensureGuiApplication();
    QPdfWriter writer(QString::fromStdString(file.string()));
    const double width = m_layout.pageWidth();
    const double height = m_layout.pageHeight();
    // Qt keeps page sizes portrait and turns them by the orientation.
    const QPageSize size(QSizeF(std::min(width, height), std::max(width, height)), QPageSize::Inch,
                         QString(), QPageSize::ExactMatch);
    writer.setPageLayout(QPageLayout(
        size, width > height ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF()));
    writer.setResolution(dotsPerInch);
    writer.setCreator("Brevant");
    QPainter painter;
    if (!painter.begin(&writer)) {
        throw automation::PlatformError(automation::ErrorNumber::PermissionDenied, "Display",
                                        "cannot write the page " + file.string());
    }
    draw(painter, dotsPerInch);
    if (!painter.end()) {
        throw automation::PlatformError(automation::ErrorNumber::PermissionDenied, "Display",
                                        "cannot finish the page " + file.string());
    }
}

QRectF LayoutRenderer::toDevice(const geometry::Envelope& pageRectangle, double dotsPerInch) const
{
    return QRectF(QPointF(pageRectangle.xmin() * dotsPerInch,
                          (m_layout.pageHeight() - pageRectangle.ymax()) * dotsPerInch),
                  QPointF(pageRectangle.xmax() * dotsPerInch,
                          (m_layout.pageHeight() - pageRectangle.ymin()) * dotsPerInch));
}

} // namespace brevant::platform::display
