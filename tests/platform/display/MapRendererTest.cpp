#include "platform/display/MapRenderer.h"

#include "platform/carto/AnnotationLayer.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/RasterLayer.h"
#include "platform/carto/TestFeatures.h"

#include <QImage>
#include <gtest/gtest.h>

namespace brevant::platform::display {
namespace {

using namespace carto;
using automation::Variant;
using geodatabase::Fields;
using geodatabase::FieldType;
using geodatabase::QueryFilter;
using geometry::Envelope;
using geometry::ShapeType;
using test::squareWkt;

constexpr RgbColor Red{230, 0, 0};
constexpr RgbColor Green{0, 168, 0};
constexpr RgbColor Blue{0, 0, 230};
constexpr RgbColor White{255, 255, 255};
constexpr RgbColor Black{0, 0, 0};

SimpleFillSymbol solid(RgbColor color)
{
    return SimpleFillSymbol{SimpleFillStyle::Solid, color, SimpleLineSymbol{SimpleLineStyle::Null}};
}

/// A map 0..10 by 0..10 drawn on 200 by 200 pixels: 20 pixels per map unit.
/// Areas: three squares of 2 along y = 1..3 at x = 1, 4 and 7, valued 1, 5 and 9.
/// Roads: a line along y = 8. Sites: points at (2, 5), (5, 5) and (8, 5).
class MapRendering : public ::testing::Test {
protected:
    void SetUp() override
    {
        areas = std::make_shared<FeatureLayer>(data.add(
            "areas", ShapeType::Polygon,
            Fields({{"Code", FieldType::String, 5, {}}, {"value", FieldType::Double, 0, {}}}),
            {{squareWkt(1, 1, 2), {"A", 1.0}},
             {squareWkt(4, 1, 2), {"B", 5.0}},
             {squareWkt(7, 1, 2), {"C", 9.0}}}));
        roads = std::make_shared<FeatureLayer>(
            data.add("roads", ShapeType::Polyline, Fields(), {{"LINESTRING (0.5 8, 9.5 8)", {}}}));
        sites = std::make_shared<FeatureLayer>(
            data.add("sites", ShapeType::Point, Fields(),
                     {{"POINT (2 5)", {}}, {"POINT (5 5)", {}}, {"POINT (8 5)", {}}}));
        map = std::make_shared<Map>();
        map->addLayer(areas);
        map->addLayer(roads);
        map->addLayer(sites);
    }

    QImage render(const Envelope& extent = Envelope(0, 0, 10, 10)) const
    {
        return MapRenderer(*map).render(extent, QSize(200, 200));
    }

    static RgbColor at(const QImage& image, double x, double y)
    {
        const QColor c =
            image.pixelColor(static_cast<int>(x * 20), static_cast<int>((10 - y) * 20));
        return {c.red(), c.green(), c.blue()};
    }

