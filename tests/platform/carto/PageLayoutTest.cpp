#include "platform/carto/PageLayout.h"

#include "platform/automation/PlatformError.h"
#include "platform/carto/Legend.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/PictureElement.h"
#include "platform/carto/TextElement.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>

namespace brevant::platform::carto {
namespace {

TEST(PageLayouts, LandscapeTurnsThePage)
{
    PageLayout layout;
    EXPECT_EQ(layout.orientation(), PageOrientation::Portrait);
    layout.setOrientation(PageOrientation::Landscape);
    EXPECT_EQ(layout.pageWidth(), 11.0);
    EXPECT_EQ(layout.pageHeight(), 8.5);
    layout.setOrientation(PageOrientation::Landscape);
    EXPECT_EQ(layout.pageWidth(), 11.0);
    EXPECT_EQ(layout.fullExtent(), geometry::Envelope(0, 0, 11, 8.5));
    EXPECT_THROW(layout.setPageSize(0, 5), automation::PlatformError);
}

TEST(PageLayouts, ElementsAreAddedInFrontAndFramesFoundByMap)
{
    PageLayout layout;
    auto& graphics = layout.graphicsContainer();
    auto map = std::make_shared<Map>();
    auto other = std::make_shared<Map>("other");
    auto frame = std::make_shared<MapFrame>(map);
    auto title = std::make_shared<TextElement>();
    graphics.addElement(frame);
    graphics.addElement(title);
    EXPECT_EQ(graphics.element(1), title);
    EXPECT_EQ(graphics.findFrame(*map), frame);
    EXPECT_EQ(graphics.findFrame(*other), nullptr);

    auto legendFrame = frame->createSurroundFrame(SurroundKind::Legend);
    EXPECT_EQ(graphics.count(), 2);
    ASSERT_NE(legendFrame->mapSurround(), nullptr);
    EXPECT_EQ(legendFrame->mapSurround()->name(), "Legend");
    EXPECT_EQ(legendFrame->mapSurround()->map(), map);
    EXPECT_EQ(legendFrame->mapFrame(), frame);
    EXPECT_EQ(frame->createSurroundFrame(SurroundKind::MarkerNorthArrow)->mapSurround()->name(),
              "North Arrow");
    EXPECT_EQ(frame->createSurroundFrame(SurroundKind::ScaleLine)->mapSurround()->name(),
              "Scale Bar");

    EXPECT_TRUE(graphics.deleteElement(frame));
    EXPECT_FALSE(graphics.deleteElement(frame));
    EXPECT_EQ(graphics.element(0), title);
}

TEST(PageLayouts, MissingPictureFileFailsAndKeepsThePicture)
{
    test::TempDir dir;
    const auto logo = dir.path() / "logo.bmp";
    std::ofstream(logo) << "BM";
    PictureElement picture;
    picture.importPictureFromFile(logo);
    try {
        picture.importPictureFromFile(dir.path() / "missing.bmp");
        FAIL() << "a missing picture was taken";
    } catch (const automation::PlatformError& error) {
        EXPECT_EQ(error.number(), 53);
    }
    EXPECT_EQ(picture.file(), logo);
}

} // namespace
} // namespace brevant::platform::carto
