#include "selection/MapSelectionView.h"

#include <gtest/gtest.h>

namespace brevant::selection {
namespace {

using platform::geometry::Envelope;

void expectEnvelope(const Envelope& actual, double xmin, double ymin, double xmax, double ymax)
{
    EXPECT_DOUBLE_EQ(actual.xmin(), xmin);
    EXPECT_DOUBLE_EQ(actual.ymin(), ymin);
    EXPECT_DOUBLE_EQ(actual.xmax(), xmax);
    EXPECT_DOUBLE_EQ(actual.ymax(), ymax);
}

TEST(LatLongText, LatitudeFirstInTheShortestFormRoundedHalfToEven)
{
    EXPECT_EQ(LatLongText(-122.5, 37.75), "37.75, -122.5");
    EXPECT_EQ(LatLongText(-120, 38), "38, -120");
    EXPECT_EQ(LatLongText(-121.123456789, 36.9999996), "37, -121.123457");
    // Halves go to the even neighbour, and small values stay in plain decimals.
    EXPECT_EQ(LatLongText(0.0000025, 0.0000035), "0.000004, 0.000002");
    EXPECT_EQ(LatLongText(-0.0000001, 0.0000004), "0, 0");
}

TEST(MapSelectionZoom, ClicksHalveOrDoubleTheExtentAboutThePointClicked)
{
    const Envelope extent(-124, 32, -114, 42);
    expectEnvelope(zoomInByClick(extent, {-120, 36}), -122.5, 33.5, -117.5, 38.5);
    expectEnvelope(zoomOutByClick(extent, {-120, 36}), -130, 26, -110, 46);
}

TEST(MapSelectionZoom, BandsSetOrSpreadTheExtentAndFlatBandsChangeNothing)
{
    const Envelope extent(0, 0, 10, 20);
    expectEnvelope(*zoomInByBand(Envelope(2, 4, 6, 8)), 2, 4, 6, 8);
    // The present extent comes to lie where the band was: band (2,4)-(7,14) of width 5 and
    // height 10 spreads 10 x 20 to 20 x 40 starting at (0 - 2*2, 0 - 4*2).
    expectEnvelope(*zoomOutByBand(extent, Envelope(2, 4, 7, 14)), -4, -8, 16, 32);
    EXPECT_FALSE(zoomInByBand(Envelope(2, 4, 6, 4)));
    EXPECT_FALSE(zoomOutByBand(extent, Envelope(2, 4, 2, 9)));
    EXPECT_FALSE(zoomOutByBand(extent, Envelope(2, 4, 6, 4)));
}

} // namespace
} // namespace brevant::selection
