#include "platform/display/SymbolPainter.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QLineF>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>
#include <vector>

namespace brevant::platform::display {

using namespace carto;

namespace {

template <class... Ts> struct Overloaded : Ts... {
    using Ts::operator()...;
};

// Glyphs of symbol fonts fill most of their em square; fallback shapes match that.
constexpr double GlyphFill = 0.8;
// A line repeating markers or hashes places at most this many on one path, so that a symbol
// with a tiny pattern cannot stall the drawing.
constexpr int MaxPlacements = 100000;

Qt::PenCapStyle toQt(LineCap cap)
{
    switch (cap) {
    case LineCap::Round:
        return Qt::RoundCap;
    case LineCap::Square:
        return Qt::SquareCap;
    case LineCap::Butt:
        break;
    }
    return Qt::FlatCap;
}

Qt::PenJoinStyle toQt(LineJoin join)
{
    switch (join) {
    case LineJoin::Round:
        return Qt::RoundJoin;
    case LineJoin::Bevel:
        return Qt::BevelJoin;
    case LineJoin::Miter:
        break;
    }
    return Qt::MiterJoin;
}

Qt::BrushStyle toQt(SimpleFillStyle style)
{
    switch (style) {
    case SimpleFillStyle::Solid:
        return Qt::SolidPattern;
    case SimpleFillStyle::Hollow:
        return Qt::NoBrush;
    case SimpleFillStyle::Horizontal:
        return Qt::HorPattern;
    case SimpleFillStyle::Vertical:
        return Qt::VerPattern;
    case SimpleFillStyle::ForwardDiagonal:
        return Qt::BDiagPattern; // Qt names the diagonals by the other end.
    case SimpleFillStyle::BackwardDiagonal:
        return Qt::FDiagPattern;
    case SimpleFillStyle::Cross:
        return Qt::CrossPattern;
    case SimpleFillStyle::DiagonalCross:
        return Qt::DiagCrossPattern;
    }
    return Qt::SolidPattern;
}

/// A regular polygon (or star, with `inner` > 0) of radius r centred on the origin, one corner
/// pointing up (or down when `flip`).
QPainterPath regular(int corners, double r, double inner = 0.0, bool flip = false)
{
    QPolygonF polygon;
    const int steps = inner > 0.0 ? corners * 2 : corners;
    for (int i = 0; i < steps; ++i) {
        const double radius = (inner > 0.0 && i % 2 == 1) ? inner : r;
        const double angle = -std::numbers::pi / 2 + 2 * std::numbers::pi * i / steps;
        polygon << QPointF(radius * std::cos(angle), (flip ? -1 : 1) * radius * std::sin(angle));
    }
    QPainterPath path;
    path.addPolygon(polygon);
    path.closeSubpath();
    return path;
}

/// Strokes across the origin: a plus, or an x when turned.
QPainterPath bars(double r, double thickness, bool diagonal)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRect(QRectF(-r, -thickness / 2, 2 * r, thickness));
    path.addRect(QRectF(-thickness / 2, -r, thickness, 2 * r));
    if (diagonal) {
        return QTransform().rotate(45).map(path);
    }
    return path;
}

/// The shape standing in for a character of a font that is not installed.
QPainterPath fallbackShape(int character, double size)
{
    const double r = size * GlyphFill / 2;
    switch (((character - 33) % 10 + 10) % 10) {
    case 0: {
        QPainterPath path;
        path.addEllipse(QPointF(0, 0), r, r);
        return path;
    }
    case 1: {
        QPainterPath path;
        const double half = r * 0.85;
        path.addRect(QRectF(-half, -half, 2 * half, 2 * half));
        return path;
    }
    case 2:
        return regular(3, r);
    case 3:
        return regular(4, r);
    case 4:
        return regular(5, r, r * 0.45);
    case 5:
        return regular(6, r);
    case 6:
        return bars(r, r * 0.55, false);
    case 7:
        return regular(3, r, 0.0, true);
    case 8:
        return regular(5, r);
    default:
        return bars(r, r * 0.45, true);
    }
}

/// Calls place(point, direction in degrees, counter-clockwise on the device) at each distance
/// start + k * period along the path, for every start of `starts`.
template <class Place>
void alongPath(const QPolygonF& path, double period, const std::vector<double>& starts, Place place)
{
    if (path.size() < 2 || period <= 0.0 || starts.empty()) {
        return;
    }
    // Never closer than a pixel: a finer pattern cannot be seen and would only cost time.
    period = std::max(period, 1.0);
    int placed = 0;
    int cycle = 0;
    std::size_t next = 0;
    double target = starts[0];
    double walked = 0.0;
    for (int i = 1; i < path.size(); ++i) {
        const QLineF segment(path[i - 1], path[i]);
        const double length = segment.length();
        if (length <= 0.0) {
            continue;
        }
        const double angle = segment.angle();
        while (target <= walked + length) {
            place(segment.pointAt((target - walked) / length), angle);
            if (++placed >= MaxPlacements) {
                return;
            }
            if (++next == starts.size()) {
                next = 0;
                ++cycle;
            }
            target = cycle * period + starts[next];
        }
        walked += length;
    }
}

/// The period and mark starts of a template in pixels; nullopt without a usable template.
std::optional<std::pair<double, std::vector<double>>>
pattern(const std::optional<LineTemplate>& lineTemplate, double ppp)
{
    if (!lineTemplate || lineTemplate->elements.empty()) {
        return std::nullopt;
    }
    const double unit = lineTemplate->interval * ppp;
    std::vector<double> starts;
    double offset = 0.0;
    for (const auto& element : lineTemplate->elements) {
        starts.push_back(offset);
        offset += (element.mark + element.gap) * unit;
    }
    if (offset <= 0.0) {
        return std::nullopt;
    }
    return std::pair{offset, starts};
}

/// A pen for a line of `width` points with a dash template.
QPen templatePen(const RgbColor& color, double width, LineCap cap, LineJoin join,
                 const std::optional<LineTemplate>& lineTemplate, double ppp)
{
    const double pixels = width * ppp;
    QPen pen(toQColor(color), pixels, Qt::SolidLine, toQt(cap), toQt(join));
    if (lineTemplate && !lineTemplate->elements.empty()) {
        const bool gaps = std::any_of(lineTemplate->elements.begin(), lineTemplate->elements.end(),
                                      [](const auto& element) { return element.gap > 0.0; });
        if (gaps) {
            // Qt measures dashes in pen widths; a zero width is one pixel wide.
            const double unit = lineTemplate->interval * ppp / std::max(pixels, 1.0);
            QList<qreal> dashes;
            for (const auto& element : lineTemplate->elements) {
                dashes << std::max(element.mark * unit, 0.01) << std::max(element.gap * unit, 0.01);
            }
            pen.setDashPattern(dashes);
        }
    }
    return pen;
}

} // namespace

