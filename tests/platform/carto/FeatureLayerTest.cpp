#include "platform/carto/FeatureLayer.h"

#include "platform/carto/TestFeatures.h"

#include <gtest/gtest.h>

namespace brevant::platform::carto {
namespace {

using automation::Variant;
using geodatabase::Fields;
using geodatabase::FieldType;
using geodatabase::QueryFilter;
using geodatabase::Row;
using geometry::Geometry;
using geometry::ShapeType;

class FeatureLayers : public ::testing::Test {
protected:
    void SetUp() override
    {
        tracts = data.add("hztract", ShapeType::Polygon,
                          Fields({{"Tract", FieldType::String, 11, {}},
                                  {"Population", FieldType::Integer, 0, {}}}),
                          {{test::squareWkt(0, 0, 1), {"06001000100", int32_t{10}}},
                           {test::squareWkt(1, 0, 1), {"06001000200", int32_t{20}}},
                           {test::squareWkt(2, 0, 1), {"06001000300", int32_t{30}}}});
        layer = std::make_shared<FeatureLayer>(tracts);
    }

    test::TestFeatures data;
    std::shared_ptr<geodatabase::FeatureClass> tracts;
    std::shared_ptr<FeatureLayer> layer;
};

TEST_F(FeatureLayers, NewLayerIsNamedAfterTheClassAndDrawnWithItsShapeDefault)
{
    EXPECT_EQ(layer->name(), "hztract");
    EXPECT_TRUE(layer->visible());
    EXPECT_TRUE(layer->selectable());
    const auto& simple = std::get<SimpleRenderer>(layer->renderer());
    ASSERT_TRUE(simple.symbol);
    EXPECT_EQ(symbolKind(*simple.symbol), SymbolKind::Fill);

    // A renderer set before the class stays.
    FeatureLayer later;
    later.setRenderer(SimpleRenderer{SimpleLineSymbol{}, {}, {}});
    later.setFeatureClass(tracts);
    EXPECT_EQ(symbolKind(*std::get<SimpleRenderer>(later.renderer()).symbol), SymbolKind::Line);
}

TEST_F(FeatureLayers, SelectionCombinesWhereClauses)
{
    EXPECT_EQ(layer->selectFeatures(QueryFilter::where("[Population] >= 20"), SelectionResult::New),
              2);
    EXPECT_EQ(layer->selectionSet().ids(), (std::vector<int64_t>{2, 3}));
    layer->selectFeatures(QueryFilter::where("Population = 10"), SelectionResult::Add);
    EXPECT_EQ(layer->selectionSet().count(), 3);
    layer->selectFeatures(QueryFilter::where("Population = 20"), SelectionResult::Subtract);
    EXPECT_EQ(layer->selectionSet().ids(), (std::vector<int64_t>{1, 3}));
    layer->selectFeatures(QueryFilter::where("Population > 0"), SelectionResult::And, true);
    EXPECT_EQ(layer->selectionSet().ids(), (std::vector<int64_t>{1}));
}

TEST_F(FeatureLayers, DisplayJoinShowsTheTablesFieldsAsTheLayers)
{
    auto scores = data.workspace().createTable(
        "EqTract",
        Fields({{"Tract", FieldType::String, 11, {}}, {"pga", FieldType::Double, 0, {}}}));
    {
        auto insert = scores->insert();
        for (const auto& [tract, pga] : {std::pair{"06001000100", 0.1}, {"06001000300", 0.3}}) {
            Row row = scores->createRow();
            row.setValue(1, std::string(tract));
            row.setValue(2, pga);
            insert.insertRow(row);
        }
    }
    auto relationship =
        std::make_shared<geodatabase::RelationshipClass>(geodatabase::RelationshipClass::Definition{
            "SourceData", scores, "Tract", tracts, "Tract", "attribute data", "attribute data"});
    layer->addRelationshipClass(relationship);
    layer->addRelationshipClass(relationship);
    EXPECT_EQ(layer->relationshipClasses().size(), 1u);
    EXPECT_EQ(layer->findField("pga"), -1);

    layer->displayRelationshipClass(relationship);
    const int pga = layer->findField("pga");
    ASSERT_GE(pga, 0);
    std::vector<Variant> values;
    layer->search({}, [&](const Row& row) {
        values.push_back(row.value(pga));
        EXPECT_FALSE(row.shape().isEmpty());
        return true;
    });
    ASSERT_EQ(values.size(), 3u);
    EXPECT_DOUBLE_EQ(values[0].toDouble(), 0.1);
    EXPECT_TRUE(values[1].isNull());
    EXPECT_DOUBLE_EQ(values[2].toDouble(), 0.3);

    layer->removeDisplayJoin();
    EXPECT_EQ(layer->findField("pga"), -1);
}

TEST_F(FeatureLayers, IdentifyAndLabelsUseTheDisplayedFields)
{
    const auto found = layer->identify(Geometry::point({1.5, 0.5}));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].value(layer->labelFieldIndex()).toString(), "06001000200");
    layer->setDisplayField("population");
    EXPECT_EQ(layer->labelFieldIndex(), 3);
}

} // namespace
} // namespace brevant::platform::carto
