#include "platform/geometry/Geometry.h"

#include "geos/GeosContext.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace brevant::platform::geometry {

using geos::check;
using geos::checkPredicate;
using geos::context;
using geos::GeometryPtr;

namespace {

[[noreturn]] void failNull(const char* what)
{
    throw automation::PlatformError(automation::ErrorNumber::InvalidUseOfNull, "Geometry",
                                    std::string(what) + ": the shape is null or empty");
}

GEOSCoordSequence* sequenceOf(std::span<const Point> points)
{
    std::vector<double> buffer;
    buffer.reserve(points.size() * 2);
    for (const Point& p : points) {
        buffer.push_back(p.x);
        buffer.push_back(p.y);
    }
    return check(GEOSCoordSeq_copyFromBuffer_r(context(), buffer.data(),
                                               static_cast<unsigned>(points.size()), 0, 0),
                 "cannot store coordinates");
}

std::vector<Point> pointsOf(const GEOSCoordSequence* sequence)
{
    unsigned size = 0;
    if (!GEOSCoordSeq_getSize_r(context(), sequence, &size)) {
        geos::fail("cannot read coordinates");
    }
    std::vector<double> buffer(std::size_t{size} * 2);
    if (size > 0 && !GEOSCoordSeq_copyToBuffer_r(context(), sequence, buffer.data(), 0, 0)) {
        geos::fail("cannot read coordinates");
    }
    std::vector<Point> points(size);
    for (std::size_t i = 0; i < size; ++i) {
        points[i] = {buffer[2 * i], buffer[2 * i + 1]};
    }
    return points;
}

std::vector<Point> pointsOf(const GEOSGeometry* line)
{
    return pointsOf(check(GEOSGeom_getCoordSeq_r(context(), line), "cannot read coordinates"));
}

GeometryPtr makeCollection(int type, std::vector<GeometryPtr> members)
{
    std::vector<GEOSGeometry*> raw;
    raw.reserve(members.size());
    for (auto& member : members) {
        raw.push_back(member.get());
    }
    GEOSGeometry* collection = check(
        GEOSGeom_createCollection_r(context(), type, raw.data(), static_cast<unsigned>(raw.size())),
        "cannot build a collection");
    // The collection owns its members now.
    for (auto& member : members) {
        (void)member.release();
    }
    return GeometryPtr(collection);
}

GeometryPtr makeRing(std::vector<Point> ring)
{
    if (!ring.empty() && ring.front() != ring.back()) {
        ring.push_back(ring.front());
    }
    // GEOS accepts a closed ring of three points, which encloses nothing.
    if (ring.size() < 4) {
        throw automation::PlatformError(automation::ErrorNumber::GeosBase + 1, "GEOS",
                                        "cannot build a polygon ring: it has " +
                                            std::to_string(ring.size()) +
                                            " points and needs at least 4 once closed");
    }
    return GeometryPtr(check(GEOSGeom_createLinearRing_r(context(), sequenceOf(ring)),
                             "cannot build a polygon ring"));
}

double ringArea(const std::vector<Point>& ring)
{
    double twice = 0.0;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
        twice += ring[i].x * ring[i + 1].y - ring[i + 1].x * ring[i].y;
    }
    return std::abs(twice) / 2.0;
}

Envelope ringEnvelope(const std::vector<Point>& ring)
{
    Envelope box;
    for (const Point& p : ring) {
        box.expandToInclude(p);
    }
    return box;
}

enum class Side { Inside, Outside, OnBoundary };

// Plain crossing number: it only decides how rings nest, where a representative vertex is
// chosen away from the other ring's boundary.
Side locate(const Point& p, const std::vector<Point>& ring)
{
    bool inside = false;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
        const Point& a = ring[i];
        const Point& b = ring[i + 1];
        const double cross = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
        if (cross == 0.0 && std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) &&
            std::min(a.y, b.y) <= p.y && p.y <= std::max(a.y, b.y)) {
            return Side::OnBoundary;
        }
        if ((a.y > p.y) != (b.y > p.y) &&
            p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y)) {
            inside = !inside;
        }
    }
    return inside ? Side::Inside : Side::Outside;
}

