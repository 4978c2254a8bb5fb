#include "datamaps/DataMapsFixture.h"
#include "datamaps/EqPolyGon.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

namespace brevant::test {
namespace {

namespace geodatabase = platform::geodatabase;
namespace local = host::local;
using platform::automation::Variant;
using platform::geometry::ShapeType;

/// The region of DataMapsFixture with the work copy of the grid in temp.mdb, MarPlot in
/// 3rdParty.mdb and a flood-view shapefile, and an EqPolyGon.
class PolygonTables : public DataMapsFixture {
protected:
    void SetUp() override
    {
        DataMapsFixture::SetUp();
        const auto host = local::HostRoot::load(root());
        local::createDatabase(*local::findDatabase(local::HostFolder::System, "temp.mdb"),
                              host.systemDataFolder() + "temp.mdb");
        local::createDatabase(*local::findDatabase(local::HostFolder::Region, "3rdParty.mdb"),
                              regionFolder() + "3rdParty.mdb");
        fill("3rdParty.mdb", "MarPlot", "Name", {{kWest, kSouth, kMiddle, kNorth, Variant("Plume")}});
        m_floodFolder = root() / "FloodView";
        auto shapes = geodatabase::Workspace::openShapefileFolder(m_floodFolder)
                          .createFeatureClass("depth", geodatabase::Fields({{"Name", geodatabase::FieldType::String, 20, {}}}),
                                              ShapeType::Polygon);
        {
            geodatabase::InsertCursor insert = shapes->insert();
            auto row = shapes->createRow();
            row.setShape(platform::geometry::Geometry::fromWkt(
                MapPatch{kWest, kSouth, kEast, kNorth, {}}.wkt()));
            insert.insertRow(row);
        }
        m_floodFile = (m_floodFolder / "depth.shp").string();
        // The site-condition update finds the grid through the catalogue, as the host keeps it.
        local::RegionDatabase(host.regionDatabasePath("Testville"))
            .putInventoryClass({"eqGrid", "RegionBndry.mdb", "P", ""});
        m_polygons = std::make_shared<datamaps::EqPolyGon>();
    }

    std::string bna() const { return readFile(regionFolder() + "FFE.BNA"); }
    std::vector<std::string> layerNames() const
    {
        std::vector<std::string> names;
        for (int i = 0; i < m_map->layerCount(); ++i) {
            names.push_back(m_map->layer(i)->name());
        }
        return names;
    }
    std::string setting(const std::string& key) const
    {
        return sqlValue("SELECT Value FROM Settings WHERE Section = 'General' AND Key = '" + key +
                        "'");
    }

