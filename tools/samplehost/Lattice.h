#pragma once

#include "samplehost/Random.h"
#include "samplehost/Shapes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace brevant::samplehost {

/// Hexagonal cells in offset rows (odd rows shifted by half a cell), every vertex shared by
/// exactly three cells: the boundary of any set of cells is then made of simple rings that
/// never touch themselves, and units built from cells share their edges vertex for vertex.
/// Vertices are jittered by a hash of their number, so borders look drawn, not gridded.
class Lattice {
public:
    Lattice(const Envelope& extent, std::int64_t cellTarget, std::uint64_t seed)
        : m_seed(mix(seed ^ 0x1a771ce))
    {
        m_h = std::sqrt(extent.width() * extent.height() * kLongitudeScale /
                        (1.1547 * static_cast<double>(cellTarget)));
        m_w = 1.1547 * m_h / kLongitudeScale;
        m_columns = static_cast<int>(std::ceil(extent.width() / m_w)) + 1;
        m_rows = static_cast<int>(std::ceil(extent.height() / m_h));
        m_x0 = extent.xmin() - m_w / 2;
        m_y0 = extent.ymin();
        m_lineVertices = 2 * m_columns + 2;
    }

    int cellCount() const { return m_columns * m_rows; }
    int vertexCount() const { return m_lineVertices * (m_rows + 1); }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    /// Degrees that one side of a cell spans across and up.
    double sideX() const { return m_w / std::sqrt(3.0); }
    double sideY() const { return m_h / 1.5; }
    double cellArea() const { return m_w * m_h; }

    Point centre(int cell) const
    {
        const int i = cell % m_columns;
        const int j = cell / m_columns;
        return {m_x0 + ((j & 1) + 2 * i + 1) * m_w / 2, m_y0 + (j + 0.5) * m_h};
    }
    /// Position in cell units, for noise that looks the same in every direction.
    Point gridPosition(int cell) const
    {
        const int i = cell % m_columns;
        const int j = cell / m_columns;
        return {i + 0.5 * (j & 1), j * 0.866};
    }

    Point vertex(int v) const
    {
        const int k = v % m_lineVertices;
        const int j = v / m_lineVertices;
        // A vertex with an edge going up is a hexagon's top; one with an edge going down, its
        // bottom.
        const double shape = (k & 1) == (j & 1) ? m_h / 6 : -m_h / 6;
        const std::uint64_t bits = mix(m_seed ^ static_cast<std::uint64_t>(v));
        const double jx = (unitOf(bits) - 0.5) * 0.3 * sideX();
        const double jy = (unitOf(mix(bits)) - 0.5) * 0.3 * sideY();
        return {m_x0 + k * m_w / 2 + jx, m_y0 + j * m_h + shape + jy};
    }

    /// Vertices counter-clockwise from the bottom left; edge e runs from corner e to e + 1.
    std::array<int, 6> corners(int cell) const
    {
        const int i = cell % m_columns;
        const int j = cell / m_columns;
        const int a = (j & 1) + 2 * i;
        const int bottom = j * m_lineVertices + a;
        const int top = bottom + m_lineVertices;
        return {bottom, bottom + 1, bottom + 2, top + 2, top + 1, top};
    }

    /// The cell across each edge of `corners`, -1 beyond the lattice.
    std::array<int, 6> neighbours(int cell) const
    {
        const int i = cell % m_columns;
        const int j = cell / m_columns;
        const int o = j & 1;
        const auto cellOf = [&](int ci, int cj) {
            return ci < 0 || cj < 0 || ci >= m_columns || cj >= m_rows ? -1 : cj * m_columns + ci;
        };
        return {cellOf(i - 1 + o, j - 1), cellOf(i + o, j - 1),     cellOf(i + 1, j),
                cellOf(i + o, j + 1),     cellOf(i - 1 + o, j + 1), cellOf(i - 1, j)};
    }

    /// The cell whose centre row and column hold `p` (approximately the cell under it).
    int cellAt(Point p) const
    {
        const int j = static_cast<int>(std::floor((p.y - m_y0) / m_h));
        if (j < 0 || j >= m_rows) {
            return -1;
        }
        const int i = static_cast<int>(std::floor(((p.x - m_x0) / (m_w / 2) - (j & 1)) / 2));
        return i < 0 || i >= m_columns ? -1 : j * m_columns + i;
    }

    /// A point strictly inside the cell, clear of its jittered edges: `radius` in [0, 1].
    Point inside(int cell, double angle, double radius) const
    {
        const Point c = centre(cell);
        const double r = 0.3 * radius;
        return {c.x + r * sideX() * std::cos(angle), c.y + r * sideY() * std::sin(angle)};
    }

private:
    std::uint64_t m_seed;
    double m_w = 0, m_h = 0, m_x0 = 0, m_y0 = 0;
    int m_columns = 0, m_rows = 0, m_lineVertices = 0;
};

/// Cells in the order of a Hilbert curve: seeds spread along it come out evenly spread on the
/// map, and units numbered along it get neighbouring codes.
struct CurveOrder {
    std::vector<int> order;
    std::vector<int> rank;