bool ringInside(const std::vector<Point>& inner, const std::vector<Point>& outer)
{
    for (const Point& p : inner) {
        if (Side side = locate(p, outer); side != Side::OnBoundary) {
            return side == Side::Inside;
        }
    }
    // Every vertex lies on the other ring: try the edge midpoints.
    for (std::size_t i = 0; i + 1 < inner.size(); ++i) {
        const Point mid{(inner[i].x + inner[i + 1].x) / 2, (inner[i].y + inner[i + 1].y) / 2};
        if (Side side = locate(mid, outer); side != Side::OnBoundary) {
            return side == Side::Inside;
        }
    }
    return false;
}

// For each ring, the ring it lies directly inside (-1 for none), found among larger rings from
// the smallest up.
std::vector<int> ringParents(const std::vector<std::vector<Point>>& rings)
{
    const std::size_t n = rings.size();
    std::vector<double> areas(n);
    std::vector<Envelope> boxes(n);
    for (std::size_t i = 0; i < n; ++i) {
        areas[i] = ringArea(rings[i]);
        boxes[i] = ringEnvelope(rings[i]);
    }
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return areas[a] > areas[b]; });
    std::vector<int> parents(n, -1);
    for (std::size_t k = 1; k < n; ++k) {
        const std::size_t i = order[k];
        for (std::size_t m = k; m-- > 0;) {
            const std::size_t j = order[m];
            if (areas[j] > areas[i] && boxes[j].contains(boxes[i]) &&
                ringInside(rings[i], rings[j])) {
                parents[i] = static_cast<int>(j);
                break;
            }
        }
    }
    return parents;
}

void appendParts(const GEOSGeometry* g, std::vector<std::vector<Point>>& parts)
{
    GEOSContextHandle_t ctx = context();
    if (GEOSisEmpty_r(ctx, g) == 1) {
        return;
    }
    switch (GEOSGeomTypeId_r(ctx, g)) {
    case GEOS_POINT:
    case GEOS_LINESTRING:
    case GEOS_LINEARRING:
        parts.push_back(pointsOf(g));
        break;
    case GEOS_POLYGON: {
        parts.push_back(pointsOf(check(GEOSGetExteriorRing_r(ctx, g), "cannot read a ring")));
        const int holes = GEOSGetNumInteriorRings_r(ctx, g);
        for (int i = 0; i < holes; ++i) {
            parts.push_back(
                pointsOf(check(GEOSGetInteriorRingN_r(ctx, g, i), "cannot read a ring")));
        }
        break;
    }
    case GEOS_MULTIPOINT: {
        std::vector<Point> points;
        const int count = GEOSGetNumGeometries_r(ctx, g);
        for (int i = 0; i < count; ++i) {
            const auto member = pointsOf(GEOSGetGeometryN_r(ctx, g, i));
            points.insert(points.end(), member.begin(), member.end());
        }
        parts.push_back(std::move(points));
        break;
    }
    default: {
        const int count = GEOSGetNumGeometries_r(ctx, g);
        for (int i = 0; i < count; ++i) {
            appendParts(GEOSGetGeometryN_r(ctx, g, i), parts);
        }
        break;
    }
    }
}

