#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Geometry.h"
#include "samplehost/Names.h"
#include "samplehost/Random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace brevant::samplehost {

using platform::geometry::Envelope;
using platform::geometry::Point;

struct StateEntry {
    const char* code;
    const char* name;
    const char* abbreviation;
};
constexpr std::array<StateEntry, 3> kStates{
    {{"06", "California", "CA"}, {"32", "Nevada", "NV"}, {"41", "Oregon", "OR"}}};
constexpr int kRegionState = 0;
inline const Envelope kExtent(-124.7, 32.5, -114.0, 46.25);
/// Degrees of longitude shrink by the cosine of the latitude; one value for the whole area is
/// enough to keep shapes round on the ground.
inline const double kLongitudeScale = std::cos(39.0 * kPi / 180.0);

/// Distance on the ground, in degrees of latitude.
inline double groundDistance(Point a, Point b)
{
    return std::hypot((a.x - b.x) * kLongitudeScale, a.y - b.y);
}

/// A point at `distance` (degrees of latitude) and `angle` (radians from east) from `from`.
inline Point offset(Point from, double angle, double distance)
{
    return {from.x + distance * std::cos(angle) / kLongitudeScale,
            from.y + distance * std::sin(angle)};
}

struct City {
    std::string name;
    Point location;
    double size;
    int state;
};

/// A round shape with a wavy shore.
struct Blob {
    Point centre;
    double radius;
    double wave2, phase2, wave3, phase3;

    /// Below 1 inside, 1 on the shore.
    double ratio(Point p) const
    {
        const double dx = (p.x - centre.x) * kLongitudeScale;
        const double dy = p.y - centre.y;
        const double angle = std::atan2(dy, dx);
        const double shore = radius * (1.0 + wave2 * std::sin(2 * angle + phase2) +
                                       wave3 * std::sin(3 * angle + phase3));
        return std::hypot(dx, dy) / shore;
    }
};

/// The shapes every layer agrees on: coast, state borders, a lake and an island by the study
/// region, and the cities that decide where people and facilities are.
class Geography {
public:
    explicit Geography(std::uint64_t seed)
        : m_coast(seed ^ 0xc0a57, 4.0, 3), m_border(seed ^ 0xb0bde5, 2.5, 3),
          m_density(seed ^ 0xde45, 1.2, 3)
    {
        Random random(seed, 1);
        m_regionCentre = {-121.85 + random.uniform(-0.1, 0.1), 37.65 + random.uniform(-0.1, 0.1)};
        m_lake = {{m_regionCentre.x + 0.45, m_regionCentre.y + 0.3},
                  0.16,
                  random.uniform(0.15, 0.3),
                  random.uniform(0, 2 * kPi),
                  random.uniform(0.0, 0.1),
                  random.uniform(0, 2 * kPi)};
        const double islandY = m_regionCentre.y - 0.25;
        m_island = {{coastX(islandY) - 0.32, islandY}, 0.12,
                    random.uniform(0.1, 0.25),         random.uniform(0, 2 * kPi),
                    random.uniform(0.0, 0.08),         random.uniform(0, 2 * kPi)};
        placeCities(seed, random);
    }

    /// Index into kStates, or -1 for water and land of other states.
    int stateAt(Point p) const
    {
        if (!kExtent.contains(p) || inLake(p)) {
            return -1;
        }
        if (p.x <= coastX(p.y) && !inIsland(p)) {
            return -1;
        }
        if (p.y >= oregonSouth(p.x)) {
            return p.x < oregonEast(p.y) ? 2 : -1;
        }
        if (p.x < nevadaWest(p.y)) {
            return 0;
        }
        return p.y >= nevadaSouth(p.x) ? 1 : -1;
    }

    double coastX(double y) const
    {
        static const std::array<Point, 13> knots{{{-117.12, 32.5},
                                                  {-117.75, 33.5},
                                                  {-118.55, 34.05},
                                                  {-120.45, 34.45},
                                                  {-121.05, 35.5},
                                                  {-121.9, 36.6},
                                                  {-122.5, 37.5},
                                                  {-122.95, 38.0},
                                                  {-123.75, 39.0},
                                                  {-124.4, 40.4},
                                                  {-124.3, 42.0},
                                                  {-124.45, 43.0},
                                                  {-123.95, 46.25}}};
        double x = knots.back().x;
        for (std::size_t k = 1; k < knots.size(); ++k) {
            if (y <= knots[k].y) {
                const double t =
                    std::clamp((y - knots[k - 1].y) / (knots[k].y - knots[k - 1].y), 0.0, 1.0);
                x = knots[k - 1].x + t * (knots[k].x - knots[k - 1].x);
                break;
            }
        }
        return x + 0.16 * (m_coast.at(y, 0.5) - 0.5);
    }