    std::filesystem::path m_floodFolder;
    std::string m_floodFile;
    std::shared_ptr<datamaps::EqPolyGon> m_polygons;
};

TEST_F(PolygonTables, TractPointsAreAppendedWithDefaultsAndTheOutlinesWritten)
{
    // The east tract gets a hole: its header counts the vertices of both rings.
    auto tracts = regionClass("RegionBndry.mdb", "hztract");
    {
        geodatabase::Cursor cursor = tracts->update(geodatabase::QueryFilter::where("Tract = '06001400200'"));
        geodatabase::Row row;
        ASSERT_TRUE(cursor.next(row));
        row.setShape(platform::geometry::Geometry::fromWkt(
            "POLYGON ((-122.25 37.8, -122.2 37.8, -122.2 37.85, -122.25 37.85, -122.25 37.8), "
            "(-122.24 37.81, -122.24 37.82, -122.23 37.82, -122.24 37.81))"));
        cursor.updateRow(row);
    }
    m_polygons->CreateTractHFT();
    EXPECT_EQ(bna(), "\"06001400100\", 5\n"
                     "-122.3, 37.8\n-122.25, 37.8\n-122.25, 37.85\n-122.3, 37.85\n-122.3, 37.8\n"
                     "\"06001400200\", 9\n"
                     "-122.25, 37.8\n-122.2, 37.8\n-122.2, 37.85\n-122.25, 37.85\n-122.25, 37.8\n"
                     "-122.24, 37.81\n-122.24, 37.82\n-122.23, 37.82\n-122.24, 37.81\n"
                     "\n");
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqTract", "Tract"),
              (std::vector<std::string>{"06001400100", "06001400200"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqTract", "w_depth"), (std::vector<std::string>{"5", "5"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqTract", "Longitude"),
              (std::vector<std::string>{"-122.225", "-122.275"}));

    m_polygons->CreateTractHFT();
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqTract")->rowCount(), 4) << "each call appends";
}

TEST_F(PolygonTables, ARegionWithoutTractsWritesAnOutlineFileOfOneEmptyLine)
{
    regionClass("RegionBndry.mdb", "hztract")->deleteSearchedRows();
    m_polygons->CreateTractHFT();
    EXPECT_EQ(bna(), "\n");
}

TEST_F(PolygonTables, TheContourGridCoversTheBoundaryNumberedAndWithSiteConditions)
{
    setSetting("ContourGrid", "XSpacing", "0.01");
    setSetting("ContourGrid", "YSpacing", "0.01");
    setSetting("ContourGrid", "XOffset", "0.005");
    setSetting("ContourGrid", "YOffset", "0.005");
    registerMap("SOIL", {{kWest, kSouth, kMiddle, kNorth, Variant("A")},
                         {kMiddle, kSouth, kEast, kNorth, Variant("C")}});
    clip({"SOIL"});
    m_polygons->CreatContourGrid();

    const auto grid = regionClass("RegionBndry.mdb", "eqGrid");
    // Ten columns by five rows of points, all strictly inside the boundary.
    EXPECT_EQ(grid->rowCount(), 50);
    std::vector<std::string> ids = valuesOf("RegionBndry.mdb", "eqGrid", "EqGridId");
    EXPECT_EQ(ids.size(), 50u);
    EXPECT_EQ(grid->rowCount(geodatabase::QueryFilter::where("EqGridId >= 1 And EqGridId <= 50")), 50);
    EXPECT_EQ(grid->rowCount(geodatabase::QueryFilter::where("stype = 'A'")), 25);
    EXPECT_EQ(grid->rowCount(geodatabase::QueryFilter::where("stype = 'C'")), 25)
        << "the points take the soil of the clipped map under them";
    const auto host = local::HostRoot::load(root());
    EXPECT_EQ(geodatabase::Workspace::open(host.systemDataFolder() + "temp.mdb")
                  .openFeatureClass("eqGrid")
                  ->rowCount(),
              0);

    // A rebuild replaces the grid rather than adding to it.
    m_polygons->CreatContourGrid();
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqGrid")->rowCount(), 50);
}

TEST_F(PolygonTables, AGridTooDenseForItsSettingsFailsAndKeepsTheOldGrid)
{
    m_polygons->CreatContourGrid();
    const int64_t before = regionClass("RegionBndry.mdb", "eqGrid")->rowCount();
    setSetting("ContourGrid", "XSpacing", "0.00001");
    setSetting("ContourGrid", "YSpacing", "0.00001");
    const auto error = errorOf([&] { m_polygons->CreatContourGrid(); });
    EXPECT_EQ(error.number(), static_cast<int32_t>(0x8004060C));
    EXPECT_NE(errorLog().find(" CreatContourGrid"), std::string::npos);
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqGrid")->rowCount(), before);
}

TEST_F(PolygonTables, AGridWithoutItsNumberFieldIsLeftUnnumbered)
{
    {
        auto workspace = geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb");
        workspace.deleteDataset("eqGrid");
        workspace.createFeatureClass(
            "eqGrid", geodatabase::Fields({{"stype", geodatabase::FieldType::String, 1, {}}}),
            ShapeType::Point);
    }
    m_polygons->UpdateGridId();
    EXPECT_EQ(errorLog(), "") << errorLog();
}

TEST_F(PolygonTables, PlumeFootprintsReplaceTheirLayerAndFloodViewsAddOneEachTime)
{
    setSetting("General", "FLOODVIEWFILE", m_floodFile);
    m_polygons->MapMarPlotFootPrint();
    m_polygons->MapMarPlotFootPrint();
    m_polygons->MapFloodView();
    m_polygons->MapFloodView();
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"Flood view print", "Flood view print",
                                                      "Marplot foot print"}));
    EXPECT_TRUE(m_prompts->fileDialogs().empty()) << "an assigned file needs no dialog";
    const auto flood = std::dynamic_pointer_cast<platform::carto::FeatureLayer>(m_map->layer(0));
    ASSERT_TRUE(flood);
    EXPECT_TRUE(flood->selectable());
    EXPECT_TRUE(flood->visible());
}