std::optional<Point> firstCoordinate(const GEOSGeometry* g)
{
    GEOSContextHandle_t ctx = context();
    if (GEOSisEmpty_r(ctx, g) == 1) {
        return std::nullopt;
    }
    switch (GEOSGeomTypeId_r(ctx, g)) {
    case GEOS_POINT:
    case GEOS_LINESTRING:
    case GEOS_LINEARRING: {
        const GEOSCoordSequence* sequence = GEOSGeom_getCoordSeq_r(ctx, g);
        Point p;
        if (!sequence || !GEOSCoordSeq_getXY_r(ctx, sequence, 0, &p.x, &p.y)) {
            geos::fail("cannot read a coordinate");
        }
        return p;
    }
    case GEOS_POLYGON:
        return firstCoordinate(GEOSGetExteriorRing_r(ctx, g));
    default: {
        const int count = GEOSGetNumGeometries_r(ctx, g);
        for (int i = 0; i < count; ++i) {
            if (auto p = firstCoordinate(GEOSGetGeometryN_r(ctx, g, i))) {
                return p;
            }
        }
        return std::nullopt;
    }
    }
}

// The basic GEOS type a shape type is made of, and its multi form.
struct Kind {
    int single;
    int multi;
};

Kind kindOf(ShapeType type)
{
    switch (type) {
    case ShapeType::Point:
    case ShapeType::Multipoint:
        return {GEOS_POINT, GEOS_MULTIPOINT};
    case ShapeType::Polyline:
        return {GEOS_LINESTRING, GEOS_MULTILINESTRING};
    default:
        return {GEOS_POLYGON, GEOS_MULTIPOLYGON};
    }
}

void collectMembers(const GEOSGeometry* g, int single, std::vector<GeometryPtr>& members)
{
    GEOSContextHandle_t ctx = context();
    const int type = GEOSGeomTypeId_r(ctx, g);
    if (type == single || (single == GEOS_LINESTRING && type == GEOS_LINEARRING)) {
        if (GEOSisEmpty_r(ctx, g) != 1) {
            GEOSGeometry* copy =
                type == GEOS_LINEARRING
                    ? GEOSGeom_createLineString_r(
                          ctx, GEOSCoordSeq_clone_r(ctx, GEOSGeom_getCoordSeq_r(ctx, g)))
                    : GEOSGeom_clone_r(ctx, g);
            members.emplace_back(check(copy, "cannot copy a shape"));
        }
        return;
    }
    if (type >= GEOS_MULTIPOINT) {
        const int count = GEOSGetNumGeometries_r(ctx, g);
        for (int i = 0; i < count; ++i) {
            collectMembers(GEOSGetGeometryN_r(ctx, g, i), single, members);
        }
    }
}

GeometryPtr emptyOf(ShapeType type)
{
    GEOSContextHandle_t ctx = context();
    switch (type) {
    case ShapeType::Point:
        return GeometryPtr(check(GEOSGeom_createEmptyPoint_r(ctx), "cannot build a point"));
    case ShapeType::Multipoint:
        return GeometryPtr(check(GEOSGeom_createEmptyCollection_r(ctx, GEOS_MULTIPOINT),
                                 "cannot build a multipoint"));
    case ShapeType::Polyline:
        return GeometryPtr(
            check(GEOSGeom_createEmptyLineString_r(ctx), "cannot build a polyline"));
    default:
        return GeometryPtr(check(GEOSGeom_createEmptyPolygon_r(ctx), "cannot build a polygon"));
    }
}

} // namespace

Geometry::Geometry(std::shared_ptr<const GEOSGeom_t> geometry) : m_geometry(std::move(geometry))
{
}

Geometry Geometry::adopt(GEOSGeom_t* geometry)
{
    if (!geometry) {
        return {};
    }
    return Geometry(std::shared_ptr<const GEOSGeom_t>(geometry, geos::GeometryDeleter{}));
}

Geometry Geometry::point(Point p)
{
    return adopt(
        check(GEOSGeom_createPointFromXY_r(context(), p.x, p.y), "cannot build a point"));
}

Geometry Geometry::multipoint(std::span<const Point> points)
{
    std::vector<GeometryPtr> members;
    members.reserve(points.size());
    for (const Point& p : points) {
        members.emplace_back(
            check(GEOSGeom_createPointFromXY_r(context(), p.x, p.y), "cannot build a point"));
    }
    return adopt(makeCollection(GEOS_MULTIPOINT, std::move(members)).release());
}