    bool inLake(Point p) const { return m_lake.ratio(p) < 1.0; }
    bool inIsland(Point p) const { return m_island.ratio(p) < 1.0; }
    const Blob& lake() const { return m_lake; }
    Point regionCentre() const { return m_regionCentre; }
    const std::vector<City>& cities() const { return m_cities; }
    /// The city of the study region.
    const City& regionCity() const { return m_cities.front(); }

    /// People per unit area, in relative terms.
    double density(Point p) const
    {
        double d = 0.15 + 0.6 * m_density.at(p.x, p.y);
        for (const City& city : m_cities) {
            const double sigma = 0.06 + 0.006 * city.size;
            const double r = groundDistance(p, city.location);
            if (r < 5 * sigma) {
                d += city.size * std::exp(-r * r / (2 * sigma * sigma));
            }
        }
        return d;
    }

    const City& nearestCity(Point p) const
    {
        const City* best = &m_cities.front();
        double bestDistance = std::numeric_limits<double>::max();
        for (const City& city : m_cities) {
            const double d = groundDistance(p, city.location);
            if (d < bestDistance) {
                bestDistance = d;
                best = &city;
            }
        }
        return *best;
    }

private:
    double wobble(double t, double offset) const { return 0.16 * (m_border.at(t, offset) - 0.5); }
    double oregonSouth(double x) const { return 42.0 + wobble(x, 0.5); }
    double oregonEast(double y) const { return -116.9 + wobble(y, 20.5); }
    double nevadaSouth(double x) const { return 35.0 + wobble(x, 40.5); }
    double nevadaWest(double y) const
    {
        const double base = y >= 39.0   ? -120.0
                            : y <= 35.0 ? -114.6
                                        : -120.0 + (39.0 - y) / 4.0 * 5.4;
        return base + wobble(y, 60.5);
    }

    void placeCities(std::uint64_t seed, Random& random)
    {
        PlaceNames names(seed ^ 0xc17e5);
        const auto place = [&](int state, double size, auto candidate) {
            for (int attempt = 0; attempt < 400; ++attempt) {
                const Point p = candidate();
                const double spacing = attempt < 200 ? 0.6 : 0.25;
                const bool clear = std::all_of(m_cities.begin(), m_cities.end(), [&](auto& c) {
                    return groundDistance(c.location, p) >= spacing;
                });
                if (stateAt(p) == state && clear) {
                    m_cities.push_back({names.next(state == 0), p, size, state});
                    return;
                }
            }
        };
        m_cities.push_back({names.next(), m_regionCentre, 45.0, 0});
        for (int k = 0; k < 2; ++k) {
            place(0, random.uniform(8, 16), [&] {
                const auto [angle, distance] = random.polar(0.6, 0.9);
                return offset(m_regionCentre, angle, distance);
            });
        }
        struct Spread {
            int state;
            Envelope box;
            std::vector<double> sizes;
        };
        const std::array<Spread, 3> spreads{
            {{0, Envelope(-124.2, 32.6, -114.7, 41.9), {28, 22, 12, 9, 7, 6, 5, 4, 3}},
             {1, Envelope(-119.9, 35.1, -114.1, 41.9), {18, 6, 3}},
             {2, Envelope(-124.2, 42.1, -117.0, 46.1), {16, 7, 5, 3}}}};
        for (const Spread& spread : spreads) {
            for (const double size : spread.sizes) {
                place(spread.state, size * random.uniform(0.8, 1.2), [&] {
                    return Point{random.uniform(spread.box.xmin(), spread.box.xmax()),
                                 random.uniform(spread.box.ymin(), spread.box.ymax())};
                });
            }
        }
    }

    Noise m_coast;
    Noise m_border;
    Noise m_density;
    Point m_regionCentre;
    Blob m_lake{};
    Blob m_island{};
    std::vector<City> m_cities;
};

} // namespace brevant::samplehost