TEST_F(PolygonTables, AnUnassignedFloodViewIsAskedForUntilAnExistingShapefileIsChosen)
{
    setSetting("General", "FLOODVIEWFILE", "NONE_");
    setSetting("General", "FLDVIEWPATH", m_floodFolder.string() + "/");
    m_prompts->queueAnswer("notes.txt");
    m_prompts->queueAnswer("missing.shp");
    m_prompts->queueAnswer("depth.shp");
    m_polygons->MapFloodView();
    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{
                  "KORVAL: Flood view output file (shape) is not assigned, please select your file.",
                  "KORVAL: InValid selection. ", "KORVAL: File Does not exits"}));
    EXPECT_EQ(setting("FLOODVIEWFILE"), m_floodFile);
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"Flood view print"}));
    EXPECT_EQ(m_prompts->fileDialogs().at(0).startFolder, m_floodFolder.string() + "/");
}

TEST_F(PolygonTables, CancellingTheFloodViewDialogChangesNothing)
{
    setSetting("General", "FLOODVIEWFILE", "NONE_");
    setSetting("General", "FLDVIEWPATH", m_floodFolder.string());
    m_prompts->queueAnswer("Cancel");
    m_polygons->MapFloodView();
    EXPECT_EQ(setting("FLOODVIEWFILE"), "NONE_");
    EXPECT_TRUE(layerNames().empty());
    EXPECT_EQ(errorLog(), "");
}

TEST_F(PolygonTables, ABuilderFailureUnderAMapProcedureReachesTheHostUnderItsCode)
{
    registerMap("SOIL", {{kWest, kSouth, kMiddle, kNorth, Variant("A")},
                         {kMiddle, kSouth, kEast, kNorth, Variant("C")}});
    clip({"SOIL"});
    // The soil map's class colours turn unreadable: the host's settings refuse them.
    const auto file = std::filesystem::path(local::HostRoot::load(root()).systemDataFolder()) /
                      "classes.json";
    auto settings = nlohmann::json::parse(readFile(file));
    std::function<void(nlohmann::json&)> spoil = [&](nlohmann::json& node) {
        if (node.is_object()) {
            for (auto& [key, value] : node.items()) {
                if (key == "colour") {
                    value = "1,2";
                } else {
                    spoil(value);
                }
            }
        } else if (node.is_array()) {
            for (auto& value : node) {
                spoil(value);
            }
        }
    };
    for (auto& type : settings.at("mapTypes")) {
        if (type.at("type") == 8) {
            spoil(type);
        }
    }
    std::ofstream(file) << settings.dump();

    const auto error = errorOf([&] { m_polygons->MapSoilDataMap(); });
    EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040608));
    EXPECT_EQ(error.description(), "Could not put the layer on the map: for soil map");
    const std::string log = errorLog();
    // One record per level the error climbs through, the last by the map procedure.
    for (const char* level :
         {"in GetUniquevalueRenderer for table eqsrsoil\n", "in GetSimpleThmMap for eqsrsoil\n",
          "in CreateThematicMap for eqsrsoil column type\n", "map: for soil map\n"}) {
        EXPECT_NE(log.find(level), std::string::npos) << level << " in\n" << log;
    }
}

TEST_F(PolygonTables, TheTractAnalysesRunOnTheTractTableUnderTheirTags)
{
    Variant progress;
    const auto error = errorOf([&] { m_polygons->AnalyzeProbScenarioforTract(500, progress); });
    EXPECT_EQ(error.number(), static_cast<int32_t>(0x8004060C));
    EXPECT_NE(errorLog().find(" AnalyzeProbDefinedScenario"), std::string::npos)
        << "the analysis's own trap records the missing probabilistic map";
}

} // namespace
} // namespace brevant::test