    test::TestFeatures data;
    std::shared_ptr<FeatureLayer> areas;
    std::shared_ptr<FeatureLayer> roads;
    std::shared_ptr<FeatureLayer> sites;
    std::shared_ptr<Map> map;
};

TEST_F(MapRendering, EachShapeTakesItsSymbolsColour)
{
    areas->setRenderer(SimpleRenderer{solid(Red), {}, {}});
    roads->setRenderer(SimpleRenderer{SimpleLineSymbol{SimpleLineStyle::Solid, Blue, 4}, {}, {}});
    sites->setRenderer(
        SimpleRenderer{SimpleMarkerSymbol{SimpleMarkerStyle::Square, Green, 10}, {}, {}});
    const QImage image = render();
    EXPECT_EQ(at(image, 2, 2), Red);
    EXPECT_EQ(at(image, 8, 2), Red);
    EXPECT_EQ(at(image, 5, 8), Blue);
    EXPECT_EQ(at(image, 5, 5), Green);
    EXPECT_EQ(at(image, 3.5, 2), White);
    EXPECT_EQ(at(image, 5, 6), White);
}

TEST_F(MapRendering, ClassBreaksPolygonsShowEachClassColour)
{
    ClassBreaksRenderer breaks;
    breaks.setField("value");
    breaks.setBreakCount(2);
    breaks.setMinimumBreak(0);
    breaks.setBreak(0, 3);
    breaks.setBreak(1, 6);
    breaks.setSymbol(0, solid(Red));
    breaks.setSymbol(1, solid(Green));
    areas->setRenderer(breaks);
    QImage image = render();
    EXPECT_EQ(at(image, 2, 2), Red);
    EXPECT_EQ(at(image, 5, 2), Green);
    // 9 lies above the last break.
    EXPECT_EQ(at(image, 8, 2), White);

    breaks.setBreakCount(3);
    breaks.setBreak(2, 10);
    breaks.setSymbol(2, solid(Blue));
    areas->setRenderer(breaks);
    image = render();
    EXPECT_EQ(at(image, 8, 2), Blue);
}

TEST_F(MapRendering, UniqueValuesDrawListedValuesOnly)
{
    UniqueValueRenderer unique;
    unique.setFieldCount(1);
    unique.setField(0, "code");
    unique.setFieldType(ValueFieldType::Text);
    unique.addValue("A", "", solid(Red));
    unique.addValue("C", "", solid(Blue));
    areas->setRenderer(unique);
    const QImage image = render();
    EXPECT_EQ(at(image, 2, 2), Red);
    EXPECT_EQ(at(image, 5, 2), White);
    EXPECT_EQ(at(image, 8, 2), Blue);
}

TEST_F(MapRendering, SelectedFeaturesShowTheSelectionColour)
{
    areas->setRenderer(SimpleRenderer{solid(Red), {}, {}});
    areas->selectFeatures(QueryFilter::where("Code = 'B'"), SelectionResult::New);
    sites->selectFeatures(QueryFilter::where("OBJECTID = 3"), SelectionResult::New);
    sites->setSelectionColor({190, 255, 232});
    QImage image = render();
    const RgbColor cyan = map->selectionEnvironment().defaultColor;
    EXPECT_EQ(at(image, 4, 2), cyan);
    EXPECT_EQ(at(image, 5, 1), cyan);
    EXPECT_NE(at(image, 1, 2), cyan);
    EXPECT_EQ(at(image, 5, 2), Red);
    EXPECT_EQ(at(image, 8, 5), (RgbColor{190, 255, 232}));
    EXPECT_NE(at(image, 2, 5), (RgbColor{190, 255, 232}));

    map->clearSelection();
    image = render();
    EXPECT_NE(at(image, 4, 2), cyan);
}

TEST_F(MapRendering, LayersOutsideTheirScaleRangeOrHiddenAreNotDrawn)
{
    areas->setRenderer(SimpleRenderer{solid(Red), {}, {}});
    // The whole map is about 1:22,000,000 on this picture; zoomed to one square, about 1:4,500,000.
    areas->setMinimumScale(10'000'000);
    EXPECT_EQ(at(render(), 2, 2), White);
    EXPECT_EQ(render(Envelope(1, 1, 3, 3)).pixelColor(100, 100), QColor(230, 0, 0));
    areas->setMinimumScale(0);
    areas->setMaximumScale(10'000'000);
    EXPECT_EQ(at(render(), 2, 2), Red);
    EXPECT_EQ(render(Envelope(1, 1, 3, 3)).pixelColor(100, 100), Qt::white);

    areas->setMaximumScale(0);
    areas->setVisible(false);
    EXPECT_EQ(at(render(), 2, 2), White);

    // A hidden group hides its members.
    areas->setVisible(true);
    map->deleteLayer(areas);
    auto group = std::make_shared<GroupLayer>("group");
    group->add(areas);
    map->addLayer(group);
    EXPECT_EQ(at(render(), 2, 2), Red);
    group->setVisible(false);
    EXPECT_EQ(at(render(), 2, 2), White);
}

TEST_F(MapRendering, UpperLayersCoverLowerOnes)
{
    auto cover = std::make_shared<FeatureLayer>(areas->featureClass());
    cover->setRenderer(SimpleRenderer{solid(Blue), {}, {}});
    areas->setRenderer(SimpleRenderer{solid(Red), {}, {}});
    map->addLayer(cover);
    EXPECT_EQ(at(render(), 2, 2), Blue);
    map->moveLayer(cover, map->layerCount() - 1);
    EXPECT_EQ(at(render(), 2, 2), Red);
}

TEST_F(MapRendering, JoinedFieldsDriveTheRenderer)
{
    auto hazard = data.workspace().createTable(
        "EqAreas", Fields({{"Code", FieldType::String, 5, {}}, {"pga", FieldType::Double, 0, {}}}));
    {
        auto insert = hazard->insert();
        for (const auto& [code, pga] : {std::pair{"A", 0.1}, {"C", 0.5}}) {
            geodatabase::Row row = hazard->createRow();
            row.setValue(1, std::string(code));
            row.setValue(2, pga);
            insert.insertRow(row);
        }
    }
    areas->displayRelationshipClass(
        std::make_shared<geodatabase::RelationshipClass>(geodatabase::RelationshipClass::Definition{
            "SourceData", hazard, "Code", areas->featureClass(), "Code"}));
    ClassBreaksRenderer breaks;
    breaks.setField("EqAreas.pga");
    breaks.setBreakCount(2);
    breaks.setBreak(0, 0.2);
    breaks.setBreak(1, 0.6);
    breaks.setSymbol(0, solid(Green));
    breaks.setSymbol(1, solid(Blue));
    areas->setRenderer(breaks);
    const QImage image = render();
    EXPECT_EQ(at(image, 2, 2), Green);
    EXPECT_EQ(at(image, 5, 2), White);
    EXPECT_EQ(at(image, 8, 2), Blue);
}

TEST_F(MapRendering, MarkersOfMissingFontsAreShapesStackedInAddOrder)
{
    MultiLayerMarkerSymbol marker;
    marker.addLayer(CharacterMarkerSymbol{"No Such Marker Font", 33, 14, 0, Black});
    marker.addLayer(CharacterMarkerSymbol{"No Such Marker Font", 33, 8, 0, Green});
    sites->setRenderer(SimpleRenderer{marker, {}, {}});
    const QImage image = render();
    EXPECT_EQ(at(image, 5, 5), Green);
    // Six pixels from the centre lies the disc under the green mark.
    EXPECT_EQ(image.pixelColor(100 + 6, 100), Qt::black);
    for (int character = 33; character < 43; ++character) {
        sites->setRenderer(SimpleRenderer{
            CharacterMarkerSymbol{"No Such Marker Font", character, 12, 0, Blue}, {}, {}});
        EXPECT_EQ(at(render(), 5, 5), Blue) << "character " << character;
    }
}

TEST_F(MapRendering, PatternedLinesLeaveGapsAndHashesCrossTheLine)
{
    CartographicLineSymbol dashed{Blue, 3, LineCap::Butt, LineJoin::Miter};
    dashed.lineTemplate = LineTemplate{};
    dashed.lineTemplate->interval = 3;
    dashed.lineTemplate->addPatternElement(2, 2);
    roads->setRenderer(SimpleRenderer{dashed, {}, {}});
    QImage image = render();
    int blue = 0;
    int white = 0;
    for (int x = 20; x < 180; ++x) {
        const QColor c = image.pixelColor(x, 40);
        blue += c == QColor(0, 0, 230);
        white += c == Qt::white;
    }
    EXPECT_GT(blue, 50);
    EXPECT_GT(white, 50);

    HashLineSymbol ties{Black, 12, 90};
    ties.hashSymbol = CartographicLineSymbol{Black, 2};
    ties.lineTemplate = LineTemplate{};
    ties.lineTemplate->addPatternElement(1, 7);
    roads->setRenderer(SimpleRenderer{ties, {}, {}});
    image = render();
    int crossings = 0;
    for (int x = 20; x < 180; ++x) {
        crossings += image.pixelColor(x, 34) == Qt::black;
    }
    EXPECT_GT(crossings, 10);

    MarkerLineSymbol beads{Red, 1};
    beads.marker = SimpleMarkerSymbol{SimpleMarkerStyle::Circle, Red, 6};
    roads->setRenderer(SimpleRenderer{beads, {}, {}});
    image = render();
    int red = 0;
    for (int x = 20; x < 180; ++x) {
        red += image.pixelColor(x, 40) == QColor(230, 0, 0);
    }
    EXPECT_GT(red, 20);
    EXPECT_LT(red, 150);
}

TEST_F(MapRendering, RasterAndAnnotationLayersAreDrawn)
{
    const auto picture = data.folder() / "scan.png";
    QImage scan(4, 4, QImage::Format_RGB32);
    scan.fill(QColor(0, 168, 0));
    ASSERT_TRUE(scan.save(QString::fromStdString(picture.string())));
    map->addLayer(std::make_shared<RasterLayer>(picture, Envelope(6, 6, 10, 10)));

    auto notes = std::make_shared<AnnotationLayer>(
        data.add("notes", ShapeType::Point, Fields({{"TextString", FieldType::String, 20, {}}}),
                 {{"POINT (1 9)", {"MMMM"}}}));
    notes->setTextSymbol(TextSymbol{.size = 14, .color = Red});
    map->addLayer(notes);

    const QImage image = render();
    EXPECT_EQ(at(image, 9, 9), Green);
    EXPECT_EQ(at(image, 5, 9), White);
    int red = 0;
    for (int x = 20; x < 80; ++x) {
        for (int y = 0; y < 20; ++y) {
            red += image.pixelColor(x, y).red() > 200 && image.pixelColor(x, y).green() < 100;
        }
    }
    EXPECT_GT(red, 20);
}

} // namespace
} // namespace brevant::platform::display
