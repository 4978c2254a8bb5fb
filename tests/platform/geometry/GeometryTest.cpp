#include "platform/geometry/Geometry.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geometry/PreparedGeometry.h"
#include "platform/geometry/SpatialReference.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>

namespace brevant::platform::geometry {
namespace {

namespace ErrorNumber = automation::ErrorNumber;
using automation::PlatformError;

int32_t errorOf(const std::function<void()>& body, std::string* source = nullptr)
{
    try {
        body();
    } catch (const PlatformError& e) {
        if (source) {
            *source = e.source();
        }
        return e.number();
    }
    return 0;
}

std::vector<Point> square(double x0, double y0, double size, bool clockwise = false)
{
    std::vector<Point> ring{{x0, y0}, {x0 + size, y0}, {x0 + size, y0 + size}, {x0, y0 + size}};
    if (clockwise) {
        std::reverse(ring.begin(), ring.end());
    }
    return ring;
}

TEST(EnvelopeTest, EmptyIsNeutralForUnionAndAbsorbingForIntersection)
{
    const Envelope box(0, 0, 10, 5);
    EXPECT_EQ(Envelope().united(box), box);
    EXPECT_EQ(box.united(Envelope()), box);
    EXPECT_TRUE(box.intersected(Envelope()).isEmpty());
    EXPECT_FALSE(Envelope().contains(Point{0, 0}));
    EXPECT_FALSE(box.contains(Envelope()));
    EXPECT_EQ(Envelope().width(), 0.0);
    EXPECT_TRUE(Envelope().expandedBy(1.0).isEmpty());
}

TEST(EnvelopeTest, UnionIntersectionAndTouching)
{
    const Envelope a(0, 0, 10, 10);
    EXPECT_EQ(a.united(Envelope(5, -2, 12, 3)), Envelope(0, -2, 12, 10));
    EXPECT_EQ(a.intersected(Envelope(5, 5, 20, 20)), Envelope(5, 5, 10, 10));
    EXPECT_TRUE(a.intersected(Envelope(11, 0, 12, 1)).isEmpty());
    EXPECT_TRUE(a.intersects(Envelope(10, 10, 12, 12))) << "touching corners meet";
    EXPECT_EQ(a.intersected(Envelope(10, 0, 12, 1)), Envelope(10, 0, 10, 1));
    EXPECT_TRUE(a.contains(Point{10, 0}));
    EXPECT_TRUE(a.contains(Envelope(0, 0, 10, 10)));
    EXPECT_FALSE(a.contains(Envelope(0, 0, 10.5, 10)));
    EXPECT_EQ(Envelope(10, 10, 0, 0), a) << "corners given in any order";
    EXPECT_TRUE(a.expandedBy(-6).isEmpty());
    EXPECT_EQ(a.expandedBy(1).center(), (Point{5, 5}));

    Envelope grown;
    grown.expandToInclude({3, 4});
    EXPECT_EQ(grown, Envelope(3, 4, 3, 4));
    grown.expandToInclude({-1, 8});
    EXPECT_EQ(grown, Envelope(-1, 4, 3, 8));
}

TEST(GeometryConstruction, RingsNestByContainmentWhateverTheirOrderAndOrientation)
{
    // A hole given first, its shell after it, an island in the hole and a separate shell.
    const Geometry shape = Geometry::polygon({square(2, 2, 6, true), square(0, 0, 10),
                                              square(4, 4, 2), square(20, 0, 5, true)});
    EXPECT_EQ(shape.type(), ShapeType::Polygon);
    EXPECT_TRUE(shape.isValid());
    EXPECT_DOUBLE_EQ(shape.area(), 100 - 36 + 4 + 25);
    const auto parts = shape.parts();
    ASSERT_EQ(parts.size(), 4u);
    EXPECT_EQ(parts[0][0], (Point{0, 0})) << "outer ring first";
    EXPECT_EQ(parts[1][0], (Point{2, 8})) << "then its hole";
    EXPECT_EQ(parts[2][0], (Point{4, 4})) << "the island is an outer ring of its own";
    EXPECT_EQ(parts[3][0], (Point{20, 5}));
    for (const auto& ring : parts) {
        EXPECT_EQ(ring.front(), ring.back()) << "rings come back closed";
    }
    EXPECT_EQ(shape.pointCount(), 20u);
    EXPECT_FALSE(shape.contains(Geometry::point({3, 3}))) << "in the hole";
    EXPECT_TRUE(shape.contains(Geometry::point({5, 5}))) << "on the island";
}

TEST(GeometryConstruction, HoleTouchingItsShellStaysAHole)
{
    const Geometry shape =
        Geometry::polygon({square(0, 0, 10), {{0, 5}, {5, 2}, {5, 8}, {0, 5}}});
    EXPECT_EQ(shape.parts().size(), 2u);
    EXPECT_DOUBLE_EQ(shape.area(), 100 - 15);
}

TEST(GeometryConstruction, PointsAndPaths)
{
    const Geometry many = Geometry::multipoint(std::vector<Point>{{1, 2}, {3, 4}, {5, 6}});
    EXPECT_EQ(many.type(), ShapeType::Multipoint);
    ASSERT_EQ(many.parts().size(), 1u);
    EXPECT_EQ(many.parts()[0].size(), 3u);
    EXPECT_EQ(many.firstPoint(), (Point{1, 2}));
    EXPECT_EQ(many.envelope(), Envelope(1, 2, 5, 6));

    const Geometry line = Geometry::polyline({{{0, 0}, {3, 4}}, {{10, 0}, {10, 2}, {11, 2}}});
    EXPECT_EQ(line.type(), ShapeType::Polyline);
    EXPECT_EQ(line.parts().size(), 2u);
    EXPECT_DOUBLE_EQ(line.length(), 5 + 2 + 1);
    EXPECT_EQ(line.pointCount(), 5u);
    EXPECT_EQ(Geometry::point({7, 8}).firstPoint(), (Point{7, 8}));
}

TEST(GeometryConstruction, WktAndWkbRoundTrip)
{
    const Geometry shape =
        Geometry::polygon({square(0, 0, 10), square(2, 2, 3), square(20, 0, 0.1)});
    const Geometry fromText = Geometry::fromWkt(shape.toWkt());
    EXPECT_TRUE(fromText.equalsExact(shape));
    const auto wkb = shape.toWkb();
    ASSERT_GT(wkb.size(), 5u);
    EXPECT_EQ(wkb[0], 1) << "little endian";
    EXPECT_EQ(wkb[1], 6) << "ISO multipolygon";
    EXPECT_TRUE(Geometry::fromWkb(wkb).equalsExact(shape));
    EXPECT_EQ(Geometry::point({1.5, -2}).toWkt(), "POINT (1.5 -2)");
    EXPECT_EQ(Geometry::point({1.23456, 2}).toWkt(2), "POINT (1.23 2)");
    EXPECT_TRUE(Geometry::fromWkt("LINESTRING (0 0, 1 1)").equalsExact(
        Geometry::polyline({{{0, 0}, {1, 1}}})));
}

TEST(GeometryConstruction, BadInputIsAGeosError)
{
    std::string source;
    EXPECT_EQ(errorOf([] { Geometry::fromWkt("POLYGON ((0 0, 1"); }, &source),
              ErrorNumber::GeosBase + 1);
    EXPECT_EQ(source, "GEOS");
    const std::vector<unsigned char> junk{1, 2, 3};
    EXPECT_EQ(errorOf([&] { Geometry::fromWkb(junk); }), ErrorNumber::GeosBase + 1);
    EXPECT_EQ(errorOf([] { Geometry::polygon({{{0, 0}, {1, 1}}}); }), ErrorNumber::GeosBase + 1);
}

TEST(GeometryConstruction, NullShapeBehavesAsEmpty)
{
    const Geometry none;
    const Geometry box = Geometry::polygon({square(0, 0, 1)});
    EXPECT_EQ(none.type(), ShapeType::Null);
    EXPECT_TRUE(none.isEmpty());
    EXPECT_TRUE(none.envelope().isEmpty());
    EXPECT_TRUE(none.parts().empty());
    EXPECT_FALSE(box.intersects(none));
    EXPECT_FALSE(none.contains(box));
    EXPECT_TRUE(std::isinf(box.distance(none)));
    EXPECT_TRUE(box.intersection(none).isNull());
    EXPECT_TRUE(none.unionWith(box).equalsExact(box));
    EXPECT_TRUE(none.equalsExact(Geometry()));
    EXPECT_EQ(errorOf([&] { none.firstPoint(); }), ErrorNumber::InvalidUseOfNull);
    EXPECT_EQ(errorOf([] { Geometry::polygon({}).firstPoint(); }), ErrorNumber::InvalidUseOfNull);
    EXPECT_TRUE(Geometry::unionAll({}).isNull());
}

TEST(GeometryOperations, PredicatesFollowGeosBoundaryRules)
{
    const Geometry box = Geometry::polygon({square(0, 0, 10)});
    const Geometry onEdge = Geometry::point({0, 5});
    EXPECT_FALSE(box.contains(onEdge));
    EXPECT_TRUE(box.intersects(onEdge));
    EXPECT_TRUE(box.touches(onEdge));
    EXPECT_TRUE(box.contains(Geometry::point({5, 5})));
    EXPECT_TRUE(Geometry::polygon({square(1, 1, 2)}).within(box));

    const PreparedGeometry prepared(box);
    EXPECT_TRUE(prepared.covers(onEdge));
    EXPECT_FALSE(prepared.containsProperly(onEdge));
    EXPECT_TRUE(prepared.containsProperly(Geometry::point({5, 5})));
    EXPECT_FALSE(prepared.intersects(Geometry::point({11, 5})));
    EXPECT_FALSE(PreparedGeometry(Geometry()).intersects(box));
}

TEST(GeometryOperations, DistanceBufferAndNearestPoint)
{
    const Geometry a = Geometry::polygon({square(0, 0, 1)});
    EXPECT_DOUBLE_EQ(a.distance(Geometry::polygon({square(4, 5, 1)})), 5.0);
    EXPECT_EQ(a.distance(Geometry::point({0.5, 0.5})), 0.0);

    // Eight segments a quadrant make a regular 32-gon.
    const Geometry disc = Geometry::point({0, 0}).buffer(2.0);
    EXPECT_NEAR(disc.area(), 0.5 * 32 * 4 * std::sin(2 * std::numbers::pi / 32), 1e-9);
    EXPECT_NEAR(a.buffer(1.0, 32).area(), 1 + 4 + std::numbers::pi, 0.01);

    const Geometry path = Geometry::polyline({{{0, 0}, {10, 0}, {10, 10}}});
    EXPECT_EQ(path.nearestPoint({4, 3}), (Point{4, 0}));
    EXPECT_EQ(path.nearestPoint({13, -2}), (Point{10, 0}));
    EXPECT_EQ(path.nearestPoint({12, 7}), (Point{10, 7}));
    EXPECT_EQ(Geometry::polygon({square(0, 0, 10)}).nearestPoint({8, 5}), (Point{10, 5}))
        << "a polygon's nearest point is on its boundary even from inside";

    // A C shape's centre lies outside it; its interior point must not.
    const Geometry c = Geometry::polygon({{{0, 0}, {10, 0}, {10, 2}, {2, 2}, {2, 8}, {10, 8},
                                           {10, 10}, {0, 10}}});
    EXPECT_TRUE(c.contains(Geometry::point(c.interiorPoint())));
    EXPECT_EQ(path.interiorPoint(), (Point{10, 0}));
    EXPECT_THROW(Geometry().interiorPoint(), automation::PlatformError);
}

TEST(GeometryOperations, OverlayAndClip)
{
    const Geometry a = Geometry::polygon({square(0, 0, 10)});
    const Geometry b = Geometry::polygon({square(5, 5, 10)});
    EXPECT_DOUBLE_EQ(a.intersection(b).area(), 25);
    EXPECT_DOUBLE_EQ(a.unionWith(b).area(), 175);
    EXPECT_DOUBLE_EQ(a.difference(b).area(), 75);
    const std::vector<Geometry> all{a, Geometry(), b};
    EXPECT_DOUBLE_EQ(Geometry::unionAll(all).area(), 175);

    const Geometry clipped = a.clipToEnvelope(Envelope(-5, 2, 5, 4));
    EXPECT_NEAR(clipped.area(), 10, 1e-6);
    EXPECT_TRUE(a.clipToEnvelope(Envelope()).isEmpty());
    // A point on the edge has a zero-size box, and the pre-cut must still reach it.
    const Geometry onEdge = Geometry::point({10, 3});
    const Geometry kept = a.clipToEnvelope(onEdge.envelope()).intersection(onEdge);
    EXPECT_TRUE(kept.asShapeOf(ShapeType::Point).equalsExact(onEdge));
}

TEST(GeometryOperations, AsShapeOfKeepsTheWantedDimension)
{
    const Geometry mixed = Geometry::fromWkt(
        "GEOMETRYCOLLECTION (POINT (9 9), POLYGON ((0 0, 1 0, 1 1, 0 0)), "
        "LINESTRING (5 5, 6 6), POLYGON ((3 0, 4 0, 4 1, 3 0)))");
    EXPECT_EQ(mixed.type(), ShapeType::Polygon);
    const Geometry polygons = mixed.asShapeOf(ShapeType::Polygon);
    EXPECT_EQ(polygons.toWkt(), "MULTIPOLYGON (((0 0, 1 0, 1 1, 0 0)), ((3 0, 4 0, 4 1, 3 0)))");
    EXPECT_EQ(mixed.asShapeOf(ShapeType::Polyline).toWkt(), "LINESTRING (5 5, 6 6)");
    EXPECT_EQ(mixed.asShapeOf(ShapeType::Point).toWkt(), "POINT (9 9)");
    EXPECT_EQ(Geometry::point({1, 1}).asShapeOf(ShapeType::Multipoint).toWkt(),
              "MULTIPOINT (1 1)");
    const Geometry nothing = Geometry::polyline({{{0, 0}, {1, 1}}}).asShapeOf(ShapeType::Polygon);
    EXPECT_EQ(nothing.type(), ShapeType::Polygon);
    EXPECT_TRUE(nothing.isEmpty());
}

TEST(GeometryOperations, MakeValidSplitsABowTie)
{
    const Geometry bowTie = Geometry::polygon({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}});
    EXPECT_FALSE(bowTie.isValid());
    const Geometry repaired = bowTie.makeValid();
    EXPECT_TRUE(repaired.isValid());
    EXPECT_EQ(repaired.type(), ShapeType::Polygon);
    EXPECT_EQ(repaired.parts().size(), 2u);
    EXPECT_DOUBLE_EQ(repaired.area(), 2.0);