Geometry Geometry::polyline(const std::vector<std::vector<Point>>& paths)
{
    if (paths.empty()) {
        return adopt(emptyOf(ShapeType::Polyline).release());
    }
    std::vector<GeometryPtr> members;
    for (const auto& path : paths) {
        members.emplace_back(check(GEOSGeom_createLineString_r(context(), sequenceOf(path)),
                                   "cannot build a polyline path"));
    }
    if (members.size() == 1) {
        return adopt(members.front().release());
    }
    return adopt(makeCollection(GEOS_MULTILINESTRING, std::move(members)).release());
}

Geometry Geometry::polygon(const std::vector<std::vector<Point>>& rings)
{
    GEOSContextHandle_t ctx = context();
    if (rings.empty()) {
        return adopt(emptyOf(ShapeType::Polygon).release());
    }
    std::vector<std::vector<Point>> closed = rings;
    for (auto& ring : closed) {
        if (!ring.empty() && ring.front() != ring.back()) {
            ring.push_back(ring.front());
        }
    }
    const std::vector<int> parents =
        closed.size() > 1 ? ringParents(closed) : std::vector<int>{-1};
    // Depth from the outside decides the role: even depth is an outer ring, odd a hole.
    const auto depthOf = [&](std::size_t i) {
        int d = 0;
        for (int p = parents[i]; p >= 0; p = parents[static_cast<std::size_t>(p)]) {
            ++d;
        }
        return d;
    };
    std::vector<std::size_t> shells;
    std::vector<std::vector<std::size_t>> holesOf(closed.size());
    for (std::size_t i = 0; i < closed.size(); ++i) {
        if (depthOf(i) % 2 == 0) {
            shells.push_back(i);
        } else {
            holesOf[static_cast<std::size_t>(parents[i])].push_back(i);
        }
    }
    std::vector<GeometryPtr> polygons;
    for (std::size_t shell : shells) {
        GeometryPtr outer = makeRing(closed[shell]);
        std::vector<GeometryPtr> holes;
        for (std::size_t hole : holesOf[shell]) {
            holes.push_back(makeRing(closed[hole]));
        }
        std::vector<GEOSGeometry*> rawHoles;
        for (auto& hole : holes) {
            rawHoles.push_back(hole.get());
        }
        GEOSGeometry* polygon =
            check(GEOSGeom_createPolygon_r(ctx, outer.get(), rawHoles.data(),
                                           static_cast<unsigned>(rawHoles.size())),
                  "cannot build a polygon");
        (void)outer.release();
        for (auto& hole : holes) {
            (void)hole.release();
        }
        polygons.emplace_back(polygon);
    }
    if (polygons.size() == 1) {
        return adopt(polygons.front().release());
    }
    return adopt(makeCollection(GEOS_MULTIPOLYGON, std::move(polygons)).release());
}

Geometry Geometry::fromWkt(std::string_view wkt)
{
    const std::string text(wkt);
    return adopt(check(GEOSWKTReader_read_r(context(), geos::wktReader(), text.c_str()),
                       "cannot read WKT"));
}

Geometry Geometry::fromWkb(std::span<const unsigned char> wkb)
{
    return adopt(check(GEOSWKBReader_read_r(context(), geos::wkbReader(), wkb.data(), wkb.size()),
                       "cannot read WKB"));
}

Geometry Geometry::unionAll(std::span<const Geometry> shapes)
{
    std::vector<GeometryPtr> members;
    for (const Geometry& shape : shapes) {
        if (!shape.isNull()) {
            members.emplace_back(
                check(GEOSGeom_clone_r(context(), shape.m_geometry.get()), "cannot copy a shape"));
        }
    }
    if (members.empty()) {
        return {};
    }
    const GeometryPtr collection = makeCollection(GEOS_GEOMETRYCOLLECTION, std::move(members));
    return adopt(check(GEOSUnaryUnion_r(context(), collection.get()), "cannot unite shapes"));
}

