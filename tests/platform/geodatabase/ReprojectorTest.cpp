#include "platform/geodatabase/Reprojector.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace brevant::platform::geodatabase {
namespace {

using geometry::Geometry;
using geometry::SpatialReference;

TEST(ReprojectorTest, MercatorToGeographicKeepsLongitudeFirst)
{
    const Reprojector toNad83(SpatialReference::fromEpsg(3857), SpatialReference::nad83());
    ASSERT_TRUE(toNad83.changes());
    const double radius = 6378137.0;
    const double x = -122.4 * std::numbers::pi / 180 * radius;
    const double y = radius * std::log(std::tan(std::numbers::pi / 4 + 37.8 * std::numbers::pi / 360));
    const Geometry moved = toNad83.apply(Geometry::polyline({{{x, y}, {x + 1000, y}}}));
    const auto first = moved.parts().front().front();
    EXPECT_NEAR(first.x, -122.4, 1e-6);
    EXPECT_NEAR(first.y, 37.8, 1e-6);
    EXPECT_EQ(moved.type(), geometry::ShapeType::Polyline);
}

TEST(ReprojectorTest, SameOrUnknownSystemsPassShapesThrough)
{
    const Geometry p = Geometry::point({-100, 40});
    EXPECT_FALSE(Reprojector(SpatialReference::nad83(), SpatialReference::nad83()).changes());
    EXPECT_FALSE(Reprojector(SpatialReference(), SpatialReference::nad83()).changes());
    EXPECT_TRUE(Reprojector(SpatialReference(), SpatialReference::nad83())
                    .apply(p)
                    .equalsExact(p));
}

} // namespace
} // namespace brevant::platform::geodatabase
