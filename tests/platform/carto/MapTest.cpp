#include "platform/carto/Map.h"

#include "platform/automation/PlatformError.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/TestFeatures.h"

#include <gtest/gtest.h>

namespace brevant::platform::carto {
namespace {

using geodatabase::Fields;
using geodatabase::FieldType;
using geometry::Envelope;
using geometry::Geometry;
using geometry::ShapeType;
using test::TestFeatures;

std::vector<std::string> names(const Map& map)
{
    std::vector<std::string> result;
    for (const auto& layer : map.layers()) {
        result.push_back(layer->name());
    }
    return result;
}

std::shared_ptr<GroupLayer> named(const std::string& name)
{
    return std::make_shared<GroupLayer>(name);
}

TEST(MapLayers, NewLayersGoOnTopAndMovesAreClamped)
{
    Map map;
    auto a = named("a");
    auto b = named("b");
    auto c = named("c");
    map.addLayer(a);
    map.addLayer(b);
    map.addLayer(c);
    EXPECT_EQ(names(map), (std::vector<std::string>{"c", "b", "a"}));

    EXPECT_TRUE(map.moveLayer(a, 0));
    EXPECT_EQ(names(map), (std::vector<std::string>{"a", "c", "b"}));
    EXPECT_TRUE(map.moveLayer(a, 99));
    EXPECT_EQ(names(map), (std::vector<std::string>{"c", "b", "a"}));
    EXPECT_EQ(map.indexOf(*b), 1);

    EXPECT_TRUE(map.deleteLayer(b));
    EXPECT_FALSE(map.deleteLayer(b));
    EXPECT_FALSE(map.moveLayer(b, 0));
    EXPECT_EQ(names(map), (std::vector<std::string>{"c", "a"}));

    try {
        map.layer(2);
        FAIL() << "layer 2 of 2 was handed out";
    } catch (const automation::PlatformError& error) {
        EXPECT_EQ(error.number(), 9);
    }
    EXPECT_THROW(map.addLayer(nullptr), automation::PlatformError);
}

TEST(MapLayers, ListenersHearAddsDeletesMovesAndRefreshes)
{
    Map map;
    std::vector<ViewEvent::Kind> heard;
    const int id =
        map.addListener([&heard](const ViewEvent& event) { heard.push_back(event.kind); });
    auto a = named("a");
    map.addLayer(a);
    map.addLayer(named("b"));
    map.moveLayer(a, 0);
    map.deleteLayer(a);
    map.partialRefresh(ViewPhase::GeoSelection);
    map.removeListener(id);
    map.refresh();
    using Kind = ViewEvent::Kind;
    EXPECT_EQ(heard, (std::vector<Kind>{Kind::ItemAdded, Kind::ItemAdded, Kind::ContentsChanged,
                                        Kind::ItemDeleted, Kind::Refreshed}));
}

TEST(MapLayers, FeatureLayersInsideGroupsAreFound)
{
    Map map;
    auto group = named("group");
    auto inner = std::make_shared<FeatureLayer>();
    inner->setName("inner");
    group->add(inner);
    auto top = std::make_shared<FeatureLayer>();
    map.addLayer(group);
    map.addLayer(top);
    const auto found = map.featureLayers();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0], top);
    EXPECT_EQ(found[1], inner);
}

TEST(ActiveViewRefreshes, AreRecordedWithPhaseDataAndEnvelope)
{
    Map map;
    auto layer = named("layer");
    map.refresh();
    map.partialRefresh(ViewPhase::GeoSelection);
    map.partialRefresh(ViewPhase::Geography, layer, Envelope(0, 0, 1, 1));
    const auto& records = map.refreshes();
    ASSERT_EQ(records.size(), 3u);
    EXPECT_TRUE(records[0].full);
    EXPECT_FALSE(records[1].full);
    EXPECT_EQ(records[1].phase, ViewPhase::GeoSelection);
    EXPECT_EQ(records[1].data, nullptr);
    EXPECT_FALSE(records[1].envelope);
    EXPECT_EQ(records[2].phase, ViewPhase::Geography);
    EXPECT_EQ(records[2].data, layer);
    EXPECT_EQ(records[2].envelope, Envelope(0, 0, 1, 1));
    map.clearRefreshes();
    EXPECT_TRUE(map.refreshes().empty());
}