ShapeType Geometry::type() const
{
    if (!m_geometry) {
        return ShapeType::Null;
    }
    GEOSContextHandle_t ctx = context();
    switch (GEOSGeomTypeId_r(ctx, m_geometry.get())) {
    case GEOS_POINT:
        return ShapeType::Point;
    case GEOS_MULTIPOINT:
        return ShapeType::Multipoint;
    case GEOS_LINESTRING:
    case GEOS_LINEARRING:
    case GEOS_MULTILINESTRING:
        return ShapeType::Polyline;
    case GEOS_POLYGON:
    case GEOS_MULTIPOLYGON:
        return ShapeType::Polygon;
    default:
        if (isEmpty()) {
            return ShapeType::Null;
        }
        switch (GEOSGeom_getDimensions_r(ctx, m_geometry.get())) {
        case 0:
            return ShapeType::Multipoint;
        case 1:
            return ShapeType::Polyline;
        default:
            return ShapeType::Polygon;
        }
    }
}

bool Geometry::isEmpty() const
{
    return !m_geometry ||
           checkPredicate(GEOSisEmpty_r(context(), m_geometry.get()), "cannot test emptiness");
}

Envelope Geometry::envelope() const
{
    if (isEmpty()) {
        return {};
    }
    double xmin = 0, ymin = 0, xmax = 0, ymax = 0;
    if (!GEOSGeom_getExtent_r(context(), m_geometry.get(), &xmin, &ymin, &xmax, &ymax)) {
        geos::fail("cannot compute an envelope");
    }
    return {xmin, ymin, xmax, ymax};
}

std::vector<std::vector<Point>> Geometry::parts() const
{
    std::vector<std::vector<Point>> result;
    if (m_geometry) {
        appendParts(m_geometry.get(), result);
    }
    return result;
}

std::size_t Geometry::pointCount() const
{
    if (isEmpty()) {
        return 0;
    }
    const int count = GEOSGetNumCoordinates_r(context(), m_geometry.get());
    if (count < 0) {
        geos::fail("cannot count vertices");
    }
    return static_cast<std::size_t>(count);
}

Point Geometry::firstPoint() const
{
    if (!m_geometry) {
        failNull("cannot take the first point");
    }
    const auto p = firstCoordinate(m_geometry.get());
    if (!p) {
        failNull("cannot take the first point");
    }
    return *p;
}

double Geometry::area() const
{
    double value = 0.0;
    if (m_geometry && !GEOSArea_r(context(), m_geometry.get(), &value)) {
        geos::fail("cannot compute an area");
    }
    return value;
}

double Geometry::length() const
{
    double value = 0.0;
    if (m_geometry && !GEOSLength_r(context(), m_geometry.get(), &value)) {
        geos::fail("cannot compute a length");
    }
    return value;
}

bool Geometry::intersects(const Geometry& other) const
{
    return m_geometry && other.m_geometry &&
           checkPredicate(GEOSIntersects_r(context(), m_geometry.get(), other.m_geometry.get()),
                          "cannot test intersection");
}

bool Geometry::contains(const Geometry& other) const
{
    return m_geometry && other.m_geometry &&
           checkPredicate(GEOSContains_r(context(), m_geometry.get(), other.m_geometry.get()),
                          "cannot test containment");
}

bool Geometry::touches(const Geometry& other) const
{
    return m_geometry && other.m_geometry &&
           checkPredicate(GEOSTouches_r(context(), m_geometry.get(), other.m_geometry.get()),
                          "cannot test touching");
}

bool Geometry::within(const Geometry& other) const
{
    return m_geometry && other.m_geometry &&
           checkPredicate(GEOSWithin_r(context(), m_geometry.get(), other.m_geometry.get()),
                          "cannot test containment");
}

