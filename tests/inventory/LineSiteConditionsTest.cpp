#include "datamaps/EqDataMaps.h"
#include "inventory/EqPolyLine.h"
#include "inventory/InventoryFixture.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"

namespace brevant::test {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::geometry::ShapeType;

/// Roads imported into hzHighwaySegment, and a soil map: A west of the tract line, C east.
class LineSiteConditions : public InventoryFixture {
protected:
    void SetUp() override
    {
        InventoryFixture::SetUp();
        const std::string roads =
            writeSource("roads.gpkg", "roads", ShapeType::Polyline,
                        {{"West", "LINESTRING (-122.29 37.83, -122.26 37.83)"},
                         {"East", "LINESTRING (-122.24 37.82, -122.21 37.82)"}});
        inventory::EqPolyLine().ImportData("hzHighwaySegment", roads, "roads");
        registerMap("SOIL", {{kWest, kSouth, kMiddle, kNorth, Variant("A")},
                             {kMiddle, kSouth, kEast, kNorth, Variant("C")}});
    }

    std::map<std::string, std::string> hazardSoil() const
    {
        return byId(*regionClass(database(), "EqHighwaySegmenthft"), "stype");
    }
    std::string database() const
    {
        return inventory("hzHighwaySegment")->workspace().path().filename().string();
    }
};

TEST_F(LineSiteConditions, ClippingReappliesTheMapsToTheLineHazardTables)
{
    clip({"SOIL"});
    EXPECT_EQ(hazardSoil(), (std::map<std::string, std::string>{{"HI000001", "A"},
                                                                {"HI000002", "C"}}));
    EXPECT_TRUE(logged("Processing Line hzHighwaySegment  at  : "));
    EXPECT_TRUE(logged("Opening table  hzHighwaySegment"));
}

TEST_F(LineSiteConditions, ImportedLinesTakeTheClippedMapsInLineMode)
{
    clip({"SOIL"});
    const std::string more = writeSource("more.gpkg", "roads", ShapeType::Polyline,
                                         {{"Late", "LINESTRING (-122.23 37.84, -122.22 37.84)"}});
    inventory::EqPolyLine().ImportData("hzHighwaySegment", more, "roads");
    EXPECT_EQ(hazardSoil().at("HI000003"), "<null>");

    std::string table = "hzHighwaySegment";
    m_dataMaps->UpdateLineHftforImport(table);
    EXPECT_EQ(hazardSoil().at("HI000003"), "C");
    EXPECT_TRUE(logged("Opening table  hzHighwaySegment"));
    EXPECT_FALSE(logged("Processing Line")) << "one table, not the whole catalogue";

    // The twin that takes a copy of the name does the same.
    regionClass(database(), "EqHighwaySegmenthft")->calculate(
        regionClass(database(), "EqHighwaySegmenthft")->findField("stype"), Variant("D"));
    m_dataMaps->SyncLineHftforImport(table);
    EXPECT_EQ(hazardSoil().at("HI000001"), "A");
}

TEST_F(LineSiteConditions, AnEmptyOrMissingHazardTableIsLoggedAndOnlyAFailureIsReported)
{
    clip({"SOIL"});
    regionClass(database(), "EqHighwaySegmenthft")->deleteSearchedRows();
    m_dataMaps->SyncLineHftforImport("hzHighwaySegment");
    EXPECT_TRUE(logged("Table  EqHighwaySegmenthft is Empty"));
    EXPECT_TRUE(takeMessageTexts().empty());

    geodatabase::Workspace::open(regionFolder() + database()).deleteDataset("EqHighwaySegmenthft");
    m_dataMaps->SyncLineHftforImport("hzHighwaySegment");
    EXPECT_TRUE(logged("Updation of the Table failed , error number : "));
    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{"Korval: Some error occured in data maps processing, "
                                        "please refer to DataMapsLog.txt in study region"}));
}

} // namespace
} // namespace brevant::test
