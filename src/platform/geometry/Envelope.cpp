#include "platform/geometry/Envelope.h"

#include <algorithm>

namespace brevant::platform::geometry {

Envelope::Envelope(double xmin, double ymin, double xmax, double ymax)
    : m_xmin(std::min(xmin, xmax)), m_ymin(std::min(ymin, ymax)), m_xmax(std::max(xmin, xmax)),
      m_ymax(std::max(ymin, ymax)), m_empty(false)
{
}

double Envelope::width() const
{
    return m_empty ? 0.0 : m_xmax - m_xmin;
}

double Envelope::height() const
{
    return m_empty ? 0.0 : m_ymax - m_ymin;
}

Point Envelope::center() const
{
    return {(m_xmin + m_xmax) / 2.0, (m_ymin + m_ymax) / 2.0};
}

Envelope Envelope::united(const Envelope& other) const
{
    if (m_empty) {
        return other;
    }
    if (other.m_empty) {
        return *this;
    }
    return {std::min(m_xmin, other.m_xmin), std::min(m_ymin, other.m_ymin),
            std::max(m_xmax, other.m_xmax), std::max(m_ymax, other.m_ymax)};
}

Envelope Envelope::intersected(const Envelope& other) const
{
    if (!intersects(other)) {
        return {};
    }
    return {std::max(m_xmin, other.m_xmin), std::max(m_ymin, other.m_ymin),
            std::min(m_xmax, other.m_xmax), std::min(m_ymax, other.m_ymax)};
}

bool Envelope::intersects(const Envelope& other) const
{
    return !m_empty && !other.m_empty && other.m_xmin <= m_xmax && m_xmin <= other.m_xmax &&
           other.m_ymin <= m_ymax && m_ymin <= other.m_ymax;
}

bool Envelope::contains(const Point& p) const
{
    return !m_empty && m_xmin <= p.x && p.x <= m_xmax && m_ymin <= p.y && p.y <= m_ymax;
}

bool Envelope::contains(const Envelope& other) const
{
    return !m_empty && !other.m_empty && m_xmin <= other.m_xmin && other.m_xmax <= m_xmax &&
           m_ymin <= other.m_ymin && other.m_ymax <= m_ymax;
}

void Envelope::expandToInclude(const Point& p)
{
    if (m_empty) {
        *this = Envelope(p.x, p.y, p.x, p.y);
        return;
    }
    m_xmin = std::min(m_xmin, p.x);
    m_ymin = std::min(m_ymin, p.y);
    m_xmax = std::max(m_xmax, p.x);
    m_ymax = std::max(m_ymax, p.y);
}

Envelope Envelope::expandedBy(double margin) const
{
    if (m_empty || m_xmax - m_xmin + 2 * margin < 0 || m_ymax - m_ymin + 2 * margin < 0) {
        return {};
    }
    return {m_xmin - margin, m_ymin - margin, m_xmax + margin, m_ymax + margin};
}

} // namespace brevant::platform::geometry
