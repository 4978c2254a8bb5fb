#include "platform/carto/EnvelopeFeedback.h"

namespace brevant::platform::carto {

void EnvelopeFeedback::start(const geometry::Point& point)
{
    m_start = m_end = point;
    m_active = m_started = true;
}

void EnvelopeFeedback::moveTo(const geometry::Point& point)
{
    if (m_active) {
        m_end = point;
    }
}

geometry::Envelope EnvelopeFeedback::stop()
{
    m_active = false;
    return current();
}

geometry::Envelope EnvelopeFeedback::current() const
{
    if (!m_started) {
        return {};
    }
    // Envelope orders its corners itself.
    return {m_start.x, m_start.y, m_end.x, m_end.y};
}

} // namespace brevant::platform::carto
