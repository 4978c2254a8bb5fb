#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Point.h"

#include <QImage>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace brevant::platform::carto {
class Map;
}

namespace brevant::platform::display {

/// A mouse event on the map, in map coordinates.
struct MapMouseEvent {
    /// The map point of `pixel`.
    geometry::Point point;
    /// The widget pixel, rounded to whole pixels.
    QPoint pixel;
    Qt::MouseButton button = Qt::NoButton;
    Qt::KeyboardModifiers modifiers;
};

/// Shows a map on a window: the map's active view fitted to the widget, drawn by MapRenderer.
/// The picture is drawn again only when the view asks for it (a refresh, a layer added, moved
/// or deleted) or the widget changes size, so an edit shows once the editor refreshes the view.
/// Windows that work on the map (tools, selections) receive its mouse events in map units.
class MapWidget : public QWidget {
public:
    using MouseHandler = std::function<void(const MapMouseEvent&)>;

    explicit MapWidget(QWidget* parent = nullptr);
    ~MapWidget() override;
    MapWidget(const MapWidget&) = delete;
    MapWidget& operator=(const MapWidget&) = delete;

    /// Shows `map` (null for none). The map's device frame follows the widget's size; a map
    /// without a visible extent shows its full extent.
    void setMap(std::shared_ptr<carto::Map> map);
    const std::shared_ptr<carto::Map>& map() const { return m_map; }

    /// The widget pixel of a map point; nullopt when it lies outside the widget.
    std::optional<QPoint> toWidget(const geometry::Point& point) const;
    geometry::Point toMap(QPointF pixel) const;

    void onMousePress(MouseHandler handler) { m_press = std::move(handler); }
    void onMouseMove(MouseHandler handler) { m_move = std::move(handler); }
    void onMouseRelease(MouseHandler handler) { m_release = std::move(handler); }

    /// Draws a rubber band over the picture (nullopt for none), in map units.
    void setRubberBand(std::optional<geometry::Envelope> band);

    /// How many times the picture has been drawn.
    int drawCount() const { return m_drawCount; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void fitView();
    void redraw();
    void forward(const MouseHandler& handler, QMouseEvent* event) const;

    std::shared_ptr<carto::Map> m_map;
    int m_listener = 0;
    QImage m_picture;
    bool m_stale = true;
    std::string m_error;
    std::optional<geometry::Envelope> m_band;
    int m_drawCount = 0;
    MouseHandler m_press;
    MouseHandler m_move;
    MouseHandler m_release;
};

} // namespace brevant::platform::display