QColor toQColor(const RgbColor& color)
{
    return QColor(std::clamp(color.red, 0, 255), std::clamp(color.green, 0, 255),
                  std::clamp(color.blue, 0, 255));
}

SymbolPainter::SymbolPainter(QPainter& painter, double pixelsPerPoint)
    : m_painter(painter), m_ppp(pixelsPerPoint)
{
}

bool SymbolPainter::isFontInstalled(const std::string& family)
{
    if (family.empty()) {
        return false;
    }
    static std::unordered_map<std::string, bool> known;
    const auto found = known.find(family);
    if (found != known.end()) {
        return found->second;
    }
    const QString wanted = QString::fromStdString(family);
    const QStringList families = QFontDatabase::families();
    const bool installed = std::any_of(families.begin(), families.end(), [&](const QString& f) {
        return f.compare(wanted, Qt::CaseInsensitive) == 0;
    });
    known.emplace(family, installed);
    return installed;
}

void SymbolPainter::drawMarker(const Symbol& symbol, QPointF at)
{
    std::visit(Overloaded{
                   [&](const SimpleMarkerSymbol& m) { drawSimpleMarker(m, at, 0.0); },
                   [&](const CharacterMarkerSymbol& m) { drawCharacterMarker(m, at, 0.0); },
                   [&](const MultiLayerMarkerSymbol& m) {
                       for (const auto& layer : m.layers) {
                           drawMarker(layer, at);
                       }
                   },
                   [](const auto&) {},
               },
               symbol);
}