double Geometry::distance(const Geometry& other) const
{
    if (isEmpty() || other.isEmpty()) {
        return std::numeric_limits<double>::infinity();
    }
    double value = 0.0;
    if (!GEOSDistance_r(context(), m_geometry.get(), other.m_geometry.get(), &value)) {
        geos::fail("cannot compute a distance");
    }
    return value;
}

Geometry Geometry::buffer(double distance, int quadrantSegments) const
{
    if (!m_geometry) {
        return {};
    }
    return adopt(check(GEOSBuffer_r(context(), m_geometry.get(), distance, quadrantSegments),
                       "cannot buffer a shape"));
}

Geometry Geometry::intersection(const Geometry& other) const
{
    if (!m_geometry || !other.m_geometry) {
        return {};
    }
    return adopt(check(GEOSIntersection_r(context(), m_geometry.get(), other.m_geometry.get()),
                       "cannot intersect shapes"));
}

Geometry Geometry::unionWith(const Geometry& other) const
{
    if (!m_geometry) {
        return other;
    }
    if (!other.m_geometry) {
        return *this;
    }
    return adopt(check(GEOSUnion_r(context(), m_geometry.get(), other.m_geometry.get()),
                       "cannot unite shapes"));
}

Geometry Geometry::difference(const Geometry& other) const
{
    if (!m_geometry || !other.m_geometry) {
        return *this;
    }
    return adopt(check(GEOSDifference_r(context(), m_geometry.get(), other.m_geometry.get()),
                       "cannot subtract shapes"));
}

Geometry Geometry::clipToEnvelope(const Envelope& box) const
{
    if (!m_geometry) {
        return {};
    }
    if (box.isEmpty()) {
        return adopt(check(GEOSGeom_createEmptyCollection_r(context(), GEOS_GEOMETRYCOLLECTION),
                           "cannot build a collection"));
    }
    // A box taken from a feature lying on its edge (a point, a straight line) must still meet
    // it; the margin lies outside the feature, so the exact overlay that follows removes it.
    const double scale = std::max({std::abs(box.xmin()), std::abs(box.xmax()),
                                   std::abs(box.ymin()), std::abs(box.ymax()), box.width(),
                                   box.height(), 1.0});
    const Envelope cut = box.expandedBy(scale * 1e-9);
    return adopt(check(GEOSClipByRect_r(context(), m_geometry.get(), cut.xmin(), cut.ymin(),
                                        cut.xmax(), cut.ymax()),
                       "cannot clip a shape to a rectangle"));
}

Point Geometry::nearestPoint(const Point& p) const
{
    if (isEmpty()) {
        failNull("cannot find the nearest point");
    }
    GEOSContextHandle_t ctx = context();
    GeometryPtr boundary;
    const GEOSGeometry* target = m_geometry.get();
    if (type() == ShapeType::Polygon) {
        boundary.reset(check(GEOSBoundary_r(ctx, target), "cannot find the nearest point"));
        target = boundary.get();
    }
    const GeometryPtr from(
        check(GEOSGeom_createPointFromXY_r(ctx, p.x, p.y), "cannot build a point"));
    const geos::CoordSeqPtr nearest(
        check(GEOSNearestPoints_r(ctx, target, from.get()), "cannot find the nearest point"));
    Point result;
    if (!GEOSCoordSeq_getXY_r(ctx, nearest.get(), 0, &result.x, &result.y)) {
        geos::fail("cannot find the nearest point");
    }
    return result;
}

Point Geometry::interiorPoint() const
{
    if (isEmpty()) {
        failNull("cannot find a point inside");
    }
    const GeometryPtr point(
        check(GEOSPointOnSurface_r(context(), m_geometry.get()), "cannot find a point inside"));
    Point result;
    if (!GEOSGeomGetX_r(context(), point.get(), &result.x) ||
        !GEOSGeomGetY_r(context(), point.get(), &result.y)) {
        geos::fail("cannot find a point inside");
    }
    return result;
}

