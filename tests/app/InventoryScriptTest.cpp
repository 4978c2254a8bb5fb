#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/Executable.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;
namespace geodatabase = platform::geodatabase;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;

/// A sample host, and a user's files of new schools and roads placed where the sample's own
/// schools are (inside the region), with one school and one road end far outside it.
class InventoryScript : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_host = m_dir.path() / "host";
        ASSERT_EQ(test::runBrevant("sample-host " + m_host.string()).status, 0);
        m_region = m_host / "Regions/Drystead Metro";
        std::vector<Point> places;
        {
            auto schools = geodatabase::Workspace::open(m_region / "ef.mdb").openFeatureClass("hzSchool");
            m_schoolsBefore = schools->rowCount();
            geodatabase::Cursor cursor = schools->search();
            geodatabase::Row row;
            while (places.size() < 4 && cursor.next(row)) {
                places.push_back(row.shape().firstPoint());
            }
        }
        ASSERT_EQ(places.size(), 4u);
        m_files = m_dir.path() / "user.gpkg";
        auto user = geodatabase::Workspace::createGeoPackage(m_files);
        const geodatabase::Fields fields({{"Name", geodatabase::FieldType::String, 40, {}}});
        auto schools = user.createFeatureClass("new_schools", fields, ShapeType::Point);
        auto roads = user.createFeatureClass("new_roads", fields, ShapeType::Polyline);
        user.createTable("no_shapes", fields);
        geodatabase::InsertCursor addSchool = schools->insert();
        geodatabase::InsertCursor addRoad = roads->insert();
        for (std::size_t i = 0; i < places.size(); ++i) {
            auto row = schools->createRow();
            row.setValue(2, "New " + std::to_string(i));
            row.setShape(Geometry::point({places[i].x + 1e-4, places[i].y}));
            addSchool.insertRow(row);
        }
        auto far = schools->createRow();
        far.setValue(2, "Far");
        far.setShape(Geometry::point({-100.0, 45.0}));
        addSchool.insertRow(far);
        auto road = roads->createRow();
        road.setValue(2, "Main");
        road.setShape(Geometry::polyline({{places[0], places[1], places[2]}}));
        addRoad.insertRow(road);
        auto leaving = roads->createRow();
        leaving.setValue(2, "Leaving");
        leaving.setShape(Geometry::polyline({{places[3], {-130.0, places[3].y}}}));
        addRoad.insertRow(leaving);
    }

    std::vector<json> run(const std::vector<json>& statements, int& status)
    {
        const auto path = m_dir.path() / "script.jsonl";
        {
            std::ofstream out(path);
            for (const auto& statement : statements) {
                out << statement.dump() << "\n";
            }
        }
        const auto outcome =
            test::runBrevant("script --host '" + m_host.string() + "' " + path.string());
        status = outcome.status;
        std::vector<json> results;
        std::istringstream in(outcome.out);
        for (std::string line; std::getline(in, line);) {
            results.push_back(json::parse(line));
        }
        return results;
    }

    int64_t rows(const std::string& database, const std::string& name) const
    {
        return geodatabase::Workspace::open(m_region / database).openTable(name)->rowCount();
    }

    test::TempDir m_dir;
    std::filesystem::path m_host;
    std::filesystem::path m_region;
    std::filesystem::path m_files;
    int64_t m_schoolsBefore = 0;
};

TEST_F(InventoryScript, ImportsPointsAndLinesAndRunsBothAnalysesByName)
{
    const json noProgress = {{"empty", true}};
    const std::vector<json> statements{
        {{"new", "Brevant.EqPoint"}, {"as", "pt"}},
        {{"new", "Brevant.EqPolyLine"}, {"as", "ln"}},
        {{"call", "pt.ImportData"}, {"args", {"hzSchool", m_files.string(), "new_schools"}}},
        {{"call", "ln.ImportData"},
         {"args", {"hzHighwaySegment", m_files.string(), "new_roads"}}},
        {{"call", "pt.AnalyzeUserDefinedScenario"},
         {"args", {"SCHOOLS", json::array({"PGAM", "SA10"}), noProgress}}},
        {{"call", "pt.AnalyzeProbabilisticScenario"},
         {"args", {"SCHOOLS", {{"i2", 500}}, noProgress}}},
        {{"call", "ln.AnalyzeUserDefinedScenario"},
         {"args", {"HIGHWAYS", json::array({"PGAM"}), noProgress}}},
        {{"call", "ln.AnalyzeProbabilisticScenario"},
         {"args", {"HIGHWAYS", {{"i2", 500}}, noProgress}}},
    };
    int status = -1;
    const auto results = run(statements, status);
    ASSERT_EQ(results.size(), statements.size());
    for (const auto& result : results) {
        EXPECT_TRUE(result.at("ok")) << result.dump();
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(results[2].at("messages").size(), 1u) << results[2].dump();
    EXPECT_EQ(rows("ef.mdb", "hzSchool"), m_schoolsBefore + 4);

    // Every school now carries the 500-year values of the probabilistic map.
    auto schools = geodatabase::Workspace::open(m_region / "ef.mdb").openFeatureClass("hzSchool");
    EXPECT_EQ(schools->rowCount(geodatabase::QueryFilter::where("pga > 0")), schools->rowCount());
    auto roads = geodatabase::Workspace::open(m_region / "trn.mdb");
    EXPECT_EQ(roads.openTable("hzHighwaySegment")->rowCount(geodatabase::QueryFilter::where(
                  "Name In ('Main', 'Leaving')")),
              2);
}

TEST_F(InventoryScript, BadInputGivesTheMembersErrorAndLeavesTheInventory)
{
    const std::vector<json> statements{
        {{"new", "Brevant.EqPoint"}, {"as", "pt"}},
        {{"call", "pt.ImportData"}, {"args", {"hzNoSuchClass", m_files.string(), "new_schools"}}},
        {{"call", "pt.ImportData"}, {"args", {"hzSchool", m_files.string(), "no_shapes"}}},
        {{"call", "pt.ImportData"},
         {"args", {"hzSchool", (m_dir.path() / "missing.gpkg").string(), "x"}}},
        {{"call", "pt.SyncronizePointMap"}, {"args", {"hzSchool", {{"i2", 9}}}}},
        {{"new", "Brevant.EqPolyLine"}, {"as", "ln"}},
        {{"call", "ln.ImportData"},
         {"args", {"hzHighwaySegment", m_files.string(), "new_schools"}}},
    };
    const int64_t roadsBefore = rows("trn.mdb", "hzHighwaySegment");
    int status = -1;
    const auto results = run(statements, status);
    ASSERT_EQ(results.size(), statements.size());
    EXPECT_EQ(status, 1);
    for (std::size_t i = 1; i < results.size(); ++i) {
        if (statements[i].contains("new")) {
            continue;
        }
        EXPECT_FALSE(results[i].at("ok")) << results[i].dump();
        EXPECT_EQ(results[i].at("error").at("hex"), "0x8004060C") << results[i].dump();
    }
    EXPECT_EQ(rows("ef.mdb", "hzSchool"), m_schoolsBefore);
    EXPECT_EQ(rows("trn.mdb", "hzHighwaySegment"), roadsBefore) << "points are no roads";
    // The host's text names the member; the cause says what went wrong in it.
    EXPECT_EQ(results[3].at("error").at("description"), "The map engine failed in ImportData");
    EXPECT_NE(results[3].at("error").at("cause").at("description").get<std::string>().find(
                  "missing.gpkg"),
              std::string::npos)
        << results[3].dump();
}

} // namespace
} // namespace brevant::app