void SymbolPainter::drawMarker(const MarkerLayer& marker, QPointF at, double rotation)
{
    std::visit(Overloaded{
                   [&](const SimpleMarkerSymbol& m) { drawSimpleMarker(m, at, rotation); },
                   [&](const CharacterMarkerSymbol& m) { drawCharacterMarker(m, at, rotation); },
               },
               marker);
}

void SymbolPainter::drawSimpleMarker(const SimpleMarkerSymbol& marker, QPointF at, double rotation)
{
    const double size = marker.size * m_ppp;
    if (size <= 0.0) {
        return;
    }
    const double r = size / 2;
    QPainterPath shape;
    bool stroked = false;
    switch (marker.style) {
    case SimpleMarkerStyle::Circle:
        shape.addEllipse(QPointF(0, 0), r, r);
        break;
    case SimpleMarkerStyle::Square:
        shape.addRect(QRectF(-r, -r, size, size));
        break;
    case SimpleMarkerStyle::Diamond:
        shape = regular(4, r);
        break;
    case SimpleMarkerStyle::Cross:
    case SimpleMarkerStyle::X:
        shape.moveTo(-r, 0);
        shape.lineTo(r, 0);
        shape.moveTo(0, -r);
        shape.lineTo(0, r);
        if (marker.style == SimpleMarkerStyle::X) {
            shape = QTransform().rotate(45).map(shape);
        }
        stroked = true;
        break;
    }
    const QTransform base = m_painter.worldTransform();
    m_painter.setWorldTransform(
        QTransform(base).translate(at.x(), at.y()).rotate(-(marker.angle + rotation)));
    if (stroked) {
        m_painter.setPen(
            QPen(toQColor(marker.color), std::max(1.0, size / 8), Qt::SolidLine, Qt::FlatCap));
        m_painter.setBrush(Qt::NoBrush);
    } else {
        m_painter.setPen(marker.outline
                             ? QPen(toQColor(marker.outlineColor), marker.outlineSize * m_ppp)
                             : QPen(Qt::NoPen));
        m_painter.setBrush(toQColor(marker.color));
    }
    m_painter.drawPath(shape);
    m_painter.setWorldTransform(base);
}

const QPainterPath& SymbolPainter::glyph(const CharacterMarkerSymbol& marker, double pixels)
{
    const int size = std::max(1, static_cast<int>(std::lround(pixels)));
    const auto key = std::make_tuple(marker.fontName, marker.characterIndex, size);
    auto found = m_glyphs.find(key);
    if (found != m_glyphs.end()) {
        return found->second;
    }
    QPainterPath path;
    if (isFontInstalled(marker.fontName)) {
        QFont font(QString::fromStdString(marker.fontName));
        font.setPixelSize(size);
        const auto character = static_cast<char32_t>(marker.characterIndex);
        path.addText(0, 0, font, QString::fromUcs4(&character, 1));
    }
    if (path.isEmpty()) {
        path = fallbackShape(marker.characterIndex, size);
    } else {
        path.translate(-path.boundingRect().center());
    }
    return m_glyphs.emplace(key, std::move(path)).first->second;
}

void SymbolPainter::drawCharacterMarker(const CharacterMarkerSymbol& marker, QPointF at,
                                        double rotation)
{
    const double size = marker.size * m_ppp;
    if (size <= 0.0) {
        return;
    }
    const QPainterPath& shape = glyph(marker, size);
    const QTransform base = m_painter.worldTransform();
    m_painter.setWorldTransform(
        QTransform(base).translate(at.x(), at.y()).rotate(-(marker.angle + rotation)));
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(toQColor(marker.color));
    m_painter.drawPath(shape);
    m_painter.setWorldTransform(base);
}

void SymbolPainter::drawLine(const Symbol& symbol, const QPolygonF& path)
{
    std::visit(Overloaded{
                   [&](const SimpleLineSymbol& l) { drawLineLayer(l, path); },
                   [&](const CartographicLineSymbol& l) { drawLineLayer(l, path); },
                   [&](const MarkerLineSymbol& l) { drawLineLayer(l, path); },
                   [&](const HashLineSymbol& l) { drawLineLayer(l, path); },
                   [&](const MultiLayerLineSymbol& l) { drawLineLayer(l, path); },
                   [](const auto&) {},
               },
               symbol);
}

void SymbolPainter::drawLine(const LineSymbol& symbol, const QPolygonF& path)
{
    std::visit([&](const auto& line) { drawLineLayer(line, path); }, symbol);
}

