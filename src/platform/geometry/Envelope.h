#pragma once

#include "platform/geometry/Point.h"

namespace brevant::platform::geometry {

/// An axis-aligned rectangle; default-constructed it is empty (contains nothing, unites as
/// nothing).
class Envelope {
public:
    Envelope() = default;
    Envelope(double xmin, double ymin, double xmax, double ymax);

    bool isEmpty() const { return m_empty; }
    double xmin() const { return m_xmin; }
    double ymin() const { return m_ymin; }
    double xmax() const { return m_xmax; }
    double ymax() const { return m_ymax; }
    double width() const;
    double height() const;
    Point center() const;

    /// The smallest envelope holding both.
    Envelope united(const Envelope& other) const;
    /// The common part; empty when they do not meet.
    Envelope intersected(const Envelope& other) const;
    /// True when they share at least one point (touching edges count).
    bool intersects(const Envelope& other) const;
    bool contains(const Point& p) const;
    bool contains(const Envelope& other) const;
    /// Grows to include a point.
    void expandToInclude(const Point& p);
    /// Grows by `margin` on every side.
    Envelope expandedBy(double margin) const;

    bool operator==(const Envelope&) const = default;

private:
    double m_xmin = 0.0;
    double m_ymin = 0.0;
    double m_xmax = 0.0;
    double m_ymax = 0.0;
    bool m_empty = true;
};

} // namespace brevant::platform::geometry
