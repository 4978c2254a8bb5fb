#include "app/CommandLine.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalInventoryCatalogService.h"
#include "host/local/RegionDatabase.h"
#include "samplehost/SampleHost.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace brevant::samplehost {
namespace {

namespace fs = std::filesystem;
using host::local::HostRoot;
using host::local::RegionDatabase;
using platform::geodatabase::Workspace;

class SampleHost : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new test::TempDir;
        s_report = writeSampleHost(s_dir->path() / "host", SampleSize::Small, 7);
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }

    static fs::path root() { return s_dir->path() / "host"; }

    static test::TempDir* s_dir;
    static SampleHostReport s_report;
};

test::TempDir* SampleHost::s_dir = nullptr;
SampleHostReport SampleHost::s_report;

TEST_F(SampleHost, RegionMapsAndInventoryComeFromTheBuilders)
{
    EXPECT_GT(s_report.tracts, 20);
    EXPECT_EQ(s_report.maps, 12) << "four site, four inundation and four ground-motion maps";
    EXPECT_GT(s_report.repaired, 0) << "the planted bow ties and slivers";
    const HostRoot host = HostRoot::load(root());
    EXPECT_EQ(host.currentRegion(), s_report.region);
    const RegionDatabase region(host.regionDatabasePath(s_report.region));
    EXPECT_EQ(region.userMaps().size(), 12u);

    host::local::LocalInventoryCatalogService catalogue(root());
    platform::automation::Variant names;
    platform::automation::Variant databases;
    platform::automation::Variant kinds;
    catalogue.GetInventoryClasses(names, databases, kinds);
    EXPECT_EQ(names.array().size(), 16u)
        << "fifteen inventory classes but the levees, which keep no site conditions; eqTract and "
           "eqGrid";
    const fs::path folder(host.regionFolder(s_report.region));
    auto hospitals = Workspace::open(folder / "ef.mdb", true).openFeatureClass("hzCareFlty");
    EXPECT_GT(hospitals->rowCount(), 0) << "footprints become points";
    EXPECT_EQ(hospitals->shapeType(), platform::geometry::ShapeType::Point);
    EXPECT_GT(Workspace::open(folder / "uds.mdb", true).openFeatureClass("eqAebm")->rowCount(), 100);
}

TEST_F(SampleHost, DataWithoutABuilderLandsInTheSystemsClasses)
{
    const HostRoot host = HostRoot::load(root());
    const fs::path state(host.stateDataFolder());
    EXPECT_GT(Workspace::open(state / "CA" / "bndrygbs.mdb", true)
                  .openFeatureClass("hzCensusBlock")
                  ->rowCount(),
              100);
    EXPECT_EQ(Workspace::open(state / "syboundary.mdb", true).openFeatureClass("syState")->rowCount(),
              3);
    const fs::path scenario(host.scenarioFolder());
    EXPECT_GT(Workspace::open(scenario / "SCENARIO.mdb", true).openFeatureClass("eqEpicenter")->rowCount(),
              0);
    EXPECT_GT(Workspace::open(scenario / "SrScenario.mdb", true)
                  .openFeatureClass("eqSrWestFault")
                  ->rowCount(),
              0);
    const fs::path folder(host.regionFolder(s_report.region));
    EXPECT_GT(Workspace::open(folder / "USGS.mdb", true).openFeatureClass("USGS")->rowCount(), 0);
    EXPECT_GT(Workspace::open(folder / "3rdParty.mdb", true).openFeatureClass("MarPlot")->rowCount(), 0);
    const RegionDatabase region(host.regionDatabasePath(s_report.region));
    EXPECT_TRUE(fs::exists(region.readString("General", "FLOODVIEWFILE")));
}

TEST_F(SampleHost, EveryClassOpensThroughTheScriptHost)
{
    const fs::path script = s_dir->path() / "nine.jsonl";
    {
        std::ofstream out(script);
        for (const char* progId :
             {"EqPoint", "EqPolyLine", "EqDataMaps", "EqPolyGon", "EqCustomMap", "EQMapSelDlg",
              "RegionExpImp", "EqOpenDocument", "EqThmMap"}) {
            out << R"({"new": "Brevant.)" << progId << R"("})" << "\n";
        }
    }
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(app::runCommandLine({"script", "--host", root().string(), script.string()}, in, out,
                                  err),
              0)
        << out.str() << err.str();
    std::istringstream lines(out.str());
    std::string line;
    int created = 0;
    while (std::getline(lines, line)) {
        EXPECT_EQ(line.rfind(R"({"ok":true)", 0), 0u) << line;
        ++created;
    }
    EXPECT_EQ(created, 9);
}

} // namespace
} // namespace brevant::samplehost