template <class Line> void SymbolPainter::drawLineLayer(const Line& line, const QPolygonF& path)
{
    m_painter.setBrush(Qt::NoBrush);
    if constexpr (std::is_same_v<Line, SimpleLineSymbol>) {
        Qt::PenStyle style = Qt::SolidLine;
        switch (line.style) {
        case SimpleLineStyle::Null:
            return;
        case SimpleLineStyle::Dash:
            style = Qt::DashLine;
            break;
        case SimpleLineStyle::Dot:
            style = Qt::DotLine;
            break;
        case SimpleLineStyle::DashDot:
            style = Qt::DashDotLine;
            break;
        case SimpleLineStyle::DashDotDot:
            style = Qt::DashDotDotLine;
            break;
        case SimpleLineStyle::Solid:
        case SimpleLineStyle::InsideFrame:
            break;
        }
        m_painter.setPen(
            QPen(toQColor(line.color), line.width * m_ppp, style, Qt::RoundCap, Qt::RoundJoin));
        m_painter.drawPolyline(path);
    } else if constexpr (std::is_same_v<Line, CartographicLineSymbol>) {
        m_painter.setPen(
            templatePen(line.color, line.width, line.cap, line.join, line.lineTemplate, m_ppp));
        m_painter.drawPolyline(path);
    } else if constexpr (std::is_same_v<Line, MarkerLineSymbol>) {
        const auto repeat = pattern(line.lineTemplate, m_ppp);
        const double size = std::visit([](const auto& m) { return m.size; }, line.marker) * m_ppp;
        const double spacing = repeat ? repeat->first : std::max(2.0 * size, 4.0 * m_ppp);
        const std::vector<double> starts =
            repeat ? repeat->second : std::vector<double>{spacing / 2};
        alongPath(path, spacing, starts,
                  [&](QPointF at, double angle) { drawMarker(line.marker, at, angle); });
    } else if constexpr (std::is_same_v<Line, HashLineSymbol>) {
        const auto repeat = pattern(line.lineTemplate, m_ppp);
        const double length = line.width * m_ppp;
        const double spacing = repeat ? repeat->first : std::max(length, 4.0 * m_ppp);
        const std::vector<double> starts = repeat ? repeat->second : std::vector<double>{0.0};
        QPen pen(toQColor(line.color), 0.0, Qt::SolidLine, Qt::FlatCap);
        if (line.hashSymbol) {
            std::visit(Overloaded{
                           [&](const CartographicLineSymbol& h) {
                               pen = QPen(toQColor(h.color), h.width * m_ppp, Qt::SolidLine,
                                          toQt(h.cap), toQt(h.join));
                           },
                           [&](const MarkerLineSymbol& h) {
                               pen = QPen(toQColor(h.color), h.width * m_ppp);
                           },
                       },
                       *line.hashSymbol);
        }
        m_painter.setPen(pen);
        alongPath(path, spacing, starts, [&](QPointF at, double angle) {
            QLineF hash = QLineF::fromPolar(length / 2, angle + line.angle).translated(at);
            hash.setP1(at - (hash.p2() - at));
            m_painter.drawLine(hash);
        });
    } else {
        for (const auto& layer : line.layers) {
            std::visit([&](const auto& l) { drawLineLayer(l, path); }, layer);
        }
    }
}

void SymbolPainter::strokeAreaOutline(const LineSymbol& outline, const QPainterPath& area)
{
    for (const QPolygonF& ring : area.toSubpathPolygons()) {
        drawLine(outline, ring);
    }
}

void SymbolPainter::drawFill(const SimpleFillSymbol& symbol, const QPainterPath& area)
{
    const Qt::BrushStyle style = toQt(symbol.style);
    const auto* simple = std::get_if<SimpleLineSymbol>(&symbol.outline);
    if (simple && simple->style == SimpleLineStyle::Solid) {
        // The common case in one call: fill and outline together.
        m_painter.setPen(QPen(toQColor(simple->color), simple->width * m_ppp, Qt::SolidLine,
                              Qt::RoundCap, Qt::RoundJoin));
        m_painter.setBrush(QBrush(toQColor(symbol.color), style));
        m_painter.drawPath(area);
        return;
    }
    if (style != Qt::NoBrush) {
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(QBrush(toQColor(symbol.color), style));
        m_painter.drawPath(area);
    }
    strokeAreaOutline(symbol.outline, area);
}