Geometry Geometry::makeValid() const
{
    if (!m_geometry || isValid()) {
        return *this;
    }
    GEOSContextHandle_t ctx = context();
    const std::unique_ptr<GEOSMakeValidParams, void (*)(GEOSMakeValidParams*)> params(
        check(GEOSMakeValidParams_create_r(ctx), "cannot repair a shape"),
        [](GEOSMakeValidParams* p) { GEOSMakeValidParams_destroy_r(context(), p); });
    // The structure method keeps the area a polygon's rings enclose, and drops what collapses
    // to lines or points.
    GEOSMakeValidParams_setMethod_r(ctx, params.get(), GEOS_MAKE_VALID_STRUCTURE);
    GEOSMakeValidParams_setKeepCollapsed_r(ctx, params.get(), 0);
    Geometry repaired = adopt(check(GEOSMakeValidWithParams_r(ctx, m_geometry.get(), params.get()),
                                    "cannot repair a shape"));
    const ShapeType original = type();
    return original == ShapeType::Null ? repaired : repaired.asShapeOf(original);
}

bool Geometry::isValid() const
{
    return m_geometry &&
           checkPredicate(GEOSisValid_r(context(), m_geometry.get()), "cannot test validity");
}

Geometry Geometry::asShapeOf(ShapeType type) const
{
    if (!m_geometry || type == ShapeType::Null) {
        return {};
    }
    GEOSContextHandle_t ctx = context();
    const Kind kind = kindOf(type);
    const int own = GEOSGeomTypeId_r(ctx, m_geometry.get());
    if ((own == kind.single && type != ShapeType::Multipoint) ||
        (own == kind.multi && type != ShapeType::Point)) {
        return *this;
    }
    std::vector<GeometryPtr> members;
    collectMembers(m_geometry.get(), kind.single, members);
    if (members.empty()) {
        return adopt(emptyOf(type).release());
    }
    if (members.size() == 1 && type != ShapeType::Multipoint) {
        return adopt(members.front().release());
    }
    return adopt(makeCollection(kind.multi, std::move(members)).release());
}

std::string Geometry::toWkt(int decimals) const
{
    if (!m_geometry) {
        return {};
    }
    GEOSContextHandle_t ctx = context();
    const std::unique_ptr<GEOSWKTWriter, void (*)(GEOSWKTWriter*)> writer(
        check(GEOSWKTWriter_create_r(ctx), "cannot write WKT"),
        [](GEOSWKTWriter* w) { GEOSWKTWriter_destroy_r(context(), w); });
    GEOSWKTWriter_setTrim_r(ctx, writer.get(), 1);
    GEOSWKTWriter_setOutputDimension_r(ctx, writer.get(), 2);
    if (decimals >= 0) {
        GEOSWKTWriter_setRoundingPrecision_r(ctx, writer.get(), decimals);
    }
    const std::unique_ptr<char, geos::BufferDeleter> text(
        check(GEOSWKTWriter_write_r(ctx, writer.get(), m_geometry.get()), "cannot write WKT"));
    return std::string(text.get());
}

std::vector<unsigned char> Geometry::toWkb() const
{
    if (!m_geometry) {
        return {};
    }
    std::size_t size = 0;
    const std::unique_ptr<unsigned char, geos::BufferDeleter> bytes(
        check(GEOSWKBWriter_write_r(context(), geos::wkbWriter(), m_geometry.get(), &size),
              "cannot write WKB"));
    return std::vector<unsigned char>(bytes.get(), bytes.get() + size);
}

bool Geometry::equalsExact(const Geometry& other, double tolerance) const
{
    if (!m_geometry || !other.m_geometry) {
        return !m_geometry && !other.m_geometry;
    }
    return checkPredicate(
        GEOSEqualsExact_r(context(), m_geometry.get(), other.m_geometry.get(), tolerance),
        "cannot compare shapes");
}

} // namespace brevant::platform::geometry
