#include "platform/geometry/FeatureIndex.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace brevant::platform::geometry {
namespace {

std::vector<Point> square(double x0, double y0, double size)
{
    return {{x0, y0}, {x0 + size, y0}, {x0 + size, y0 + size}, {x0, y0 + size}};
}

// 0: a square with a hole; 1: a square across a gap from it; 2 and 3: overlapping squares;
// 4: two separate squares as one shape; 5: null; 6: empty.
class FeatureIndexCases : public ::testing::Test {
protected:
    FeatureIndex index{{Geometry::polygon({square(0, 0, 10), square(4, 4, 2)}),
                        Geometry::polygon({square(20, 0, 10)}),
                        Geometry::polygon({square(45, 0, 10)}),
                        Geometry::polygon({square(40, 0, 10)}),
                        Geometry::polygon({square(0, 40, 5), square(20, 40, 5)}), Geometry(),
                        Geometry::polygon({})}};

    void expectNearest(Point p, std::size_t shape, double distance)
    {
        const auto found = index.nearest(p);
        ASSERT_TRUE(found) << p.x << " " << p.y;
        EXPECT_EQ(found->index, shape) << p.x << " " << p.y;
        EXPECT_DOUBLE_EQ(found->distance, distance) << p.x << " " << p.y;
    }
};

TEST_F(FeatureIndexCases, InsideInHoleAndInGap)
{
    EXPECT_EQ(index.size(), 7u);
    EXPECT_EQ(index.containing(Point{2, 2}), 0u);
    expectNearest({2, 2}, 0, 0);
    EXPECT_EQ(index.containing(Point{5, 5.5}), std::nullopt) << "in the hole";
    expectNearest({5, 5.5}, 0, 0.5);
    EXPECT_EQ(index.containing(Point{16, 5}), std::nullopt);
    expectNearest({16, 5}, 1, 4);
    EXPECT_EQ(index.containing(Point{22, 42}), 4u) << "second part of a multipolygon";
    expectNearest({12, 42}, 4, 7);
    expectNearest({-3, -4}, 0, 5);
}

TEST_F(FeatureIndexCases, BoundaryIsNotContainedButAtDistanceZero)
{
    for (Point p : {Point{0, 5}, Point{10, 10}, Point{4, 4}, Point{5, 6}, Point{30, 3}}) {
        EXPECT_EQ(index.containing(p), std::nullopt) << p.x << " " << p.y;
        expectNearest(p, p.x < 20 ? 0 : 1, 0);
    }
}

TEST_F(FeatureIndexCases, TiesGoToTheLowestPosition)
{
    EXPECT_EQ(index.containing(Point{47, 5}), 2u) << "both overlapping squares hold it";
    EXPECT_EQ(index.containing(Point{42, 5}), 3u);
    EXPECT_EQ(index.containing(Point{45, 5}), 3u) << "on 2's edge, inside 3";
    expectNearest({15, 5}, 0, 5);
    expectNearest({47, 12}, 2, 2);
    expectNearest({47, 5}, 2, 0);
    expectNearest({45, 5}, 2, 0); // on 2's edge and inside 3: both at zero
}

TEST_F(FeatureIndexCases, CandidatesAreAscendingAndTouchingCounts)
{
    EXPECT_EQ(index.candidates(Envelope(10, 0, 20, 1)), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(index.candidates(Envelope(41, 0, 46, 1)), (std::vector<std::size_t>{2, 3}));
    EXPECT_EQ(index.candidates(Envelope(6, 41, 19, 42)), (std::vector<std::size_t>{4}))
        << "the envelope of a multipolygon spans its gap";
    EXPECT_TRUE(index.candidates(Envelope(100, 100, 200, 200)).empty());
    EXPECT_TRUE(index.candidates(Envelope()).empty());
}

TEST_F(FeatureIndexCases, ShapeQueries)
{
    EXPECT_EQ(index.containing(Geometry::polygon({square(1, 1, 2)})), 0u);
    EXPECT_EQ(index.containing(Geometry::polygon({square(3, 3, 2)})), std::nullopt)
        << "overlaps the hole";
    EXPECT_EQ(index.containing(Geometry::polyline({{{46, 1}, {49, 9}}})), 2u);
    EXPECT_EQ(index.containing(Geometry::point({5, 6})), std::nullopt);
    EXPECT_EQ(index.containing(Geometry()), std::nullopt);

    const auto inHole = index.nearest(Geometry::polygon({square(4.5, 4.5, 1)}));
    ASSERT_TRUE(inHole);
    EXPECT_EQ(inHole->index, 0u);
    EXPECT_DOUBLE_EQ(inHole->distance, 0.5);
    const auto inGap = index.nearest(Geometry::polyline({{{15, 2}, {17, 2}}}));
    ASSERT_TRUE(inGap);
    EXPECT_EQ(inGap->index, 1u);
    EXPECT_DOUBLE_EQ(inGap->distance, 3);
    const auto overlapping = index.nearest(Geometry::polygon({square(8, 8, 4)}));
    ASSERT_TRUE(overlapping);
    EXPECT_EQ(overlapping->index, 0u);
    EXPECT_EQ(overlapping->distance, 0);
    EXPECT_EQ(index.nearest(Geometry::polygon({})), std::nullopt);
}

TEST(FeatureIndexSources, EmptyNullLinesAndPoints)
{
    const FeatureIndex none({});
    EXPECT_EQ(none.containing(Point{0, 0}), std::nullopt);
    EXPECT_EQ(none.nearest(Point{0, 0}), std::nullopt);
    const FeatureIndex onlyNull({Geometry(), Geometry::polygon({})});
    EXPECT_EQ(onlyNull.size(), 2u);
    EXPECT_EQ(onlyNull.nearest(Point{0, 0}), std::nullopt);
    EXPECT_TRUE(onlyNull.candidates(Envelope(-1e9, -1e9, 1e9, 1e9)).empty());

    const FeatureIndex others({Geometry::polyline({{{0, 0}, {10, 0}}}),
                               Geometry::multipoint(std::vector<Point>{{20, 0}, {30, 0}}),
                               Geometry::fromWkt("GEOMETRYCOLLECTION (POINT (50 0))")});
    EXPECT_EQ(others.containing(Point{5, 0}), 0u) << "on the line's interior";
    EXPECT_EQ(others.containing(Point{0, 0}), std::nullopt) << "a line's end is its boundary";
    EXPECT_EQ(others.containing(Point{30, 0}), 1u);
    EXPECT_EQ(others.containing(Point{50, 0}), 2u);
    EXPECT_EQ(others.nearest(Point{5, 3})->distance, 3);
    EXPECT_EQ(others.nearest(Point{27, 4})->index, 1u);
    EXPECT_EQ(others.nearest(Point{27, 4})->distance, 5);
    EXPECT_EQ(others.nearest(Point{47, 4})->index, 2u);
    EXPECT_EQ(others.nearest(Point{47, 4})->distance, 5);
}

// ---- Differential test: the index against a brute-force scan over all shapes with GEOS.

class RandomShapes {
public:
    explicit RandomShapes(std::uint64_t seed) : m_random(seed) {}

    double uniform(double lo, double hi) { return std::uniform_real_distribution(lo, hi)(m_random); }
    std::size_t pick(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }

    // Coordinates on a 1/64 grid make every edge midpoint exactly representable and exactly on
    // its edge.
    static double snap(double v) { return std::round(v * 64) / 64; }

    std::vector<Point> star(Point center, double radius, double lo, double hi)
    {
        const int vertices = static_cast<int>(uniform(8, 40));
        const double turn = uniform(0, 1);
        std::vector<Point> ring;
        for (int i = 0; i < vertices; ++i) {
            const double angle = 2 * std::numbers::pi * (i + turn) / vertices;
            const double r = radius * uniform(lo, hi);
            ring.push_back(
                {snap(center.x + r * std::cos(angle)), snap(center.y + r * std::sin(angle))});
        }
        return ring;
    }

    Geometry shape(int kind)
    {
        for (;;) {
            const Point center{uniform(0, 1000), uniform(0, 1000)};
            const double radius = uniform(5, 30);
            std::vector<std::vector<Point>> rings{star(center, radius, 0.6, 1.0)};
            if (kind == 1 || kind == 3) {
                rings.push_back(star(center, radius, 0.1, 0.45));
            }
            if (kind >= 2) {
                const double angle = uniform(0, 2 * std::numbers::pi);
                const Point other{center.x + 2.5 * radius * std::cos(angle),
                                  center.y + 2.5 * radius * std::sin(angle)};
                rings.push_back(star(other, radius, 0.6, 1.0));
            }
            Geometry made = Geometry::polygon(rings);
            if (made.isValid()) {
                return made;
            }
        }
    }

private:
    std::mt19937_64 m_random;
};

TEST(FeatureIndexDifferential, PointAnswersMatchABruteForceGeosScan)
{
    RandomShapes random(20240611);
    std::vector<Geometry> shapes;
    for (int i = 0; i < 240; ++i) {
        shapes.push_back(random.shape(i % 4));
    }
    const FeatureIndex index(shapes);

    std::vector<Point> points;
    for (int i = 0; i < 2400; ++i) {
        if (i % 4 == 0) {
            points.push_back({random.uniform(-50, 1050), random.uniform(-50, 1050)});
            continue;
        }
        const auto parts = shapes[random.pick(shapes.size())].parts();
        const auto& ring = parts[random.pick(parts.size())];
        const std::size_t k = random.pick(ring.size() - 1);
        const Point a = ring[k];
        const Point b = ring[k + 1];
        if (i % 4 == 1) {
            points.push_back(a);
        } else if (i % 4 == 2) {
            points.push_back({(a.x + b.x) / 2, (a.y + b.y) / 2});
        } else {
            const double t = random.uniform(0, 1);
            points.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
        }
    }

    int contained = 0;
    int onBoundary = 0;
    for (const Point& p : points) {
        const Geometry point = Geometry::point(p);
        std::optional<std::size_t> holder;
        double closest = std::numeric_limits<double>::infinity();
        std::vector<double> distances;
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            if (!holder && shapes[i].contains(point)) {
                holder = i;
            }
            distances.push_back(shapes[i].distance(point));
            closest = std::min(closest, distances.back());
        }
        // Random shapes share no edges, so true ties are exact zeros; a near-boundary point
        // can be 1e-14 from one shape and inside another.
        const auto nearest = static_cast<std::size_t>(
            std::find(distances.begin(), distances.end(), closest) - distances.begin());
        contained += holder.has_value();
        onBoundary += !holder && closest == 0;

        const std::string where = std::to_string(p.x) + " " + std::to_string(p.y);
        ASSERT_EQ(index.containing(p), holder) << where;
        ASSERT_EQ(index.containing(point), holder) << where;
        const auto found = index.nearest(p);
        ASSERT_TRUE(found) << where;
        ASSERT_EQ(found->index, nearest) << where;
        ASSERT_NEAR(found->distance, closest, 1e-9) << where;
    }
    // The point mix must exercise every branch.
    EXPECT_GT(contained, 300);
    EXPECT_GT(onBoundary, 300);
    EXPECT_GT(static_cast<int>(points.size()) - contained - onBoundary, 300);
}

TEST(FeatureIndexDifferential, ShapeAnswersMatchABruteForceGeosScan)
{
    RandomShapes random(7);
    std::vector<Geometry> shapes;
    for (int i = 0; i < 120; ++i) {
        shapes.push_back(random.shape(i % 4));
    }
    const FeatureIndex index(shapes);
    for (int i = 0; i < 300; ++i) {
        const Point c{random.uniform(0, 1000), random.uniform(0, 1000)};
        const double size = random.uniform(0.5, 8);
        const Geometry target = i % 2 ? Geometry::polygon({square(c.x, c.y, size)})
                                      : Geometry::polyline({{c, {c.x + size, c.y - size}}});
        std::optional<std::size_t> holder;
        double closest = std::numeric_limits<double>::infinity();
        std::size_t nearest = 0;
        for (std::size_t j = 0; j < shapes.size(); ++j) {
            if (!holder && shapes[j].contains(target)) {
                holder = j;
            }
            if (const double d = shapes[j].distance(target); d < closest - 1e-9) {
                closest = d;
                nearest = j;
            }
        }
        ASSERT_EQ(index.containing(target), holder) << target.toWkt();
        const auto found = index.nearest(target);
        ASSERT_TRUE(found);
        ASSERT_EQ(found->index, nearest) << target.toWkt();
        ASSERT_NEAR(found->distance, closest, 1e-9) << target.toWkt();
    }
}

} // namespace
} // namespace brevant::platform::geometry
