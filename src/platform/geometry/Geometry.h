#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Point.h"
#include "platform/geometry/ShapeType.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// GEOS's geometry type, kept opaque here: only the platform's GEOS wrapper sees geos_c.h.
struct GEOSGeom_t;

namespace brevant::platform::geometry {

/// An immutable shape: a point, a multipoint, a polyline of one or more paths, or a polygon of
/// one or more rings (outer rings and holes). Copies share the same GEOS geometry, so passing
/// shapes around is cheap. A null geometry (default-constructed) has ShapeType::Null and is
/// empty.
///
/// Errors of GEOS (invalid input, a failed operation) throw PlatformError numbered
/// ErrorNumber::GeosBase + 1 with source "GEOS" and GEOS's message. A null shape behaves as an
/// empty one: predicates are false, operations give a null shape, measures are 0 (distance is
/// infinite); asking a null or empty shape for a point throws PlatformError numbered
/// ErrorNumber::InvalidUseOfNull.
class Geometry {
public:
    Geometry() = default;

    static Geometry point(Point p);
    static Geometry multipoint(std::span<const Point> points);
    /// A polyline of paths (each at least two points).
    static Geometry polyline(const std::vector<std::vector<Point>>& paths);
    /// A polygon from rings. Rings may come in any orientation and order; each ring is
    /// assigned to the outer ring that contains it as a hole, as shapefile readers do. Rings are
    /// closed when their last point differs from the first.
    static Geometry polygon(const std::vector<std::vector<Point>>& rings);
    /// Parses WKT ("POINT (1 2)", "MULTIPOLYGON (...)"); throws PlatformError on bad text.
    static Geometry fromWkt(std::string_view wkt);
    /// Reads ISO or extended WKB; throws PlatformError on bad bytes.
    static Geometry fromWkb(std::span<const unsigned char> wkb);
    /// Takes ownership of a GEOS geometry made by the platform (null gives a null geometry).
    static Geometry adopt(GEOSGeom_t* geometry);
    /// The union of all shapes (null ones skipped); a null geometry when there are none.
    static Geometry unionAll(std::span<const Geometry> shapes);

    /// A geometry collection (an overlay result) reports the type of its highest dimension, or
    /// Null when it is empty.
    ShapeType type() const;
    bool isNull() const { return !m_geometry; }
    bool isEmpty() const;
    Envelope envelope() const;

    /// The vertices in collection order: a multipoint gives one part holding all its points
    /// (as a shapefile stores it); a polyline one part per path; a polygon one part per ring,
    /// each outer ring followed by its holes (rings are closed: last == first).
    std::vector<std::vector<Point>> parts() const;
    /// Number of vertices over all parts.
    std::size_t pointCount() const;
    /// The point of a point geometry (first vertex otherwise); throws for a null geometry.
    Point firstPoint() const;

    double area() const;
    double length() const;

    bool intersects(const Geometry& other) const;
    /// True when `other` lies in this shape's interior or boundary and touches its interior
    /// (GEOS contains: a point on the edge is not contained).
    bool contains(const Geometry& other) const;
    bool touches(const Geometry& other) const;
    bool within(const Geometry& other) const;
    /// Minimum distance; 0 when they meet.
    double distance(const Geometry& other) const;

    Geometry buffer(double distance, int quadrantSegments = 8) const;
    Geometry intersection(const Geometry& other) const;
    Geometry unionWith(const Geometry& other) const;
    Geometry difference(const Geometry& other) const;
    /// A fast, not necessarily valid pre-cut to a rectangle before an exact overlay; the result
    /// may be a collection and may reach a hair beyond `box`, so that shapes lying on the box's
    /// edge still meet it. Empty when `box` is.
    Geometry clipToEnvelope(const Envelope& box) const;
    /// The point of this shape (a polyline, or a polygon's boundary) nearest to `p`.
    Point nearestPoint(const Point& p) const;
    /// A point inside the shape (on it, for lines and points), as a label or a representative
    /// location is placed; throws for a null or empty shape.
    Point interiorPoint() const;
    /// Repairs an invalid polygon (self-intersections, wrong nesting); valid shapes pass
    /// unchanged.
    Geometry makeValid() const;
    bool isValid() const;
    /// Polygons and polylines of a collection result as one Polygon/Polyline (dropping lower
    /// dimensions, e.g. the points where two polygons merely touch); a point stays a point.
    Geometry asShapeOf(ShapeType type) const;

    std::string toWkt(int decimals = -1) const;
    /// ISO WKB, little endian.
    std::vector<unsigned char> toWkb() const;

    /// The GEOS geometry, borrowed; null for a null geometry. For the platform's GEOS code.
    const GEOSGeom_t* geos() const { return m_geometry.get(); }

    /// Same type and same vertices in the same order.
    bool equalsExact(const Geometry& other, double tolerance = 0.0) const;

private:
    explicit Geometry(std::shared_ptr<const GEOSGeom_t> geometry);

    std::shared_ptr<const GEOSGeom_t> m_geometry;
};

} // namespace brevant::platform::geometry
