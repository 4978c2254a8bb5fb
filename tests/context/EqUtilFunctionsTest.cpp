#include "context/EqUtilFunctions.h"

#include "context/InventoryRegionFixture.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geodatabase/Workspace.h"

#include <gtest/gtest.h>

namespace brevant::context {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::VariantArray;
using platform::carto::FeatureLayer;
using platform::geometry::Geometry;
using test::errorOf;

class Utilities : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        m_bridges = addPointInventory("hzHighwayBridge", {{"HB000001", 5, 5, "06001400100"},
                                                          {"HB000002", 23, 5, "06001400100"},
                                                          {"HB000003", 40, 5, "06001400200"},
                                                          {"HB000004", 100, 100, ""}});
    }

    std::vector<std::string> column(const std::string& field) const
    {
        std::vector<std::string> values;
        for (const char* id : {"HB000001", "HB000002", "HB000003", "HB000004"}) {
            const Variant value = valueOf(*m_bridges, id, field);
            values.push_back(value.isNull() ? "null" : value.toString());
        }
        return values;
    }

    std::shared_ptr<geodatabase::FeatureClass> m_bridges;
};

TEST_F(Utilities, UpdateFieldValueConvertsTextAndSkipsMissingFieldsAndEmptySelections)
{
    UpdateFieldValue(*m_bridges, "LQFSUSCAT", "3", "[Tract] = '06001400100'");
    EXPECT_EQ(column("lqfsuscat"), (std::vector<std::string>{"3", "3", "null", "null"}));

    UpdateFieldValue(*m_bridges, "NoSuchField", "7", "");
    // A value the field could not take shows that no row was even visited.
    UpdateFieldValue(*m_bridges, "lqfsuscat", "not a number", "Tract = 'nowhere'");
    EXPECT_EQ(errorLog(), "");

    const auto error = errorOf([&] { UpdateFieldValue(*m_bridges, "lqfsuscat", "abc", ""); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(error.description(), "The map engine failed in Calculating values for the field for "
                                   "table hzHighwayBridge  field lqfsuscat Expressionabc "
                                   "whereclause ");
}

// Soil A | B share the edge x = 10; C lies apart. Sites: inside A, 3 from B and 7 from C, on
// C's edge, far from all.
TEST_F(Utilities, IndexJoinTakesContainingThenNearestPolygonAndThePointOptionOnlyTouching)
{
    auto soil =
        geodatabase::Workspace::createGeoPackage(regionFolder() + "RegionBndry.mdb")
            .createFeatureClass(
                "eqsrsoil", geodatabase::Fields({{"type", geodatabase::FieldType::String, 5, {}}}),
                platform::geometry::ShapeType::Polygon);
    {
        geodatabase::InsertCursor insert = soil->insert();
        for (const auto& [wkt, type] : std::vector<std::pair<const char*, const char*>>{
                 {"POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0))", "A"},
                 {"POLYGON ((10 0, 20 0, 20 10, 10 10, 10 0))", "B"},
                 {"POLYGON ((30 0, 40 0, 40 10, 30 10, 30 0))", "C"}}) {
            auto row = soil->createRow();
            row.setValue(2, type);
            row.setShape(Geometry::fromWkt(wkt));
            insert.insertRow(row);
        }
    }
    UpdateFieldValue(*m_bridges, "stype", "X", "");

    UpdateFieldUsingIndexJoin(*m_bridges, *soil, "stype", "NoSuchField", false);
    UpdateFieldUsingIndexJoin(*m_bridges, *soil, "stype", "OBJECTID", false);
    EXPECT_EQ(column("stype"), (std::vector<std::string>{"X", "X", "X", "X"}));

    UpdateFieldUsingIndexJoin(*m_bridges, *soil, "stype", "type", true);
    EXPECT_EQ(column("stype"), (std::vector<std::string>{"A", "X", "C", "X"}));

    UpdateFieldfromJoin(Variant(m_bridges), Variant(soil), "stype", "type", false);
    EXPECT_EQ(column("stype"), (std::vector<std::string>{"A", "B", "C", "C"}));
}

TEST_F(Utilities, RelateAndLeftOuterJoinToAServerTableOnTheIdentifier)
{
    executeSql("INSERT INTO EqHighwayBridge (HighwayBridgeId, pga) VALUES ('HB000002', 0.25)");
    FeatureLayer layer(m_bridges);
    CreateRelateWithSqlTable(layer, "EqHighwayBridge");
    ASSERT_EQ(layer.relationshipClasses().size(), 1u);
    const auto& relate = *layer.relationshipClasses()[0];
    EXPECT_EQ(relate.definition().originPrimaryKey, "HighwayBridgeId");

    JoineLayerToSqlTable(layer, "EqHighwayBridge");
    const int pga = layer.findField("EqHighwayBridge.pga");
    ASSERT_GE(pga, 0);
    std::vector<std::string> joined;
    std::vector<std::size_t> related;
    layer.search({}, [&](const geodatabase::Row& row) {
        joined.push_back(row.value(pga).isNull() ? "null" : row.value(pga).toString());
        related.push_back(relate.relatedOrigins(row).size());
        return true;
    });
    EXPECT_EQ(joined, (std::vector<std::string>{"null", "0.25", "null", "null"}));
    EXPECT_EQ(related, (std::vector<std::size_t>{0, 1, 0, 0}));
}

TEST_F(Utilities, ShapefileExportShortensNamesCopiesTheSelectionAndReplacesTheOldOne)
{
    const std::string folder = regionFolder() + "Export/";
    auto report = ConvertAccessToShapeFile(regionFolder() + "trn.mdb", "hzHighwayBridge", folder,
                                           "bridges", "Tract = '06001400100'");
    EXPECT_EQ(report.converted, 2);
    ASSERT_FALSE(report.renamed.empty());
    EXPECT_EQ(report.renamed[0].from, "HighwayBridgeId");
    EXPECT_EQ(report.renamed[0].to, "HighwayBri");
    auto shapes = geodatabase::Workspace::open(folder).openFeatureClass("bridges");
    EXPECT_EQ(shapes->findField("HighwayBridgeId"), -1);
    EXPECT_EQ(valueOf(*shapes, "HB000002", "Tract").toString(), "06001400100");

    {
        geodatabase::InsertCursor insert = m_bridges->insert();
        auto row = m_bridges->createRow();
        row.setValue(2, "HB000005");
        insert.insertRow(row);
    }
    report = ConvertAccessToShapeFile(regionFolder() + "trn.mdb", "hzHighwayBridge", folder,
                                      "bridges", "");
    EXPECT_EQ(geodatabase::Workspace::open(folder).openFeatureClass("bridges")->rowCount(), 4);
    EXPECT_EQ(report.invalidObjects,
              (std::vector<std::string>{"ObjectID 5 - The feature has no geometry"}));
}

TEST_F(Utilities, CollectionsStartAtIndexZero)
{
    VariantArray fromMinusOne(3, -1);
    fromMinusOne.at(0) = Variant("SOIL");
    fromMinusOne.at(1) = Variant("LIQF");
    const auto codes = GetCollectionfromVariant(Variant(fromMinusOne));
    ASSERT_EQ(codes->count(), 2);
    EXPECT_EQ(codes->item(1).toString(), "SOIL");
    errorOf([] { GetCollectionfromVariant(Variant(VariantArray(2, 1))); });
    EXPECT_NE(errorLog().find(" GetCollectionfromVariant\nCode = 9\n"), std::string::npos);

    VariantArray table({0, 4}, {0, 2});
    for (int32_t i = 0; i < 4; ++i) {
        table.at(i, 0) = Variant("row" + std::to_string(i));
    }
    int16_t count = 0;
    const auto rows = GetCollectionfrom2DArrayVariant(Variant(table), count);
    EXPECT_EQ(count, 2) << "the second dimension's upper bound + 1, written back";
    ASSERT_EQ(rows->count(), 2);
    EXPECT_EQ(rows->item(2).toString(), "row1");
    count = 4;
    EXPECT_EQ(GetCollectionfrom2DArrayVariant(Variant(table), count)->item(4).toString(), "row3");
}

TEST_F(Utilities, RemoveLayerRemovesOnlyTheFirstExactName)
{
    std::vector<std::shared_ptr<FeatureLayer>> layers;
    for (const char* name : {"hztract", "Other", "hztract"}) {
        layers.push_back(std::make_shared<FeatureLayer>());
        layers.back()->setName(name);
        m_map->addLayer(layers.back()); // on top: the last added is the first
    }
    m_map->clearRefreshes();
    RemoveLayer("HZTRACT");
    EXPECT_EQ(m_map->layerCount(), 3);
    EXPECT_TRUE(m_map->refreshes().empty());

    RemoveLayer("hztract");
    EXPECT_EQ(m_map->layers(),
              (std::vector<std::shared_ptr<platform::carto::Layer>>{layers[1], layers[0]}));
    ASSERT_EQ(m_map->refreshes().size(), 1u);
    EXPECT_FALSE(m_map->refreshes()[0].full);
    EXPECT_EQ(m_map->refreshes()[0].phase, platform::carto::ViewPhase::GeoSelection);
}

TEST_F(Utilities, MultiHazardNeedsTheFirstFlagAndAnother)
{
    EXPECT_TRUE(MultiHazardRegion()) << "Testville: earthquake and hurricane";
    addRegion("Shaky", 2, true, false, false);
    setCurrentRegion("Shaky");
    EXPECT_FALSE(MultiHazardRegion());
    addRegion("Wet", 3, false, true, true);
    setCurrentRegion("Wet");
    EXPECT_FALSE(MultiHazardRegion());
}

TEST_F(Utilities, DisplayPrecisionFromItsTableElseByColumnType)
{
    EXPECT_EQ(GetDisplayPrecision("EqHighwayBridge", "pga"), 2) << "a real column";
    EXPECT_EQ(GetDisplayPrecision("EqHighwayBridge", "lqfsuscat"), 0);
    EXPECT_EQ(GetDisplayPrecision("eqTract_pga", "pga"), 2) << "unknown to the database";
    executeSql("CREATE TABLE DisplayPrecision (TableName TEXT, FieldName TEXT, Precision "
               "INTEGER); INSERT INTO DisplayPrecision VALUES ('EqHighwayBridge', 'PGA', 3)");
    EXPECT_EQ(GetDisplayPrecision("eqhighwaybridge", "pga"), 3);
}

TEST_F(Utilities, DefaultSiteValuesFillEveryRecord)
{
    UpdatePointHftSpecificValues(*m_bridges);
    EXPECT_EQ(column("stype"), (std::vector<std::string>{"D", "D", "D", "D"}));
    EXPECT_EQ(valueOf(*m_bridges, "HB000004", "w_depth").toDouble(), 0.0);

    setSetting("SiteDefaults", "stype", "C");
    setSetting("SiteDefaults", "lndsuscat", "5");
    setSetting("SiteDefaults", "w_depth", "0.3");
    UpdatePointHftSpecificValues(*m_bridges);
    EXPECT_EQ(column("stype"), (std::vector<std::string>{"C", "C", "C", "C"}));
    EXPECT_EQ(column("lndsuscat"), (std::vector<std::string>{"5", "5", "5", "5"}));
    EXPECT_DOUBLE_EQ(valueOf(*m_bridges, "HB000004", "w_depth").toDouble(), 0.3);
}

} // namespace
} // namespace brevant::context