/// Points at (1,1), (5,5), (9,9) and a polygon around (5,5), shown 0..10 on 100 pixels, so a
/// pixel is 0.1 map units and the default search tolerance 0.3.
class MapSelection : public ::testing::Test {
protected:
    void SetUp() override
    {
        const Fields name({{"Name", FieldType::String, 10, {}}});
        points = std::make_shared<FeatureLayer>(
            data.add("points", ShapeType::Point, name,
                     {{"POINT (1 1)", {"p1"}}, {"POINT (5 5)", {"p5"}}, {"POINT (9 9)", {"p9"}}}));
        areas = std::make_shared<FeatureLayer>(
            data.add("areas", ShapeType::Polygon, name, {{test::squareWkt(4, 4, 2), {"middle"}}}));
        map.addLayer(areas);
        map.addLayer(points);
        map.displayTransformation().setDeviceFrame(100, 100);
        map.setExtent(Envelope(0, 0, 10, 10));
    }

    void clickAt(double x, double y, SelectionResult how)
    {
        SelectionEnvironment environment;
        environment.combinationMethod = how;
        map.selectByShape(Geometry::point({x, y}), &environment);
    }

    TestFeatures data;
    Map map;
    std::shared_ptr<FeatureLayer> points;
    std::shared_ptr<FeatureLayer> areas;
};

TEST_F(MapSelection, FirstLayerGivesTheMapItsExtent)
{
    Map fresh;
    fresh.addLayer(points);
    EXPECT_EQ(fresh.extent(), Envelope(1, 1, 9, 9));
    fresh.addLayer(areas);
    EXPECT_EQ(fresh.extent(), Envelope(1, 1, 9, 9));
    EXPECT_EQ(fresh.fullExtent(), Envelope(1, 1, 9, 9));
}

TEST_F(MapSelection, PointReachesAsFarAsTheSearchTolerance)
{
    clickAt(1.2, 1.1, SelectionResult::New);
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{1}));
    clickAt(1.5, 1.5, SelectionResult::New);
    EXPECT_TRUE(points->selectionSet().isEmpty());
}

TEST_F(MapSelection, NewAddAndXorCombineWithTheCurrentSelection)
{
    clickAt(1, 1, SelectionResult::New);
    clickAt(9, 9, SelectionResult::New);
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{3}));
    clickAt(1, 1, SelectionResult::Add);
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{1, 3}));
    clickAt(1, 1, SelectionResult::Xor);
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{3}));
    clickAt(1, 1, SelectionResult::Xor);
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{1, 3}));
    EXPECT_EQ(map.selectionCount(), 2);
    map.clearSelection();
    EXPECT_EQ(map.selectionCount(), 0);
}

TEST_F(MapSelection, ShapeSelectsInEverySelectableLayerOnly)
{
    map.selectByShape(Geometry::fromWkt(test::squareWkt(3, 3, 3)));
    EXPECT_EQ(points->selectionSet().ids(), (std::vector<int64_t>{2}));
    EXPECT_EQ(areas->selectionSet().ids(), (std::vector<int64_t>{1}));

    areas->setSelectable(false);
    map.clearSelection();
    map.selectByShape(Geometry::fromWkt(test::squareWkt(3, 3, 3)));
    EXPECT_EQ(points->selectionSet().count(), 1);
    EXPECT_TRUE(areas->selectionSet().isEmpty());
}

TEST_F(MapSelection, JustOneStopsAtTheTopLayer)
{
    map.selectByShape(Geometry::fromWkt(test::squareWkt(0, 0, 10)), nullptr, true);
    EXPECT_EQ(points->selectionSet().count(), 1);
    EXPECT_TRUE(areas->selectionSet().isEmpty());
}

} // namespace
} // namespace brevant::platform::carto
