#include "platform/carto/DisplayTransformation.h"

#include "platform/carto/EnvelopeFeedback.h"
#include "platform/carto/ScreenDisplay.h"

#include <gtest/gtest.h>

namespace brevant::platform::carto {
namespace {

using geometry::Envelope;
using geometry::Point;

TEST(DisplayTransformations, MapAndDevicePointsRoundTrip)
{
    DisplayTransformation transformation;
    transformation.setDeviceFrame(400, 200);
    transformation.setVisibleBounds(Envelope(-123, 37, -121, 38));
    const DevicePoint corner = transformation.fromMapPoint({-123, 38});
    EXPECT_NEAR(corner.x, 0.0, 1e-9);
    EXPECT_NEAR(corner.y, 0.0, 1e-9);
    for (const Point p : {Point{-122.5, 37.75}, Point{-121.01, 37.02}}) {
        const DevicePoint device = transformation.fromMapPoint(p);
        const Point back = transformation.toMapPoint(device.x, device.y);
        EXPECT_NEAR(back.x, p.x, 1e-9);
        EXPECT_NEAR(back.y, p.y, 1e-9);
    }
    // y grows downwards on the device.
    EXPECT_LT(transformation.fromMapPoint({-122, 37.9}).y,
              transformation.fromMapPoint({-122, 37.1}).y);
}

TEST(DisplayTransformations, BoundsGrowToTheDevicesShapeAboutTheirCentre)
{
    DisplayTransformation transformation;
    transformation.setDeviceFrame(200, 100);
    transformation.setVisibleBounds(Envelope(0, 0, 10, 10));
    EXPECT_EQ(transformation.fittedBounds(), Envelope(-5, 0, 15, 10));
    transformation.setVisibleBounds(Envelope(0, 0, 40, 10));
    EXPECT_EQ(transformation.fittedBounds(), Envelope(0, -5, 40, 15));
}

TEST(DisplayTransformations, ScaleIsGroundOverDeviceDistance)
{
    DisplayTransformation transformation;
    transformation.setDeviceFrame(96, 96);
    transformation.setResolution(96);
    transformation.setMetersPerUnit(1.0);
    // 254 meters across one inch of screen is 1:10,000.
    transformation.setVisibleBounds(Envelope(0, 0, 254, 254));
    EXPECT_NEAR(transformation.scale(), 10000.0, 1e-6);
    transformation.setScale(5000);
    EXPECT_NEAR(transformation.visibleBounds().width(), 127.0, 1e-9);
    EXPECT_EQ(transformation.visibleBounds().center(), (Point{127, 127}));
}

TEST(ScreenDisplays, PanMovesTheBoundsWithTheMouse)
{
    ScreenDisplay screen;
    screen.displayTransformation().setDeviceFrame(100, 100);
    screen.displayTransformation().setVisibleBounds(Envelope(0, 0, 10, 10));
    screen.panStart({5, 5});
    screen.panMoveTo({6, 4});
    EXPECT_TRUE(screen.isPanning());
    EXPECT_EQ(screen.panOffset(), (DevicePoint{10, 10}));
    EXPECT_EQ(screen.displayTransformation().visibleBounds(), Envelope(0, 0, 10, 10));
    EXPECT_EQ(screen.panStop(), Envelope(-1, 1, 9, 11));
    EXPECT_EQ(screen.displayTransformation().visibleBounds(), Envelope(-1, 1, 9, 11));
    EXPECT_FALSE(screen.isPanning());
}

TEST(EnvelopeFeedbacks, GiveTheBandBetweenStartAndLastPoint)
{
    EnvelopeFeedback feedback;
    feedback.start({5, 5});
    feedback.moveTo({2, 8});
    feedback.moveTo({3, 9});
    EXPECT_EQ(feedback.stop(), Envelope(3, 5, 5, 9));
    EXPECT_FALSE(feedback.isActive());

    feedback.start({1, 1});
    feedback.moveTo({4, 1});
    const Envelope flat = feedback.stop();
    EXPECT_EQ(flat.width(), 3.0);
    EXPECT_EQ(flat.height(), 0.0);
}

} // namespace
} // namespace brevant::platform::carto
