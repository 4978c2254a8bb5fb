#include "platform/carto/ScreenDisplay.h"

namespace brevant::platform::carto {

void ScreenDisplay::panStart(const geometry::Point& point)
{
    m_panning = true;
    m_panFrom = m_panTo = point;
}

void ScreenDisplay::panMoveTo(const geometry::Point& point)
{
    if (m_panning) {
        m_panTo = point;
    }
}

geometry::Envelope ScreenDisplay::panStop()
{
    const geometry::Envelope bounds = m_transformation.visibleBounds();
    if (!m_panning) {
        return bounds;
    }
    m_panning = false;
    if (bounds.isEmpty()) {
        return bounds;
    }
    // The map follows the mouse: the point grabbed ends up under the release point.
    const double dx = m_panFrom.x - m_panTo.x;
    const double dy = m_panFrom.y - m_panTo.y;
    const geometry::Envelope moved(bounds.xmin() + dx, bounds.ymin() + dy, bounds.xmax() + dx,
                                   bounds.ymax() + dy);
    m_transformation.setVisibleBounds(moved);
    return moved;
}

DevicePoint ScreenDisplay::panOffset() const
{
    if (!m_panning) {
        return {};
    }
    const double pixels = m_transformation.unitsPerPixel();
    return {(m_panTo.x - m_panFrom.x) / pixels, (m_panFrom.y - m_panTo.y) / pixels};
}

} // namespace brevant::platform::carto