void SymbolPainter::drawFill(const SimpleFillSymbol& symbol, const QPolygonF& ring)
{
    const auto* simple = std::get_if<SimpleLineSymbol>(&symbol.outline);
    if (simple && simple->style == SimpleLineStyle::Solid) {
        m_painter.setPen(QPen(toQColor(simple->color), simple->width * m_ppp, Qt::SolidLine,
                              Qt::RoundCap, Qt::RoundJoin));
        m_painter.setBrush(QBrush(toQColor(symbol.color), toQt(symbol.style)));
        m_painter.drawPolygon(ring);
        return;
    }
    QPainterPath area;
    area.addPolygon(ring);
    area.closeSubpath();
    drawFill(symbol, area);
}

void SymbolPainter::drawPatch(const Symbol& symbol, const QRectF& box)
{
    switch (symbolKind(symbol)) {
    case SymbolKind::Marker: {
        double size = 0.0;
        std::visit(Overloaded{
                       [&](const MultiLayerMarkerSymbol& m) {
                           for (const auto& layer : m.layers) {
                               size = std::max(
                                   size, std::visit([](const auto& l) { return l.size; }, layer));
                           }
                       },
                       [&](const SimpleMarkerSymbol& m) { size = m.size; },
                       [&](const CharacterMarkerSymbol& m) { size = m.size; },
                       [](const auto&) {},
                   },
                   symbol);
        const double pixels = size * m_ppp;
        const double fit = std::min(box.width(), box.height());
        const QTransform base = m_painter.worldTransform();
        if (pixels > fit && pixels > 0.0) {
            const QPointF c = box.center();
            m_painter.setWorldTransform(QTransform(base)
                                            .translate(c.x(), c.y())
                                            .scale(fit / pixels, fit / pixels)
                                            .translate(-c.x(), -c.y()));
        }
        drawMarker(symbol, box.center());
        m_painter.setWorldTransform(base);
        break;
    }
    case SymbolKind::Line: {
        QPolygonF line;
        line << QPointF(box.left(), box.center().y()) << QPointF(box.right(), box.center().y());
        drawLine(symbol, line);
        break;
    }
    case SymbolKind::Fill: {
        QPainterPath area;
        area.addRect(box);
        drawFill(std::get<SimpleFillSymbol>(symbol), area);
        break;
    }
    }
}

QFont SymbolPainter::font(const TextSymbol& symbol) const
{
    QFont font;
    font.setStyleHint(QFont::SansSerif);
    if (!symbol.fontName.empty()) {
        font.setFamily(QString::fromStdString(symbol.fontName));
    }
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(symbol.size * m_ppp))));
    font.setBold(symbol.bold);
    font.setItalic(symbol.italic);
    return font;
}

void SymbolPainter::drawText(const std::string& text, const TextSymbol& symbol, QPointF at)
{
    const QFont textFont = font(symbol);
    const QFontMetricsF metrics(textFont, m_painter.device());
    const QString content = QString::fromStdString(text);
    double dx = 0.0;
    switch (symbol.horizontalAlignment) {
    case HorizontalAlignment::Center:
        dx = -metrics.horizontalAdvance(content) / 2;
        break;
    case HorizontalAlignment::Right:
        dx = -metrics.horizontalAdvance(content);
        break;
    case HorizontalAlignment::Left:
        break;
    }
    double dy = 0.0;
    switch (symbol.verticalAlignment) {
    case VerticalAlignment::Top:
        dy = metrics.ascent();
        break;
    case VerticalAlignment::Center:
        dy = (metrics.ascent() - metrics.descent()) / 2;
        break;
    case VerticalAlignment::Bottom:
        dy = -metrics.descent();
        break;
    case VerticalAlignment::Baseline:
        break;
    }
    const QTransform base = m_painter.worldTransform();
    m_painter.setWorldTransform(QTransform(base).translate(at.x(), at.y()).rotate(-symbol.angle));
    m_painter.setFont(textFont);
    m_painter.setPen(toQColor(symbol.color));
    m_painter.drawText(QPointF(dx, dy), content);
    m_painter.setWorldTransform(base);
}

} // namespace brevant::platform::display
