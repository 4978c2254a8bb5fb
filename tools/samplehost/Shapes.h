#pragma once

#include "samplehost/Geography.h"
#include "samplehost/Random.h"

#include <utility>
#include <vector>

namespace brevant::samplehost {

/// Indexes are ints throughout; containers want sizes.
inline std::size_t at(int index)
{
    return static_cast<std::size_t>(index);
}

using Path = std::vector<Point>;
using Rings = std::vector<Path>;

/// A star-shaped ring filling most of the rectangle of centre `c` and half-sizes `hx`, `hy`:
/// angles strictly increase round the centre, so the ring is simple whatever its radii, and
/// radii reach into the corners, so gaps between neighbours stay narrow.
Path starRing(Random& random, Point c, double hx, double hy, int vertices);

/// Vertices per map polygon: between 20 and 200, most of them near the low end.
int mapVertices(Random& random);

/// A figure-eight: the ring crosses itself in the middle.
Path bowTie(Point c, double hx, double hy);

/// A ring of collinear points: no area at all.
Path sliver(Point c, double hx, double hy);

/// A gently winding line from `a` to `b`, pinned at both ends.
Path meander(Random& random, Point a, Point b, double amplitude, double spacing);

double pathLength(const Path& path);

/// The piece of `path` between the distances `from` and `to` along it.
Path subPath(const Path& path, double from, double to);

/// Distance from `p` to the path, and how far along the path (0 to 1) the nearest point lies.
std::pair<double, double> distanceToPath(Point p, const Path& path);

double rounded(double value, double step);

/// The box of `path`, widened by `margin` on every side.
Envelope boxOf(const Path& path, double margin);

} // namespace brevant::samplehost
