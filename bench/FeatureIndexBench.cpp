// FeatureIndex under the load of a statewide point transfer: 20,000 star-shaped polygons of
// 20-200 vertices on a jittered grid, with gaps between them, and 1,000,000 points, each asked
// for its containing polygon and, in a gap, for its nearest one. Seeded, so every run sees the
// same shapes and points.

#include "platform/geometry/FeatureIndex.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <numbers>
#include <random>

namespace {

using brevant::platform::geometry::FeatureIndex;
using brevant::platform::geometry::Geometry;
using brevant::platform::geometry::Point;

constexpr int PolygonCount = 20000;
constexpr int PointCount = 1000000;
constexpr int Columns = 142;
// Degrees, as hazard maps in geographic coordinates have them.
constexpr double Cell = 0.02;
constexpr Point Origin{-98.0, 30.0};

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
    data.polygons.reserve(PolygonCount);
    for (int i = 0; i < PolygonCount; ++i) {
        const Point center{Origin.x + (i % Columns + 0.5 + uniform(-0.1, 0.1)) * Cell,
                           Origin.y + (i / Columns + 0.5 + uniform(-0.1, 0.1)) * Cell};
        const int vertices = std::uniform_int_distribution(20, 200)(random);
        const double radius = Cell * uniform(0.5, 0.62);
        std::vector<Point> ring;
        for (int k = 0; k < vertices; ++k) {
            const double angle = 2 * std::numbers::pi * k / vertices;
            const double r = radius * uniform(0.8, 1.0);
            ring.push_back({center.x + r * std::cos(angle), center.y + r * std::sin(angle)});
        }
        data.polygons.push_back(Geometry::polygon({ring}));
    }
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
