// Drawing a statewide polygon map: 100,000 polygons of 50 vertices each (census-block sized
// cells on a 400 by 250 grid in geographic coordinates, a class-breaks renderer of five
// classes) into a 1600 by 1200 picture, at the full extent and zoomed to a sixteenth of it.
// The GeoPackage is written once per run into the temporary folder and removed at exit.

#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/display/MapRenderer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <unistd.h>

namespace {

using namespace brevant::platform;

constexpr int Columns = 400;
constexpr int Rows = 250;
constexpr int Vertices = 50;
constexpr double Cell = 0.01;
constexpr double West = -100.0;
constexpr double South = 30.0;

struct Data {
    std::filesystem::path file;
    std::shared_ptr<carto::Map> map;

    Data()
        : file(std::filesystem::temp_directory_path() /
               ("brevant-render-bench-" + std::to_string(getpid()) + ".gpkg"))
    {
        std::filesystem::remove(file);
        auto workspace = geodatabase::Workspace::createGeoPackage(file);
        auto blocks = workspace.createFeatureClass(
            "blocks", geodatabase::Fields({{"value", geodatabase::FieldType::Double, 0, {}}}),
            geometry::ShapeType::Polygon);
        {
            geodatabase::InsertCursor insert = blocks->insert();
            for (int i = 0; i < Columns * Rows; ++i) {
                const double cx = West + (i % Columns + 0.5) * Cell;
                const double cy = South + (i / Columns + 0.5) * Cell;
                std::vector<geometry::Point> ring;
                for (int k = 0; k < Vertices; ++k) {
                    const double angle = 2 * std::numbers::pi * k / Vertices;
                    // A wavy outline, so that no two edges are collinear.
                    const double r = Cell * (0.42 + 0.05 * std::sin(7 * angle + i));
                    ring.push_back({cx + r * std::cos(angle), cy + r * std::sin(angle)});
                }
                geodatabase::Row row = blocks->createRow();
                row.setValue(2, static_cast<double>(i % 97));
                row.setShape(geometry::Geometry::polygon({ring}));
                insert.insertRow(row);
            }
        }
        auto layer = std::make_shared<carto::FeatureLayer>(blocks);
        carto::ClassBreaksRenderer breaks;
        breaks.setField("value");
        breaks.setBreakCount(5);
        for (int k = 0; k < 5; ++k) {
            breaks.setBreak(k, 20.0 * (k + 1));
            breaks.setSymbol(k, carto::SimpleFillSymbol{
                                    carto::SimpleFillStyle::Solid,
                                    {255, 230 - 45 * k, 190 - 38 * k},
                                    carto::SimpleLineSymbol{
                                        carto::SimpleLineStyle::Solid, {110, 110, 110}, 0.4}});
        }
        layer->setRenderer(breaks);
        map = std::make_shared<carto::Map>();
        map->addLayer(layer);
    }
    ~Data()
    {
        map.reset();
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
};

const Data& data()
{
    static const Data generated;
    return generated;
}

void render(benchmark::State& state, const geometry::Envelope& extent)
{
    const Data& d = data();
    const display::MapRenderer renderer(*d.map);
    for (auto _ : state) {
        QImage image = renderer.render(extent, QSize(1600, 1200));
        benchmark::DoNotOptimize(image.constBits());
    }
}

void RenderPolygonsFullExtent(benchmark::State& state)
{
    render(state, {West, South, West + Columns * Cell, South + Rows * Cell});
    state.SetItemsProcessed(state.iterations() * Columns * Rows);
}
BENCHMARK(RenderPolygonsFullExtent)->Unit(benchmark::kMillisecond)->UseRealTime();

void RenderPolygonsZoomed(benchmark::State& state)
{
    render(state, {West + 1.0, South + 0.6, West + 2.0, South + 1.225});
}
BENCHMARK(RenderPolygonsZoomed)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
