// The probabilistic scenario analysis of a statewide point inventory: 1,000,000 sites against
// the 20,000 star-shaped polygons of FeatureIndexBench as the region's "USGS" map, each site
// taking the four ground-motion values of return period 500 from the polygon that contains it
// or, in the gaps between polygons (about a quarter of the sites), from the nearest one.
//
// The data live in a reference host root written once per run into the temporary folder and
// removed at exit: region.sqlite with the inventory's server tables, USGS.mdb and trn.mdb.
// Before any timing one analysis runs end to end: the first run adds the result fields, grows
// the files and inserts the server rows, and would make whichever benchmark runs first look
// slow. It also leaves the return period that UpdateProbFieldValues reads.
//
// ProbabilisticAnalysis times AnalyzeProbDefinedScenario end to end; its three parts are timed
// alone as well: AddFields (the four result fields reset to 0.0), UpdateProbFieldValues (the
// transfer) and UpdateAnalysisTable (the reference host copying the results into the server
// analysis table).

#include "StarPolygons.h"
#include "analysis/EqProbabilistic.h"
#include "context/EqShape.h"
#include "context/StudyRegionContext.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalHostServices.h"
#include "host/local/MessageTexts.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <unistd.h>

namespace {

using namespace brevant::platform;
namespace local = brevant::host::local;
namespace fs = std::filesystem;
using brevant::bench::Cell;
using brevant::bench::Columns;
using brevant::bench::Origin;
using brevant::bench::PolygonCount;
using geometry::Geometry;

constexpr int kSites = 1000000;
constexpr const char* kRegion = "Bench";
constexpr const char* kInventory = "hzHighwayBridge";

class Region {
public:
    Region()
        : m_root(fs::temp_directory_path() / ("brevant-analysis-bench-" + std::to_string(getpid())))
    {
        fs::remove_all(m_root);
        local::HostRoot host(m_root);
        host.putRegion({kRegion, 1, {true, false, false}});
        host.setCurrentRegion(kRegion);
        host.save();
        local::MessageTexts::save(fs::path(host.systemDataFolder()) / "messages.json",
                                  local::MessageTexts::defaults());
        local::RegionDatabase::create(host.regionDatabasePath(kRegion));
        local::RegionDatabase settings(host.regionDatabasePath(kRegion));
        settings.write("General", "AggLevel", "2");
        settings.write("General", "CurrentRegionID", "1");
        settings.putInventoryClass({kInventory, "trn.mdb", "P", ""});
        {
            tabular::SqliteDatabase db(host.regionDatabasePath(kRegion).string(),
                                       tabular::SqliteDatabase::Mode::ReadWrite);
            local::createServerTables(db, local::inventoryServerTables(kInventory, 'P'));
        }
        const std::string folder = host.regionFolder(kRegion);
        writeUsgs(folder + "USGS.mdb");
        writeSites(folder + "trn.mdb", kInventory, kSites);

        brevant::host::installHostServices(std::make_shared<local::LocalHostServices>(m_root));
        brevant::context::resetStudyRegionContext();
        brevant::context::openStudyRegion(true);
        std::string table = kInventory;
        brevant::analysis::AnalyzeProbDefinedScenario(table, 500, {}, true);
        m_sites = workspace("trn.mdb").openFeatureClass(kInventory);
        m_usgs = workspace("USGS.mdb").openFeatureClass("USGS");
    }
    ~Region()
    {
        m_sites.reset();
        m_usgs.reset();
        brevant::context::resetStudyRegionContext();
        brevant::host::installHostServices(nullptr);
        std::error_code ec;
        fs::remove_all(m_root, ec);
    }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;

    geodatabase::FeatureClass& sites() { return *m_sites; }
    const geodatabase::FeatureClass& usgs() const { return *m_usgs; }

private:
    geodatabase::Workspace workspace(const std::string& file) const
    {
        const auto host = local::HostRoot::load(m_root);
        return geodatabase::Workspace::open(host.regionFolder(kRegion) + file);
    }

