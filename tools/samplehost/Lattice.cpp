#include "samplehost/Lattice.h"

#include <functional>
#include <limits>
#include <queue>

namespace brevant::samplehost {

Units subdivide(const Lattice& lattice, const CurveOrder& curve, const Units& parents,
                const std::vector<int>& wanted, const std::vector<float>& weight,
                const Noise& costNoise, Random& random)
{
    const int n = lattice.cellCount();
    std::vector<std::vector<int>> members(at(parents.count()));
    for (const int c : curve.order) {
        if (parents.label[at(c)] >= 0) {
            members[at(parents.label[at(c)])].push_back(c);
        }
    }

    Units units;
    units.label.assign(at(n), -1);
    std::vector<float> distance(at(n), std::numeric_limits<float>::infinity());
    using Entry = std::pair<float, int>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
    const auto addUnit = [&](int parent, int seed) {
        units.parent.push_back(parent);
        units.seed.push_back(seed);
        return units.count() - 1;
    };
    for (int p = 0; p < parents.count(); ++p) {
        const auto& list = members[at(p)];
        if (list.empty()) {
            continue;
        }
        double total = 0;
        for (const int c : list) {
            total += weight[at(c)];
        }
        const int k = std::clamp(wanted[at(p)], 1, static_cast<int>(list.size()));
        double reached = 0;
        std::size_t position = 0;
        int previous = -1;
        for (int m = 0; m < k; ++m) {
            const double target = (m + random.uniform(0.2, 0.8)) / k * total;
            while (position + 1 < list.size() && reached + weight[at(list[position])] < target) {
                reached += weight[at(list[position++])];
            }
            const int cell = list[position];
            if (cell == previous) {
                continue;
            }
            previous = cell;
            units.label[at(cell)] = addUnit(p, cell);
            distance[at(cell)] = 0;
            queue.push({0.0f, cell});
        }
    }

    std::vector<float> cost(at(n), 0.0f);
    for (int c = 0; c < n; ++c) {
        if (parents.label[at(c)] >= 0) {
            const Point g = lattice.gridPosition(c);
            const double v = costNoise.spread(g.x, g.y);
            cost[at(c)] = static_cast<float>(std::exp(4.0 * v));
        }
    }
    while (!queue.empty()) {
        const auto [d, c] = queue.top();
        queue.pop();
        if (d > distance[at(c)]) {
            continue;
        }
        for (const int m : lattice.neighbours(c)) {
            if (m < 0 || parents.label[at(m)] != parents.label[at(c)]) {
                continue;
            }
            const float next = d + 0.5f * (cost[at(c)] + cost[at(m)]);
            if (next < distance[at(m)]) {
                distance[at(m)] = next;
                units.label[at(m)] = units.label[at(c)];
                queue.push({next, m});
            }
        }
    }

    // Pieces no seed reached.
    std::vector<int> childrenOf(at(parents.count()), 0);
    for (const int p : units.parent) {
        ++childrenOf[at(p)];
    }
    std::vector<char> seen(at(n), 0);
    std::vector<int> piece;
    std::vector<int> frontier;
    for (const int start : curve.order) {
        const int p = parents.label[at(start)];
        if (p < 0 || units.label[at(start)] >= 0 || seen[at(start)]) {
            continue;
        }
        piece.assign(1, start);
        seen[at(start)] = 1;
        for (std::size_t k = 0; k < piece.size(); ++k) {
            for (const int m : lattice.neighbours(piece[k])) {
                if (m >= 0 && !seen[at(m)] && parents.label[at(m)] == p && units.label[at(m)] < 0) {
                    seen[at(m)] = 1;
                    piece.push_back(m);
                }
            }
        }
        const double typical =
            static_cast<double>(members[at(p)].size()) / std::max(1, childrenOf[at(p)]);
        int label = -1;
        if (static_cast<double>(piece.size()) < 0.4 * typical) {
            // Breadth first from the piece across anything, to the nearest cell of a sibling.
            std::vector<char> visited(at(n), 0);
            frontier = piece;
            for (const int c : piece) {
                visited[at(c)] = 1;
            }
            for (std::size_t k = 0; k < frontier.size() && label < 0; ++k) {
                for (const int m : lattice.neighbours(frontier[k])) {
                    if (m < 0 || visited[at(m)]) {
                        continue;
                    }
                    visited[at(m)] = 1;
                    if (parents.label[at(m)] == p && units.label[at(m)] >= 0) {
                        label = units.label[at(m)];
                        break;
                    }
                    frontier.push_back(m);
                }
            }
        }
        if (label < 0) {
            label = addUnit(p, start);
            ++childrenOf[at(p)];
        }
        for (const int c : piece) {
            units.label[at(c)] = label;
        }
    }

    // Number children parent by parent along the curve.
    std::vector<int> byOrder(at(units.count()));
    for (int u = 0; u < units.count(); ++u) {
        byOrder[at(u)] = u;
    }
    std::sort(byOrder.begin(), byOrder.end(), [&](int a, int b) {
        return std::pair(units.parent[at(a)], curve.rank[at(units.seed[at(a)])]) <
               std::pair(units.parent[at(b)], curve.rank[at(units.seed[at(b)])]);
    });
    std::vector<int> renamed(at(units.count()));
    Units sorted;
    for (std::size_t k = 0; k < byOrder.size(); ++k) {
        renamed[at(byOrder[k])] = static_cast<int>(k);
        sorted.parent.push_back(units.parent[at(byOrder[k])]);
        sorted.seed.push_back(units.seed[at(byOrder[k])]);
    }
    sorted.label = std::move(units.label);
    sorted.cells.assign(at(sorted.count()), 0);
    for (int& label : sorted.label) {
        if (label >= 0) {
            label = renamed[at(label)];
            ++sorted.cells[at(label)];
        }
    }
    return sorted;
}

std::vector<int> apportion(int total, const std::vector<double>& weights,
                           const std::vector<int>& ceiling)
{
    const double sum = std::max(1e-12, [&] {
        double s = 0;
        for (const double w : weights) {
            s += w;
        }
        return s;
    }());
    std::vector<int> shares(weights.size());
    std::vector<std::pair<double, std::size_t>> remainders;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        const double exact = total * weights[k] / sum;
        shares[k] = std::clamp(static_cast<int>(exact), 1, std::max(1, ceiling[k]));
        remainders.push_back({exact - std::floor(exact), k});
    }
    std::stable_sort(remainders.begin(), remainders.end(),
                     [](auto& a, auto& b) { return a.first > b.first; });
    int given = 0;
    for (const int s : shares) {
        given += s;
    }
    for (std::size_t k = 0; given < total && k < remainders.size(); ++k) {
        const std::size_t i = remainders[k].second;
        if (shares[i] < ceiling[i]) {
            ++shares[i];
            ++given;
        }
    }
    return shares;
}

} // namespace brevant::samplehost
