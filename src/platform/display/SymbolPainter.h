#pragma once

#include "platform/carto/Symbol.h"
#include "platform/carto/TextSymbol.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <map>
#include <string>
#include <tuple>

namespace brevant::platform::display {

QColor toQColor(const carto::RgbColor& color);

/// Paints symbols on shapes given in device pixels: markers at points, lines along paths,
/// fills over areas, legend patches in boxes. Sizes of symbols are in points and become
/// `pixelsPerPoint` pixels each. A character marker whose font is not installed is drawn as a
/// shape chosen by its character index (a disc for 33, then square, triangle, diamond, star,
/// hexagon, plus, inverted triangle, pentagon and cross, repeating), at its size and colour.
class SymbolPainter {
public:
    SymbolPainter(QPainter& painter, double pixelsPerPoint);
    SymbolPainter(const SymbolPainter&) = delete;
    SymbolPainter& operator=(const SymbolPainter&) = delete;

    QPainter& painter() { return m_painter; }
    double pixelsPerPoint() const { return m_ppp; }

    /// Draws a marker symbol (any other symbol draws nothing) at a point.
    void drawMarker(const carto::Symbol& symbol, QPointF at);
    /// Draws one marker, turned `rotation` degrees counter-clockwise on top of its own angle.
    void drawMarker(const carto::MarkerLayer& marker, QPointF at, double rotation = 0.0);
    /// Draws a line symbol (any other symbol draws nothing) along a path.
    void drawLine(const carto::Symbol& symbol, const QPolygonF& path);
    void drawLine(const carto::LineSymbol& symbol, const QPolygonF& path);
    /// Fills an area, then draws its outline along each ring.
    void drawFill(const carto::SimpleFillSymbol& symbol, const QPainterPath& area);
    void drawFill(const carto::SimpleFillSymbol& symbol, const QPolygonF& ring);
    /// Draws a symbol as a legend shows it: a marker in the middle of the box, a line across
    /// it, a fill over it. Markers larger than the box are shrunk to it.
    void drawPatch(const carto::Symbol& symbol, const QRectF& box);

    /// The font of a text symbol at this painter's size.
    QFont font(const carto::TextSymbol& symbol) const;
    /// Draws a text anchored at a point as the symbol's alignment says.
    void drawText(const std::string& text, const carto::TextSymbol& symbol, QPointF at);

    /// Whether a font family is installed (without regard to case).
    static bool isFontInstalled(const std::string& family);

private:
    template <class Line> void drawLineLayer(const Line& line, const QPolygonF& path);
    void drawSimpleMarker(const carto::SimpleMarkerSymbol& marker, QPointF at, double rotation);
    void drawCharacterMarker(const carto::CharacterMarkerSymbol& marker, QPointF at,
                             double rotation);
    const QPainterPath& glyph(const carto::CharacterMarkerSymbol& marker, double pixels);
    void strokeAreaOutline(const carto::LineSymbol& outline, const QPainterPath& area);

    QPainter& m_painter;
    double m_ppp;
    // Glyphs by (font, character, pixel size), centred on the origin.
    std::map<std::tuple<std::string, int, int>, QPainterPath> m_glyphs;
};

} // namespace brevant::platform::display
