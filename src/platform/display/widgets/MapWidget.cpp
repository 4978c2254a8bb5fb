#include "platform/display/widgets/MapWidget.h"

#include "platform/carto/Map.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/MapRenderer.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>
#include <exception>

namespace brevant::platform::display {

MapWidget::MapWidget(QWidget* parent) : QWidget(parent)
{
    setObjectName("MapWidget");
    setMouseTracking(true);
    setMinimumSize(120, 90);
}

MapWidget::~MapWidget()
{
    setMap(nullptr);
}

void MapWidget::setMap(std::shared_ptr<carto::Map> map)
{
    if (m_map && m_listener != 0) {
        m_map->removeListener(m_listener);
        m_listener = 0;
    }
    m_map = std::move(map);
    if (m_map) {
        m_listener = m_map->addListener([this](const carto::ViewEvent&) {
            m_stale = true;
            update();
        });
        fitView();
    }
    m_stale = true;
    update();
}

void MapWidget::fitView()
{
    if (!m_map) {
        return;
    }
    auto& transformation = m_map->displayTransformation();
    transformation.setDeviceFrame(std::max(1, width()), std::max(1, height()));
    if (transformation.visibleBounds().isEmpty()) {
        transformation.setVisibleBounds(m_map->fullExtent());
    }
}

std::optional<QPoint> MapWidget::toWidget(const geometry::Point& point) const
{
    if (!m_map) {
        return std::nullopt;
    }
    const auto pixel = m_map->displayTransformation().fromMapPoint(point);
    // Rounded, so the pixel of a pixel's own map point is that pixel again.
    const QPoint rounded(static_cast<int>(std::lround(pixel.x)),
                         static_cast<int>(std::lround(pixel.y)));
    if (!rect().contains(rounded)) {
        return std::nullopt;
    }
    return rounded;
}

geometry::Point MapWidget::toMap(QPointF pixel) const
{
    if (!m_map) {
        return {};
    }
    return m_map->displayTransformation().toMapPoint(pixel.x(), pixel.y());
}

void MapWidget::redraw()
{
    m_picture = blankImage(size(), 96.0);
    m_error.clear();
    if (m_map) {
        fitView();
        try {
            QPainter painter(&m_picture);
            MapRenderer(*m_map).draw(painter, m_map->displayTransformation());
        } catch (const std::exception& e) {
            // A layer whose data cannot be read must not take the window down with it.
            m_error = e.what();
        }
    }
    m_stale = false;
    ++m_drawCount;
}

void MapWidget::paintEvent(QPaintEvent*)
{
    if (m_stale || m_picture.size() != size()) {
        redraw();
    }
    QPainter painter(this);
    QPoint shift;
    if (m_map && m_map->screenDisplay().isPanning()) {
        // The picture follows the pointer while the pan lasts; the view moves when it ends.
        const auto offset = m_map->screenDisplay().panOffset();
        shift = QPoint(static_cast<int>(std::lround(offset.x)),
                       static_cast<int>(std::lround(offset.y)));
        painter.fillRect(rect(), Qt::white);
    }
    painter.drawImage(shift, m_picture);
    if (m_band && m_map) {
        const auto& transformation = m_map->displayTransformation();
        const auto a = transformation.fromMapPoint({m_band->xmin(), m_band->ymin()});
        const auto b = transformation.fromMapPoint({m_band->xmax(), m_band->ymax()});
        painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(QPointF(a.x, a.y), QPointF(b.x, b.y)).normalized());
    }
    if (!m_error.empty()) {
        painter.setPen(Qt::red);
        painter.drawText(rect().adjusted(4, 4, -4, -4), Qt::AlignTop | Qt::TextWordWrap,
                         QString::fromStdString(m_error));
    }
}

void MapWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitView();
    m_stale = true;
}

void MapWidget::setRubberBand(std::optional<geometry::Envelope> band)
{
    m_band = std::move(band);
    update();
}

void MapWidget::forward(const MouseHandler& handler, QMouseEvent* event) const
{
    if (handler && m_map) {
        const QPoint pixel = event->position().toPoint();
        handler(MapMouseEvent{toMap(QPointF(pixel)), pixel, event->button(), event->modifiers()});
    }
}

void MapWidget::mousePressEvent(QMouseEvent* event)
{
    forward(m_press, event);
}

void MapWidget::mouseMoveEvent(QMouseEvent* event)
{
    forward(m_move, event);
}

void MapWidget::mouseReleaseEvent(QMouseEvent* event)
{
    forward(m_release, event);
}

} // namespace brevant::platform::display
