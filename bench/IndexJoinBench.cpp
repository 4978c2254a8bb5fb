// The spatial value transfer of the library (context::UpdateFieldUsingIndexJoin, which every
// hazard-value update goes through) against the platform's own transfer
// (geodatabase::transferValues) on the same data: the shapes of FeatureIndexBench, 20,000
// star-shaped hazard polygons of 20-200 vertices with gaps between them, and points spread
// over them, each taking the polygon's "type" (the nearest polygon's for points in gaps). Both
// read and write the same GeoPackage, written once per run into the temporary folder and
// removed at exit. The points get their values once before any timing: the first write into
// empty fields grows the file and would favour whichever benchmark runs second. The procedure
// must stay within 1.2 times the platform's time.

#include "StarPolygons.h"
#include "context/EqUtilFunctions.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/ValueTransfer.h"
#include "platform/geodatabase/Workspace.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <filesystem>
#include <map>
#include <numbers>
#include <random>
#include <unistd.h>

namespace {

using namespace brevant::platform;
using geometry::Geometry;
using geometry::Point;
using brevant::bench::Cell;
using brevant::bench::Columns;
using brevant::bench::Origin;
using brevant::bench::PolygonCount;


class Data {
public:
    Data()
        : m_file(std::filesystem::temp_directory_path() /
                 ("brevant-indexjoin-bench-" + std::to_string(getpid()) + ".gpkg"))
    {
        std::filesystem::remove(m_file);
        m_workspace = std::make_unique<geodatabase::Workspace>(
            geodatabase::Workspace::createGeoPackage(m_file));
        writeHazard();
    }
    ~Data()
    {
        m_points.clear();
        m_hazard.reset();
        m_workspace.reset();
        std::error_code ec;
        std::filesystem::remove(m_file, ec);
    }
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    const geodatabase::FeatureClass& hazard() const { return *m_hazard; }

    /// The points class of a size, written on first use.
    geodatabase::FeatureClass& points(int count)
    {
        auto& points = m_points[count];
        if (!points) {
            points = writePoints(count);
            geodatabase::transferValues(*points, *m_hazard, points->findField("type"),
                                        m_hazard->findField("type"), false);
        }
        return *points;
    }

private:
    void writeHazard()
    {
        std::mt19937_64 random(1234567);
        m_hazard = m_workspace->createFeatureClass(
            "hazard", geodatabase::Fields({{"type", geodatabase::FieldType::String, 5, {}}}),
            geometry::ShapeType::Polygon);
        geodatabase::InsertCursor insert = m_hazard->insert();
        const auto polygons = brevant::bench::starPolygons(random);
        for (int i = 0; i < PolygonCount; ++i) {
            auto row = m_hazard->createRow();
            row.setValue(2, std::string(1, static_cast<char>('A' + i % 5)));
            row.setShape(polygons[static_cast<std::size_t>(i)]);
            insert.insertRow(row);
        }
        insert.flush();
    }

    std::shared_ptr<geodatabase::FeatureClass> writePoints(int count)
    {
        std::mt19937_64 random(7654321);
        const double width = Columns * Cell;
        const double height = std::ceil(static_cast<double>(PolygonCount) / Columns) * Cell;
        auto points = m_workspace->createFeatureClass(
            "points" + std::to_string(count),
            geodatabase::Fields({{"type", geodatabase::FieldType::String, 5, {}}}),
            geometry::ShapeType::Point);
        geodatabase::InsertCursor insert = points->insert();
        for (int i = 0; i < count; ++i) {
            auto row = points->createRow();
            row.setShape(
                Geometry::point({Origin.x + std::uniform_real_distribution(0.0, width)(random),
                                 Origin.y + std::uniform_real_distribution(0.0, height)(random)}));
            insert.insertRow(row);
        }
        insert.flush();
        return points;
    }

    std::filesystem::path m_file;
    std::unique_ptr<geodatabase::Workspace> m_workspace;
    std::shared_ptr<geodatabase::FeatureClass> m_hazard;
    std::map<int, std::shared_ptr<geodatabase::FeatureClass>> m_points;
};

Data& data()
{
    static Data generated;
    return generated;
}

void PlatformTransferValues(benchmark::State& state)
{
    auto& target = data().points(static_cast<int>(state.range(0)));
    const auto& source = data().hazard();
    const int targetField = target.findField("type");
    const int sourceField = source.findField("type");
    for (auto _ : state) {
        const auto counts =
            geodatabase::transferValues(target, source, targetField, sourceField, false);
        benchmark::DoNotOptimize(counts.contained);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(PlatformTransferValues)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void UpdateFieldUsingIndexJoin(benchmark::State& state)
{
    auto& target = data().points(static_cast<int>(state.range(0)));
    const auto& source = data().hazard();
    for (auto _ : state) {
        brevant::context::UpdateFieldUsingIndexJoin(target, source, "type", "type", false);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(UpdateFieldUsingIndexJoin)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
