#include "samplehost/Shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace brevant::samplehost {

Path starRing(Random& random, Point c, double hx, double hy, int vertices)
{
    const Point o{c.x + hx * random.uniform(-0.03, 0.03), c.y + hy * random.uniform(-0.03, 0.03)};
    const double base = random.uniform(0.83, 0.92);
    const int lobes = random.integer(2, 6);
    const double phase = random.uniform(0.0, 2 * kPi);
    const double startAngle = random.uniform(0.0, 2 * kPi);
    Path ring;
    ring.reserve(at(vertices) + 1);
    for (int i = 0; i < vertices; ++i) {
        const double angle =
            startAngle + 2 * kPi * (i + 0.5 + random.uniform(-0.35, 0.35)) / vertices;
        const double cs = std::cos(angle);
        const double sn = std::sin(angle);
        const double toEdge = 1.0 / std::max(std::abs(cs), std::abs(sn));
        const double radius = std::clamp(base + 0.05 * std::sin(lobes * angle + phase) +
                                             random.uniform(-0.015, 0.015),
                                         0.55, 0.95) *
                              toEdge;
        ring.push_back({o.x + hx * radius * cs, o.y + hy * radius * sn});
    }
    ring.push_back(ring.front());
    return ring;
}

int mapVertices(Random& random)
{
    const double u = random.uniform();
    return 20 + static_cast<int>(180.0 * u * u * u);
}

Path bowTie(Point c, double hx, double hy)
{
    const std::array<Point, 4> corners{
        {{c.x - hx, c.y - hy}, {c.x + hx, c.y + hy}, {c.x + hx, c.y - hy}, {c.x - hx, c.y + hy}}};
    Path ring;
    for (std::size_t k = 0; k < 4; ++k) {
        const Point a = corners[k];
        const Point b = corners[(k + 1) % 4];
        for (int s = 0; s < 6; ++s) {
            ring.push_back({a.x + (b.x - a.x) * s / 6.0, a.y + (b.y - a.y) * s / 6.0});
        }
    }
    ring.push_back(ring.front());
    return ring;
}

Path sliver(Point c, double hx, double hy)
{
    return {{c.x - hx, c.y - 0.1 * hy},
            {c.x, c.y},
            {c.x + hx, c.y + 0.1 * hy},
            {c.x - hx, c.y - 0.1 * hy}};
}

Path meander(Random& random, Point a, Point b, double amplitude, double spacing)
{
    const double length = groundDistance(a, b);
    const int count = std::max(8, static_cast<int>(length / spacing));
    const double angle =
        std::atan2(b.y - a.y, (b.x - a.x) * kLongitudeScale) + kPi / 2; // across the line
    std::array<double, 4> weights{};
    std::array<double, 4> phases{};
    for (std::size_t k = 0; k < weights.size(); ++k) {
        weights[k] = random.uniform(-1.0, 1.0) / static_cast<double>(k + 1);
        phases[k] = random.uniform(0.0, 2 * kPi);
    }
    Path path;
    for (int i = 0; i <= count; ++i) {
        const double t = static_cast<double>(i) / count;
        double lateral = 0;
        for (std::size_t k = 0; k < weights.size(); ++k) {
            lateral += weights[k] * std::sin((k + 1) * 2 * kPi * t + phases[k]);
        }
        lateral *= amplitude * length * std::sin(kPi * t);
        const Point on{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
        path.push_back(offset(on, angle, lateral));
    }
    return path;
}

double pathLength(const Path& path)
{
    double length = 0;
    for (std::size_t k = 1; k < path.size(); ++k) {
        length += groundDistance(path[k - 1], path[k]);
    }
    return length;
}

Path subPath(const Path& path, double from, double to)
{
    Path piece;
    double walked = 0;
    for (std::size_t k = 1; k < path.size(); ++k) {
        const double step = groundDistance(path[k - 1], path[k]);
        const auto along = [&](double d) {
            const double t = step > 0 ? (d - walked) / step : 0.0;
            return Point{path[k - 1].x + t * (path[k].x - path[k - 1].x),
                         path[k - 1].y + t * (path[k].y - path[k - 1].y)};
        };
        if (piece.empty() && walked + step >= from) {
            piece.push_back(along(std::max(from, walked)));
        }
        if (!piece.empty()) {
            if (walked + step >= to) {
                piece.push_back(along(to));
                break;
            }
            piece.push_back(path[k]);
        }
        walked += step;
    }
    if (piece.size() == 1) {
        piece.push_back(path.back());
    }
    return piece;
}

std::pair<double, double> distanceToPath(Point p, const Path& path)
{
    double best = std::numeric_limits<double>::max();
    double bestAlong = 0;
    double walked = 0;
    const double total = pathLength(path);
    for (std::size_t k = 1; k < path.size(); ++k) {
        const double ax = path[k - 1].x * kLongitudeScale;
        const double ay = path[k - 1].y;
        const double bx = path[k].x * kLongitudeScale;
        const double by = path[k].y;
        const double px = p.x * kLongitudeScale;
        const double dx = bx - ax;
        const double dy = by - ay;
        const double step2 = dx * dx + dy * dy;
        const double t =
            step2 > 0 ? std::clamp(((px - ax) * dx + (p.y - ay) * dy) / step2, 0.0, 1.0) : 0.0;
        const double d = std::hypot(px - (ax + t * dx), p.y - (ay + t * dy));
        if (d < best) {
            best = d;
            bestAlong = walked + t * std::sqrt(step2);
        }
        walked += std::sqrt(step2);
    }
    return {best, total > 0 ? bestAlong / total : 0.0};
}

double rounded(double value, double step)
{
    return std::round(value / step) * step;
}

Envelope boxOf(const Path& path, double margin)
{
    Envelope box;
    for (const Point& p : path) {
        box.expandToInclude(p);
    }
    return box.expandedBy(margin);
}

} // namespace brevant::samplehost