    const Geometry fine = Geometry::polygon({square(0, 0, 1)});
    EXPECT_EQ(fine.makeValid().geos(), fine.geos()) << "valid shapes pass unchanged";
}

TEST(SpatialReferenceTest, NamesFollowTheHostsConvention)
{
    const SpatialReference nad83 = SpatialReference::nad83();
    EXPECT_EQ(nad83.epsg(), 4269);
    EXPECT_EQ(nad83.name(), "GCS_North_American_1983");
    EXPECT_TRUE(nad83.isGeographic());
    EXPECT_FALSE(nad83.isUnknown());
    EXPECT_EQ(SpatialReference::fromEpsg(4326).name(), "GCS_WGS_1984");
    EXPECT_EQ(SpatialReference::fromEpsg(4267).name(), "GCS_North_American_Datum_1927");
    const SpatialReference utm = SpatialReference::fromEpsg(26915);
    EXPECT_FALSE(utm.isGeographic());
    EXPECT_EQ(utm.name(), "NAD83 / UTM zone 15N");

    const SpatialReference custom = SpatialReference::fromWkt(
        R"(GEOGCS["GCS_Foo",DATUM["D_My Datum",SPHEROID["GRS_1980",6378137.0,298.257222101]],)"
        R"(PRIMEM["Greenwich",0.0],UNIT["Degree",0.0174532925199433]])");
    EXPECT_EQ(custom.name(), "GCS_My_Datum");
}

TEST(SpatialReferenceTest, DefinitionsAreIdentifiedAndCompared)
{
    const SpatialReference esri = SpatialReference::fromWkt(
        R"(GEOGCS["GCS_North_American_1983",DATUM["D_North_American_1983",)"
        R"(SPHEROID["GRS_1980",6378137.0,298.257222101]],PRIMEM["Greenwich",0.0],)"
        R"(UNIT["Degree",0.0174532925199433]])");
    EXPECT_EQ(esri.epsg(), 4269);
    EXPECT_EQ(esri.name(), "GCS_North_American_1983");
    EXPECT_TRUE(esri.sameAs(SpatialReference::nad83()));
    EXPECT_TRUE(SpatialReference::fromWkt(SpatialReference::fromEpsg(26915).wkt())
                    .sameAs(SpatialReference::fromEpsg(26915)));
    EXPECT_FALSE(SpatialReference::nad83().sameAs(SpatialReference::fromEpsg(4326)));
    EXPECT_FALSE(SpatialReference::nad83().sameAs(SpatialReference()));
    EXPECT_TRUE(SpatialReference().sameAs(SpatialReference()));

    std::string source;
    const int32_t number = errorOf([] { SpatialReference::fromEpsg(999999); }, &source);
    EXPECT_EQ(source, "GDAL");
    EXPECT_GT(number, ErrorNumber::GdalBase);
    EXPECT_LT(number, ErrorNumber::SqliteBase);
    EXPECT_NE(errorOf([] { SpatialReference::fromWkt("not a coordinate system"); }), 0);
}

} // namespace
} // namespace brevant::platform::geometry
