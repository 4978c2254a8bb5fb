#include "context/EqShape.h"
#include "context/InventoryRegionFixture.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/ui/ScriptedPrompts.h"

#include <gtest/gtest.h>

namespace brevant::context {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::carto::FeatureLayer;
using test::errorOf;

class LayerServices : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        m_bridges = addPointInventory(
            "hzHighwayBridge",
            {{"HB000001", 1, 1, "06001400100"}, {"HB000002", 2, 2, ""}, {"HB000003", 3, 3, ""}});
    }

    std::vector<std::string> layerNames() const
    {
        std::vector<std::string> names;
        for (const auto& layer : m_map->layers()) {
            names.push_back(layer->name());
        }
        return names;
    }

    static std::vector<std::string> relatedTables(const FeatureLayer& layer)
    {
        std::vector<std::string> tables;
        for (const auto& relate : layer.relationshipClasses()) {
            tables.push_back(relate->definition().origin->name());
        }
        return tables;
    }

    std::shared_ptr<geodatabase::FeatureClass> m_bridges;
};

TEST_F(LayerServices, AddLayerNamesThePlainLayerAfterTheClass)
{
    const auto layer = AddLayer(m_bridges, false);
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"hzHighwayBridge"}));
    EXPECT_TRUE(layer->visible());
    EXPECT_FALSE(layer->selectable());
    EXPECT_TRUE(layer->relationshipClasses().empty());
}

TEST_F(LayerServices, InventoryLayerReplacesTheClassLayerAndRelatesBothTablesInOrder)
{
    AddInventoryLayer(m_bridges, true, 0, true, "");
    const auto layer = AddInventoryLayer(m_bridges, false, 0, false, "");
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"hzHighwayBridge"}));
    EXPECT_FALSE(layer->visible());
    EXPECT_FALSE(layer->selectable());
    EXPECT_EQ(relatedTables(*layer),
              (std::vector<std::string>{"hzHighwayBridge", "EqHighwayBridge"}));
    const auto& last = m_map->refreshes().back();
    EXPECT_FALSE(last.full);
    EXPECT_EQ(last.phase, platform::carto::ViewPhase::GeoSelection);
    EXPECT_EQ(last.data, nullptr);
}

TEST_F(LayerServices, GivenNameStillRemovesTheFirstLayerNamedAfterTheClass)
{
    for (const char* name : {"Bridges", "hzHighwayBridge", "hzHighwayBridge"}) {
        auto layer = std::make_shared<FeatureLayer>(m_bridges);
        layer->setName(name);
        m_map->addLayer(layer);
    }
    AddInventoryLayer(m_bridges, true, 0, true, "Bridges");
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"Bridges", "hzHighwayBridge", "Bridges"}));
}

TEST_F(LayerServices, AebmIsRelatedToItsAnalysisTableOnly)
{
    const auto layer =
        AddInventoryLayer(addPointInventory("eqAebm", {}, "uds.mdb"), true, 0, true, "");
    EXPECT_EQ(relatedTables(*layer), (std::vector<std::string>{"EqAebm"}));
}

TEST_F(LayerServices, FailingRelateLeavesTheLayerAndIsRecordedOnceByTheRelate)
{
    executeSql("DROP TABLE EqHighwayBridge");
    const auto error = errorOf([&] { AddInventoryLayer(m_bridges, true, 0, true, ""); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(error.description(),
              "The map engine failed in CreateRelateWithSqlTable EqHighwayBridge with layer");
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"hzHighwayBridge"}));
    const std::string log = errorLog();
    EXPECT_EQ(log.find("Code = "), log.rfind("Code = ")) << log;
}

TEST_F(LayerServices, RemoveObjectsTellsTheCountBeforeDeletingAndIsSilentForNone)
{
    RemoveObjects(*m_bridges, "Tract = 'elsewhere'");
    EXPECT_TRUE(m_prompts->messages().empty());

    RemoveObjects(*m_bridges, "Tract = ''");
    ASSERT_EQ(m_prompts->messages().size(), 1u);
    const auto& message = m_prompts->messages()[0];
    EXPECT_EQ(message.text,
              "There are 2 objects outside the study region, they will not be stored.");
    EXPECT_EQ(message.title, "Korval");
    EXPECT_EQ(message.buttons, platform::ui::MessageButtons::Ok);
    EXPECT_EQ(m_bridges->rowCount(), 1);
}

TEST_F(LayerServices, OpenMapAndRelateClass)
{
    Variant result;
    OpenMap("hzHighwayBridge", regionFolder() + "trn.mdb", result);
    ASSERT_EQ(result.typeName(), "FeatureClass");

    Variant relate;
    CreateRelateClass(Variant(m_bridges), "HighwayBridgeId", result, "HighwayBridgeId", relate);
    const auto& definition = relate.objectAs<geodatabase::RelationshipClass>()->definition();
    EXPECT_EQ(definition.name, "SourceData");
    EXPECT_EQ(definition.forwardLabel, "attribute data");
    EXPECT_EQ(definition.backwardLabel, "attribute data");
    EXPECT_EQ(definition.cardinality, geodatabase::Cardinality::OneToMany);
    EXPECT_EQ(definition.destination, m_bridges);

    errorOf([&] { OpenMap("hzNoSuchClass", regionFolder() + "trn.mdb", result); });
    EXPECT_TRUE(result.isEmpty()) << "the earlier class is not left behind";
}

} // namespace
} // namespace brevant::context