    explicit CurveOrder(const Lattice& lattice)
    {
        int side = 1;
        while (side < std::max(lattice.columns(), lattice.rows())) {
            side *= 2;
        }
        const int n = lattice.cellCount();
        std::vector<std::pair<std::uint64_t, int>> keys(static_cast<std::size_t>(n));
        for (int c = 0; c < n; ++c) {
            std::uint64_t x = static_cast<std::uint64_t>(c % lattice.columns());
            std::uint64_t y = static_cast<std::uint64_t>(c / lattice.columns());
            std::uint64_t d = 0;
            for (std::uint64_t s = static_cast<std::uint64_t>(side) / 2; s > 0; s /= 2) {
                const std::uint64_t rx = (x & s) > 0 ? 1 : 0;
                const std::uint64_t ry = (y & s) > 0 ? 1 : 0;
                d += s * s * ((3 * rx) ^ ry);
                if (ry == 0) {
                    if (rx == 1) {
                        x = s - 1 - (x & (s - 1));
                        y = s - 1 - (y & (s - 1));
                    }
                    std::swap(x, y);
                }
            }
            keys[static_cast<std::size_t>(c)] = {d, c};
        }
        std::sort(keys.begin(), keys.end());
        order.resize(keys.size());
        rank.resize(keys.size());
        for (std::size_t k = 0; k < keys.size(); ++k) {
            order[k] = keys[k].second;
            rank[static_cast<std::size_t>(keys[k].second)] = static_cast<int>(k);
        }
    }
};

/// A partition of cells into units (states, counties, tracts, blocks), each unit a child of a
/// unit of the level above.
struct Units {
    std::vector<int> label;  // per cell, -1 outside every unit
    std::vector<int> parent; // per unit
    std::vector<int> seed;   // per unit, the cell it grew from
    std::vector<int> cells;  // per unit

    int count() const { return static_cast<int>(parent.size()); }
};

/// Splits every parent unit into `wanted[parent]` children grown from seeds spread along the
/// curve by `weight` (dense places get more, hence smaller, children). Growth is a shortest-path
/// race over noisy cell costs, which keeps each child in one piece and gives it an irregular
/// border. A piece of a parent no seed reaches (an island) becomes a child of its own when it
/// is large enough and otherwise joins the nearest child.
Units subdivide(const Lattice& lattice, const CurveOrder& curve, const Units& parents,
                const std::vector<int>& wanted, const std::vector<float>& weight,
                const Noise& costNoise, Random& random);

/// Shares of `total` proportional to `weights`, each at least 1 and at most `ceiling[k]`, by
/// largest remainders.
std::vector<int> apportion(int total, const std::vector<double>& weights,
                           const std::vector<int>& ceiling);

/// The rings of every unit, handed to `emit(unit, rings)` unit by unit: outer rings run
/// counter-clockwise, holes clockwise.
template <class Emit>
void traceUnits(const Lattice& lattice, const std::vector<int>& label, int count, Emit&& emit)
{
    std::vector<std::int64_t> start(at(count) + 1, 0);
    const int n = lattice.cellCount();
    const auto boundaryEdges = [&](auto&& visit) {
        for (int c = 0; c < n; ++c) {
            const int l = label[at(c)];
            if (l < 0) {
                continue;
            }
            const auto across = lattice.neighbours(c);
            const auto corners = lattice.corners(c);
            for (std::size_t e = 0; e < 6; ++e) {
                if (across[e] < 0 || label[at(across[e])] != l) {
                    visit(l, corners[e], corners[(e + 1) % 6]);
                }
            }
        }
    };
    boundaryEdges([&](int l, int, int) { ++start[at(l) + 1]; });
    for (std::size_t k = 1; k < start.size(); ++k) {
        start[k] += start[k - 1];
    }
    std::vector<std::pair<int, int>> edges(static_cast<std::size_t>(start.back()));
    std::vector<std::int64_t> fill(start.begin(), start.end() - 1);
    boundaryEdges([&](int l, int from, int to) {
        edges[static_cast<std::size_t>(fill[at(l)]++)] = {from, to};
    });

    // Three cells meet at every vertex, so a unit's boundary leaves a vertex at most once.
    std::vector<int> next(at(lattice.vertexCount()), -1);
    Rings rings;
    for (int l = 0; l < count; ++l) {
        const auto first = edges.begin() + start[at(l)];
        const auto last = edges.begin() + start[at(l) + 1];
        for (auto e = first; e != last; ++e) {
            next[at(e->first)] = e->second;
        }
        rings.clear();
        for (auto e = first; e != last; ++e) {
            if (next[at(e->first)] < 0) {
                continue;
            }
            Path ring;
            int v = e->first;
            do {
                ring.push_back(lattice.vertex(v));
                const int w = next[at(v)];
                next[at(v)] = -1;
                v = w;
            } while (v != e->first && v >= 0);
            if (v < 0) {
                throw std::logic_error("sample sources: an open unit boundary");
            }
            ring.push_back(ring.front());
            rings.push_back(std::move(ring));
        }
        emit(l, rings);
    }
}

} // namespace brevant::samplehost
