#include "support/Executable.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;

TEST(PolygonScript, EveryMemberOfTheRegionPolygonsRunsByNameOnTheSampleHost)
{
    test::TempDir dir;
    const auto host = dir.path() / "host";
    ASSERT_EQ(test::runBrevant("sample-host " + host.string()).status, 0);
    const json empty = {{"empty", true}};
    const std::vector<json> statements{
        {{"new", "Brevant.EqPolyGon"}, {"as", "pg"}},
        {{"set", "pg.m_pMap"}, {"value", {{"ref", "map"}}}},
        {{"get", "pg.m_pMap"}},
        {{"open", "RegionBndry.mdb:eqTract"}, {"as", "points"}},
        {{"call", "pg.AddPointLayer"}, {"args", {{{"ref", "points"}}}}},
        {{"call", "pg.MapCensusTractBoundary"}},
        {{"call", "pg.MapStudyregionBoundary"}},
        {{"call", "pg.MapSoilDataMap"}},
        {{"call", "pg.MapLqfDataMap"}},
        {{"call", "pg.MapLndDataMap"}},
        {{"call", "pg.MapWAterDepthDataMap"}},
        {{"call", "pg.IsValid"}, {"args", {"RegionBndry.mdb", "hztract", "", empty, {{"i2", 0}}}}},
        {{"call", "pg.IsValidDatamap"},
         {"args", {"RegionBndry.mdb", "eqsrsoil", "", empty, {{"i2", 0}}, "SOIL"}}},
        {{"call", "pg.RefreshMap"}},
        {{"call", "pg.GenerateThmMap"}, {"args", {"eqTract", {{"i2", 0}}, {{"i2", 2}}, "pga"}}},
        {{"call", "pg.AddDefaultMaps"}},
        {{"call", "pg.CreateTractHFT"}},
        {{"call", "pg.AnalyzeInvtForUserDefinedScenario"}, {"args", {json::array({"PGAM"}), empty}}},
        {{"call", "pg.AnalyzeProbScenarioforTract"}, {"args", {{{"i2", 500}}, empty}}},
        {{"call", "pg.GenerateThematicMap"},
         {"args", {"eqTract", {{"i2", 0}}, {{"i2", 2}}, "pga", 0.0, 1.0}}},
        {{"call", "pg.CreatContourGrid"}},
        {{"call", "pg.MapMarPlotFootPrint"}},
        {{"call", "pg.MapFloodView"}},
        {{"describe", "map"}},
    };
    const auto script = dir.path() / "polygons.jsonl";
    {
        std::ofstream out(script);
        for (const auto& statement : statements) {
            out << statement.dump() << "\n";
        }
    }
    // The sample region's folder has a blank in its name.
    const auto run = test::runBrevant("script --host '" + host.string() + "' " + script.string());
    std::istringstream in(run.out);
    std::vector<json> results;
    for (std::string line; std::getline(in, line);) {
        results.push_back(json::parse(line));
    }
    ASSERT_EQ(results.size(), statements.size()) << run.out;
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_TRUE(results[i].at("ok")) << statements[i].dump() << " -> " << results[i].dump();
    }
    EXPECT_EQ(run.status, 0);
    std::set<std::string> layers;
    for (const auto& layer : results.back().at("result").at("layers")) {
        layers.insert(layer.at("name").get<std::string>());
    }
    for (const char* name : {"Study Region Tract", "Study Region Boundary", "Marplot foot print",
                             "Flood view print", "eqTract_pga"}) {
        EXPECT_TRUE(layers.count(name)) << name << " in " << results.back().dump();
    }
}

} // namespace
} // namespace brevant::app
