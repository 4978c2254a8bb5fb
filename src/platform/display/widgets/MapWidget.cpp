#include "platform/display/widgets/MapWidget.h"

#include "platform/carto/Map.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/MapRenderer.h"

#include <QMouseEvent>
#include <QPainter>
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
    const QPoint rounded(static_cast<int>(pixel.x), static_cast<int>(pixel.y));
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
    painter.drawImage(0, 0, m_picture);
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

void MapWidget::forward(const MouseHandler& handler, QMouseEvent* event) const
{
    if (handler && m_map) {
        handler(MapMouseEvent{toMap(event->position()), event->button(), event->modifiers()});
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