    static void writeUsgs(const std::string& path)
    {
        std::mt19937_64 random(1234567);
        auto database = local::createDatabase(
            *local::findDatabase(local::HostFolder::Region, "USGS.mdb"), path);
        auto usgs = database.openFeatureClass("USGS");
        const int fields[] = {usgs->findField("pga500"), usgs->findField("pgv500"),
                              usgs->findField("sa03500"), usgs->findField("sa10500")};
        const auto polygons = brevant::bench::starPolygons(random);
        geodatabase::InsertCursor insert = usgs->insert();
        for (int i = 0; i < PolygonCount; ++i) {
            auto row = usgs->createRow();
            for (int k = 0; k < 4; ++k) {
                row.setValue(fields[k], 0.01 * (i % 97) + k);
            }
            row.setShape(polygons[static_cast<std::size_t>(i)]);
            insert.insertRow(row);
        }
        insert.flush();
    }

    static void writeSites(const std::string& path, const std::string& name, int count)
    {
        auto database = geodatabase::Workspace::createGeoPackage(path);
        auto sites = database.createFeatureClass(
            name, geodatabase::Fields(local::inventoryFields(name, 'P')),
            geometry::ShapeType::Point);
        std::mt19937_64 random(7654321);
        const double width = Columns * Cell;
        const double height = std::ceil(static_cast<double>(PolygonCount) / Columns) * Cell;
        geodatabase::InsertCursor insert = sites->insert();
        char id[16];
        for (int i = 0; i < count; ++i) {
            auto row = sites->createRow();
            std::snprintf(id, sizeof id, "B%07d", i);
            row.setValue(2, std::string(id));
            row.setShape(
                Geometry::point({Origin.x + std::uniform_real_distribution(0.0, width)(random),
                                 Origin.y + std::uniform_real_distribution(0.0, height)(random)}));
            insert.insertRow(row);
        }
        insert.flush();
    }

    fs::path m_root;
    std::shared_ptr<geodatabase::FeatureClass> m_sites;
    std::shared_ptr<geodatabase::FeatureClass> m_usgs;
};

Region& region()
{
    static Region prepared;
    return prepared;
}

void ProbabilisticAnalysis(benchmark::State& state)
{
    region();
    for (auto _ : state) {
        std::string table = kInventory;
        brevant::analysis::AnalyzeProbDefinedScenario(table, 500, {}, true);
    }
    state.SetItemsProcessed(state.iterations() * kSites);
}
BENCHMARK(ProbabilisticAnalysis)->Unit(benchmark::kMillisecond)->UseRealTime();

void UpdateProbFieldValues(benchmark::State& state)
{
    auto& prepared = region();
    for (auto _ : state) {
        brevant::analysis::UpdateProbFieldValues(prepared.sites(), &prepared.usgs());
    }
    state.SetItemsProcessed(state.iterations() * kSites);
}
BENCHMARK(UpdateProbFieldValues)->Unit(benchmark::kMillisecond)->UseRealTime();

void AddFields(benchmark::State& state)
{
    auto& prepared = region();
    for (auto _ : state) {
        brevant::analysis::AddFields(prepared.sites());
    }
    state.SetItemsProcessed(state.iterations() * kSites);
}
BENCHMARK(AddFields)->Unit(benchmark::kMillisecond)->UseRealTime();

void UpdateAnalysisTable(benchmark::State& state)
{
    region();
    const auto service = brevant::host::hostServices().createGisUtilityService();
    const auto& mapTypes = brevant::analysis::probabilisticState().mapTypes;
    for (auto _ : state) {
        service->UpdateAnalysisTable(kInventory, "trn.mdb", mapTypes, true);
    }
    state.SetItemsProcessed(state.iterations() * kSites);
}
BENCHMARK(UpdateAnalysisTable)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
