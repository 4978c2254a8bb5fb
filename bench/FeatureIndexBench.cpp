// FeatureIndex under the load of a statewide point transfer: 20,000 star-shaped polygons of
// 20-200 vertices on a jittered grid, with gaps between them, and 1,000,000 points, each asked
// for its containing polygon and, in a gap, for its nearest one. Seeded, so every run sees the
// same shapes and points.

#include "StarPolygons.h"
#include "platform/geometry/FeatureIndex.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <numbers>
#include <random>

namespace {

using brevant::bench::Cell;
using brevant::bench::Columns;
using brevant::bench::Origin;
using brevant::bench::PolygonCount;

using brevant::platform::geometry::FeatureIndex;
using brevant::platform::geometry::Geometry;
using brevant::platform::geometry::Point;

constexpr int PointCount = 1000000;
// Degrees, as hazard maps in geographic coordinates have them.

struct Data {
    std::vector<Geometry> polygons;
    std::vector<Point> points;
};

Data generate()
{
    std::mt19937_64 random(1234567);
    const auto uniform = [&random](double lo, double hi) {
        return std::uniform_real_distribution(lo, hi)(random);
    };
    Data data;
    data.polygons = brevant::bench::starPolygons(random);
    const double width = Columns * Cell;
    const double height = std::ceil(static_cast<double>(PolygonCount) / Columns) * Cell;
    data.points.reserve(PointCount);
    for (int i = 0; i < PointCount; ++i) {
        data.points.push_back({Origin.x + uniform(0, width), Origin.y + uniform(0, height)});
    }
    return data;
}

const Data& data()
{
    static const Data generated = generate();
    return generated;
}

void FeatureIndexBuild(benchmark::State& state)
{
    const Data& d = data();
    for (auto _ : state) {
        const FeatureIndex index(d.polygons);
        benchmark::DoNotOptimize(index.size());
    }
    state.SetItemsProcessed(state.iterations() * PolygonCount);
}
BENCHMARK(FeatureIndexBuild)->Unit(benchmark::kMillisecond);

// What a point transfer does per point: containing first, nearest only for points in gaps.
void FeatureIndexPointTransfer(benchmark::State& state)
{
    const Data& d = data();
    const FeatureIndex index(d.polygons);
    std::size_t contained = 0;
    std::size_t nearest = 0;
    for (auto _ : state) {
        contained = 0;
        nearest = 0;
        std::size_t checksum = 0;
        for (const Point& p : d.points) {
            if (const auto found = index.containing(p)) {
                ++contained;
                checksum += *found;
            } else if (const auto near = index.nearest(p)) {
                ++nearest;
                checksum += near->index;
            }
        }
        benchmark::DoNotOptimize(checksum);
    }
    state.counters["contained"] = static_cast<double>(contained);
    state.counters["nearest"] = static_cast<double>(nearest);
    state.SetItemsProcessed(state.iterations() * PointCount);
}
BENCHMARK(FeatureIndexPointTransfer)->Unit(benchmark::kMillisecond);

} // namespace
