#pragma once

// The hazard polygons of the value-transfer benchmarks: star-shaped polygons of 20-200 vertices
// on a jittered grid of degree-sized cells, with gaps between them, so that points fall inside
// some polygon about three times in four and need the nearest one otherwise. Seeded, so every
// benchmark sees the same shapes.

#include "platform/geometry/Geometry.h"

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace brevant::bench {

inline constexpr int PolygonCount = 20000;
inline constexpr int Columns = 142;
// Degrees, as hazard maps in geographic coordinates have them.
inline constexpr double Cell = 0.02;
inline constexpr platform::geometry::Point Origin{-98.0, 30.0};

/// The polygons, drawn from `random` (which the caller goes on using for points).
inline std::vector<platform::geometry::Geometry> starPolygons(std::mt19937_64& random)
{
    using platform::geometry::Point;
    const auto uniform = [&random](double lo, double hi) {
        return std::uniform_real_distribution(lo, hi)(random);
    };
    std::vector<platform::geometry::Geometry> polygons;
    polygons.reserve(PolygonCount);
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
        polygons.push_back(platform::geometry::Geometry::polygon({ring}));
    }
    return polygons;
}

} // namespace brevant::bench
