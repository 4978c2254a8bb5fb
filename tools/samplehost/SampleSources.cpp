#include "samplehost/SampleSources.h"

#include "platform/automation/Date.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Envelope.h"
#include "platform/geometry/Geometry.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <numbers>
#include <optional>
#include <queue>
#include <random>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace brevant::samplehost {

namespace fs = std::filesystem;
using platform::automation::Date;
using platform::automation::Variant;
using platform::geodatabase::Field;
using platform::geodatabase::Fields;
using platform::geodatabase::FieldType;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Table;
using platform::geodatabase::Workspace;
using platform::geometry::Envelope;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;

namespace {

constexpr double kPi = std::numbers::pi;
using Path = std::vector<Point>;
using Rings = std::vector<Path>;

// ----------------------------------------------------------------------------- randomness

std::uint64_t mix(std::uint64_t x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

double unitOf(std::uint64_t bits)
{
    return static_cast<double>(bits >> 11) * 0x1.0p-53;
}

/// Numbers drawn from the engine and mapped here: the standard distributions differ between
/// standard libraries, and the same seed must give the same files everywhere. Each layer draws
/// from its own stream, so changing one layer leaves the others as they were.
class Random {
public:
    Random(std::uint64_t seed, std::uint64_t stream) : m_engine(mix(seed ^ mix(stream))) {}

    double uniform() { return unitOf(m_engine()); }
    double uniform(double lo, double hi) { return lo + (hi - lo) * uniform(); }
    /// In [lo, hi].
    int integer(int lo, int hi)
    {
        return std::min(hi, lo + static_cast<int>(uniform() * (hi - lo + 1)));
    }
    bool chance(double p) { return uniform() < p; }
    double normal()
    {
        const double u = 1.0 - uniform();
        return std::sqrt(-2.0 * std::log(u)) * std::cos(2 * kPi * uniform());
    }
    template <class T> const T& pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(integer(0, static_cast<int>(values.size()) - 1))];
    }
    /// A direction (radians) and a distance in [lo, hi], drawn in that order. Callers draw one
    /// number per statement or through helpers like this one: the order in which function
    /// arguments are evaluated is the compiler's choice.
    std::pair<double, double> polar(double lo, double hi)
    {
        const double angle = uniform(0.0, 2 * kPi);
        return {angle, uniform(lo, hi)};
    }

private:
    std::mt19937_64 m_engine;
};

/// Smooth value noise in [0, 1] (fractal sums of a few octaves), a pure function of its key and
/// position so that any point can be asked in any order.
class Noise {
public:
    Noise(std::uint64_t key, double frequency, int octaves = 3)
        : m_key(mix(key)), m_frequency(frequency), m_octaves(octaves)
    {
    }

    double at(double x, double y) const
    {
        double sum = 0.0;
        double norm = 0.0;
        double amplitude = 1.0;
        double frequency = m_frequency;
        for (int o = 0; o < m_octaves; ++o) {
            sum += amplitude * octave(x * frequency, y * frequency, m_key + o);
            norm += amplitude;
            amplitude *= 0.5;
            frequency *= 2.03;
        }
        return sum / norm;
    }
    /// The same noise spread over [0, 1]: sums of octaves crowd around one half.
    double spread(double x, double y) const
    {
        return std::clamp((at(x, y) - 0.5) * 2.6 + 0.5, 0.0, 1.0);
    }

private:
    static double corner(std::uint64_t key, std::int64_t ix, std::int64_t iy)
    {
        return unitOf(mix(key ^ mix(static_cast<std::uint64_t>(ix) * 0x9e3779b97f4a7c15ULL +
                                    static_cast<std::uint64_t>(iy))));
    }
    static double octave(double x, double y, std::uint64_t key)
    {
        const double fx = std::floor(x);
        const double fy = std::floor(y);
        const auto ix = static_cast<std::int64_t>(fx);
        const auto iy = static_cast<std::int64_t>(fy);
        const double tx = (x - fx) * (x - fx) * (3 - 2 * (x - fx));
        const double ty = (y - fy) * (y - fy) * (3 - 2 * (y - fy));
        const double a = corner(key, ix, iy);
        const double b = corner(key, ix + 1, iy);
        const double c = corner(key, ix, iy + 1);
        const double d = corner(key, ix + 1, iy + 1);
        return a + (b - a) * tx + (c - a) * ty + (a - b - c + d) * tx * ty;
    }

    std::uint64_t m_key;
    double m_frequency;
    int m_octaves;
};

// ----------------------------------------------------------------------------- text

std::string format(const char* pattern, auto... values)
{
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, pattern, values...);
    return buffer;
}

const std::vector<std::string> kWords = {
    "Alder",   "Ash",     "Aspen",    "Bear",   "Bell",    "Birch",  "Black",   "Blue",   "Bridge",
    "Brook",   "Buck",    "Cedar",    "Clear",  "Cliff",   "Copper", "Cotton",  "Coyote", "Crane",
    "Crow",    "Cypress", "Deer",     "Dove",   "Dry",     "Eagle",  "Elk",     "Elm",    "Fair",
    "Fern",    "Fox",     "Glen",     "Gold",   "Granite", "Green",  "Grey",    "Hawk",   "Hazel",
    "Heron",   "High",    "Holly",    "Iron",   "Juniper", "Lark",   "Laurel",  "Lone",   "Long",
    "Madrone", "Maple",   "Marsh",    "Meadow", "Mill",    "Mist",   "Moss",    "Oak",    "Otter",
    "Owl",     "Pine",    "Poplar",   "Quail",  "Raven",   "Red",    "Redwood", "Rock",   "Rose",
    "Sage",    "Salt",    "Sand",     "Shadow", "Silver",  "Snow",   "Spring",  "Stone",  "Storm",
    "Summit",  "Sun",     "Sycamore", "Thorn",  "Timber",  "Tule",   "Walnut",  "West",   "White",
    "Willow",  "Wind",    "Wolf"};
const std::vector<std::string> kPlaceEndings = {
    "ton",  "ville", "field", "wood",  "dale", "ford", "mont",  "view", "crest", "port",
    "burg", "haven", "brook", "stead", "more", "vale", "water", "wick", "bury",  "land"};
const std::vector<std::string> kPlaceWords = {"Valley", "Springs", "Hills", "Heights",
                                              "Grove",  "Beach",   "Falls", "Creek"};
const std::vector<std::string> kSaints = {"Andres", "Benito", "Carlos", "Clara",  "Cruz",
                                          "Felipe", "Inez",   "Lucia",  "Marcos", "Mateo",
                                          "Paula",  "Rita",   "Rosa",   "Tomas",  "Ynez"};
const std::vector<std::string> kStreetEndings = {"St", "Ave", "Blvd", "Rd", "Way", "Dr", "Ln"};

/// Place names that are never handed out twice.
class PlaceNames {
public:
    explicit PlaceNames(std::uint64_t seed) : m_random(seed, 90) {}

    std::string next(bool spanish = false)
    {
        for (int attempt = 0;; ++attempt) {
            std::string name;
            if (spanish && m_random.chance(0.5)) {
                name = m_random.chance(0.5) ? "San " : "Santa ";
                name += m_random.pick(kSaints);
            } else if (m_random.chance(0.25)) {
                name = m_random.pick(kWords) + " ";
                name += m_random.pick(kPlaceWords);
            } else {
                std::string ending = m_random.pick(kPlaceEndings);
                name = m_random.pick(kWords) + ending;
            }
            if (attempt > 50) {
                name += " " + std::to_string(m_used.size());
            }
            if (m_used.insert(name).second) {
                return name;
            }
        }
    }

private:
    Random m_random;
    std::set<std::string> m_used;
};

// ----------------------------------------------------------------------------- geography

struct StateEntry {
    const char* code;
    const char* name;
    const char* abbreviation;
};
constexpr std::array<StateEntry, 3> kStates{
    {{"06", "California", "CA"}, {"32", "Nevada", "NV"}, {"41", "Oregon", "OR"}}};
constexpr int kRegionState = 0;
const Envelope kExtent(-124.7, 32.5, -114.0, 46.25);
/// Degrees of longitude shrink by the cosine of the latitude; one value for the whole area is
/// enough to keep shapes round on the ground.
const double kLongitudeScale = std::cos(39.0 * kPi / 180.0);

/// Distance on the ground, in degrees of latitude.
double groundDistance(Point a, Point b)
{
    return std::hypot((a.x - b.x) * kLongitudeScale, a.y - b.y);
}

/// A point at `distance` (degrees of latitude) and `angle` (radians from east) from `from`.
Point offset(Point from, double angle, double distance)
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

// ----------------------------------------------------------------------------- lattice

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

// ----------------------------------------------------------------------------- units

/// A partition of cells into units (states, counties, tracts, blocks), each unit a child of a
/// unit of the level above.
struct Units {
    std::vector<int> label;  // per cell, -1 outside every unit
    std::vector<int> parent; // per unit
    std::vector<int> seed;   // per unit, the cell it grew from
    std::vector<int> cells;  // per unit

    int count() const { return static_cast<int>(parent.size()); }
};

std::size_t at(int index)
{
    return static_cast<std::size_t>(index);
}

/// Splits every parent unit into `wanted[parent]` children grown from seeds spread along the
/// curve by `weight` (dense places get more, hence smaller, children). Growth is a shortest-path
/// race over noisy cell costs, which keeps each child in one piece and gives it an irregular
/// border. A piece of a parent no seed reaches (an island) becomes a child of its own when it
/// is large enough and otherwise joins the nearest child.
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

// ----------------------------------------------------------------------------- shapes

/// A star-shaped ring filling most of the rectangle of centre `c` and half-sizes `hx`, `hy`:
/// angles strictly increase round the centre, so the ring is simple whatever its radii, and
/// radii reach into the corners, so gaps between neighbours stay narrow.
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

/// Vertices per map polygon: between 20 and 200, most of them near the low end.
int mapVertices(Random& random)
{
    const double u = random.uniform();
    return 20 + static_cast<int>(180.0 * u * u * u);
}

/// A figure-eight: the ring crosses itself in the middle.
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

/// A ring of collinear points: no area at all.
Path sliver(Point c, double hx, double hy)
{
    return {{c.x - hx, c.y - 0.1 * hy},
            {c.x, c.y},
            {c.x + hx, c.y + 0.1 * hy},
            {c.x - hx, c.y - 0.1 * hy}};
}

/// A gently winding line from `a` to `b`, pinned at both ends.
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

/// The piece of `path` between the distances `from` and `to` along it.
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

/// Distance from `p` to the path, and how far along the path (0 to 1) the nearest point lies.
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

// ----------------------------------------------------------------------------- writing

Field textField(std::string name, int length)
{
    return {std::move(name), FieldType::String, length, {}};
}
Field integerField(std::string name)
{
    return {std::move(name), FieldType::Integer, 0, {}};
}
Field smallField(std::string name)
{
    return {std::move(name), FieldType::SmallInteger, 0, {}};
}
Field doubleField(std::string name)
{
    return {std::move(name), FieldType::Double, 0, {}};
}
Field dateField(std::string name)
{
    return {std::move(name), FieldType::Date, 0, {}};
}

/// Writes one layer into a GeoPackage of its own, row by row: set the values, then add.
class LayerWriter {
public:
    LayerWriter(const fs::path& folder, const std::string& name, ShapeType shapeType,
                const std::vector<Field>& fields)
        : m_source{folder / (name + ".gpkg"), name}, m_workspace(freshGeoPackage(m_source.path))
    {
        m_table = shapeType == ShapeType::Null
                      ? m_workspace.createTable(name, Fields(fields))
                      : m_workspace.createFeatureClass(name, Fields(fields), shapeType);
        for (const Field& field : fields) {
            m_names.push_back(field.name);
            m_indexes.push_back(m_table->findField(field.name));
        }
        m_cursor.emplace(m_table->insert());
        m_row = m_table->createRow();
    }

    void set(std::string_view field, Variant value)
    {
        for (std::size_t k = 0; k < m_names.size(); ++k) {
            if (m_names[k] == field) {
                m_row.setValue(m_indexes[k], std::move(value));
                return;
            }
        }
        throw std::logic_error("sample sources: " + m_source.name + " has no field " +
                               std::string(field));
    }

    /// Stores the values set since the last row (unset ones stay null); returns the OBJECTID.
    std::int64_t add(Geometry shape = {})
    {
        if (!shape.isNull()) {
            m_row.setShape(std::move(shape));
        }
        const std::int64_t oid = m_cursor->insertRow(m_row);
        m_row = m_table->createRow();
        ++m_count;
        return oid;
    }

    /// Commits what was added; throws when the storage refuses.
    SourceLayer finish()
    {
        m_cursor->flush();
        m_cursor.reset();
        return m_source;
    }

    std::int64_t count() const { return m_count; }

private:
    static Workspace freshGeoPackage(const fs::path& path)
    {
        for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
            fs::remove(path.string() + suffix);
        }
        return Workspace::createGeoPackage(path);
    }

    SourceLayer m_source;
    Workspace m_workspace;
    std::shared_ptr<Table> m_table;
    std::vector<std::string> m_names;
    std::vector<int> m_indexes;
    std::optional<InsertCursor> m_cursor;
    Row m_row;
    std::int64_t m_count = 0;
};

Variant int32(std::int64_t value)
{
    return Variant(static_cast<std::int32_t>(value));
}
Variant int16(int value)
{
    return Variant(static_cast<std::int16_t>(value));
}

// ----------------------------------------------------------------------------- sizes

struct Profile {
    std::int64_t latticeCells;
    std::array<int, 3> counties;
    int regionCounties;
    int tracts;
    int blocks;
    std::array<std::int64_t, 4> siteMapPolygons;
    double inundationCell;
    double floodViewCell;
    double usgsStep;
    double pathSpacing;
    int schools, hospitals, fireStations, policeStations, emergencyCenters, bridges;
    std::int64_t buildings;
    int highwaySegments, railSegments, pipelineSegments;
    int epicentres, faults, marPlot;
};

Profile profileOf(SampleSize size)
{
    switch (size) {
    case SampleSize::Small:
        break;
    case SampleSize::Medium:
        return {.latticeCells = 1'000'000,
                .counties = {36, 14, 24},
                .regionCounties = 6,
                .tracts = 3'600,
                .blocks = 36'000,
                .siteMapPolygons = {30'000, 27'000, 28'500, 25'500},
                .inundationCell = 0.008,
                .floodViewCell = 0.005,
                .usgsStep = 0.04,
                .pathSpacing = 0.01,
                .schools = 2'500,
                .hospitals = 200,
                .fireStations = 900,
                .policeStations = 400,
                .emergencyCenters = 40,
                .bridges = 3'000,
                .buildings = 25'000,
                .highwaySegments = 2'500,
                .railSegments = 1'000,
                .pipelineSegments = 1'200,
                .epicentres = 5'000,
                .faults = 120,
                .marPlot = 30};
    case SampleSize::Large:
        return {.latticeCells = 2'600'000,
                .counties = {58, 17, 36},
                .regionCounties = 8,
                .tracts = 12'000,
                .blocks = 160'000,
                .siteMapPolygons = {120'000, 110'000, 115'000, 105'000},
                .inundationCell = 0.004,
                .floodViewCell = 0.0025,
                .usgsStep = 0.02,
                .pathSpacing = 0.005,
                .schools = 12'000,
                .hospitals = 600,
                .fireStations = 4'000,
                .policeStations = 2'000,
                .emergencyCenters = 150,
                .bridges = 25'000,
                .buildings = 1'150'000,
                .highwaySegments = 20'000,
                .railSegments = 6'000,
                .pipelineSegments = 8'000,
                .epicentres = 30'000,
                .faults = 400,
                .marPlot = 60};
    }
    return {.latticeCells = 250'000,
            .counties = {20, 8, 12},
            .regionCounties = 4,
            .tracts = 360,
            .blocks = 3'600,
            .siteMapPolygons = {3'000, 2'700, 2'850, 2'550},
            .inundationCell = 0.02,
            .floodViewCell = 0.01,
            .usgsStep = 0.1,
            .pathSpacing = 0.02,
            .schools = 250,
            .hospitals = 24,
            .fireStations = 90,
            .policeStations = 45,
            .emergencyCenters = 8,
            .bridges = 300,
            .buildings = 2'500,
            .highwaySegments = 300,
            .railSegments = 120,
            .pipelineSegments = 150,
            .epicentres = 600,
            .faults = 40,
            .marPlot = 12};
}

/// Shares of `total` proportional to `weights`, each at least 1 and at most `ceiling[k]`, by
/// largest remainders.
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

// ----------------------------------------------------------------------------- the writer

struct Fault {
    int id;
    std::string name;
    std::string slipType;
    double dip;
    double slipRate;
    std::vector<Path> parts;
    double length; // degrees
};

struct Route {
    std::string name;
    std::string from;
    std::string to;
    Path path;
};

class SampleWriter {
public:
    SampleWriter(const fs::path& folder, SampleSize size, std::uint64_t seed,
                 const std::function<void(const std::string&)>& progress)
        : m_folder(folder), m_profile(profileOf(size)), m_seed(seed), m_progress(progress),
          m_geography(seed), m_lattice(kExtent, m_profile.latticeCells, seed), m_curve(m_lattice)
    {
    }

    SampleSources run()
    {
        fs::create_directories(m_folder);
        step("laying out states, counties, tracts and blocks");
        layOutUnits();
        chooseRegion();
        countPeople();
        writeBoundaries();
        writeSiteMaps();
        writeFaults();
        writeEpicentres();
        writeGroundMotion();
        writeProbabilisticMap();
        writeInundation();
        writeLines();
        writePoints();
        writeOtherLayers();
        return std::move(m_result);
    }

private:
    void step(const std::string& text)
    {
        if (m_progress) {
            m_progress(text);
        }
    }
    Random stream(std::uint64_t id) const { return Random(m_seed, id); }
    int stateOfCell(int cell) const { return cell < 0 ? -1 : m_states.label[at(cell)]; }
    bool inRegion(int cell) const { return cell >= 0 && m_regionCell[at(cell)] != 0; }
    bool inRegion(Point p) const { return inRegion(m_lattice.cellAt(p)); }

    // ------------------------------------------------------------------ units

    void layOutUnits()
    {
        const int n = m_lattice.cellCount();
        m_density.resize(at(n));
        m_states.label.assign(at(n), -1);
        for (int c = 0; c < n; ++c) {
            const Point p = m_lattice.centre(c);
            m_density[at(c)] = static_cast<float>(m_geography.density(p));
            m_states.label[at(c)] = m_geography.stateAt(p);
        }
        m_states.parent.assign(kStates.size(), -1);
        m_states.seed.assign(kStates.size(), 0);
        m_states.cells.assign(kStates.size(), 0);
        for (const int s : m_states.label) {
            if (s >= 0) {
                ++m_states.cells[at(s)];
            }
        }

        const auto weights = [&](double exponent) {
            std::vector<float> w(at(n));
            for (int c = 0; c < n; ++c) {
                w[at(c)] = static_cast<float>(std::pow(m_density[at(c)], exponent));
            }
            return w;
        };
        // Cost features from the children's size down, so that their borders wander at every
        // scale.
        const auto costNoise = [&](std::uint64_t key, int children) {
            double cells = 0;
            for (const int s : m_states.cells) {
                cells += s;
            }
            const double diameter = std::sqrt(cells / std::max(1, children));
            return Noise(m_seed ^ key, 1.2 / std::max(2.0, diameter), 5);
        };

        Random seeds = stream(3);
        std::vector<int> counties(m_profile.counties.begin(), m_profile.counties.end());
        int countyTotal = 0;
        for (const int c : counties) {
            countyTotal += c;
        }
        m_counties = subdivide(m_lattice, m_curve, m_states, counties, weights(0.25),
                               costNoise(0xc0, countyTotal), seeds);

        const auto tractWeight = weights(0.7);
        std::vector<double> countyWeight(at(m_counties.count()), 0.0);
        for (int c = 0; c < n; ++c) {
            if (m_counties.label[at(c)] >= 0) {
                countyWeight[at(m_counties.label[at(c)])] += tractWeight[at(c)];
            }
        }
        std::vector<int> tractCeiling(at(m_counties.count()));
        for (int k = 0; k < m_counties.count(); ++k) {
            tractCeiling[at(k)] = std::max(1, m_counties.cells[at(k)] / 6);
        }
        m_tracts = subdivide(m_lattice, m_curve, m_counties,
                             apportion(m_profile.tracts, countyWeight, tractCeiling), tractWeight,
                             costNoise(0x7c, m_profile.tracts), seeds);

        // Blocks smaller where people live, at most 270 to a tract (nine groups of 30).
        const auto blockWeight = weights(0.6);
        std::vector<double> blocksWanted(at(m_tracts.count()), 0.0);
        for (int c = 0; c < n; ++c) {
            if (m_tracts.label[at(c)] >= 0) {
                blocksWanted[at(m_tracts.label[at(c)])] += blockWeight[at(c)];
            }
        }
        std::vector<int> blockCeiling(at(m_tracts.count()));
        for (int k = 0; k < m_tracts.count(); ++k) {
            blockCeiling[at(k)] = std::clamp(m_tracts.cells[at(k)] / 4, 1, 270);
        }
        m_blocks = subdivide(m_lattice, m_curve, m_tracts,
                             apportion(m_profile.blocks, blocksWanted, blockCeiling), blockWeight,
                             costNoise(0xb1, m_profile.blocks), seeds);
    }

    /// The counties round the region's city, with every county on the lake's shore (so the
    /// lake is a hole) and the island's county.
    void chooseRegion()
    {
        const int n = m_lattice.cellCount();
        const int count = m_counties.count();
        std::vector<std::set<int>> adjacent(at(count));
        std::vector<Point> centroid(at(count), Point{0, 0});
        std::set<int> forced;
        for (int c = 0; c < n; ++c) {
            const int county = m_counties.label[at(c)];
            const Point p = m_lattice.centre(c);
            if (county >= 0) {
                centroid[at(county)].x += p.x / m_counties.cells[at(county)];
                centroid[at(county)].y += p.y / m_counties.cells[at(county)];
                if (m_geography.inIsland(p)) {
                    forced.insert(county);
                }
            }
            for (const int m : m_lattice.neighbours(c)) {
                if (m < 0) {
                    continue;
                }
                const int other = m_counties.label[at(m)];
                if (county >= 0 && other >= 0 && other != county) {
                    adjacent[at(county)].insert(other);
                }
                if (other >= 0 && county < 0 && m_geography.inLake(p)) {
                    forced.insert(other);
                }
            }
        }
        const Point centre = m_geography.regionCentre();
        int first = m_counties.label[at(m_lattice.cellAt(centre))];
        for (int k = 0; first < 0 && k < count; ++k) {
            if (m_counties.parent[at(k)] == kRegionState &&
                groundDistance(centroid[at(k)], centre) < 0.5) {
                first = k;
            }
        }
        std::set<int> chosen{first};
        while (static_cast<int>(chosen.size()) < m_profile.regionCounties) {
            int best = -1;
            for (const int k : chosen) {
                for (const int m : adjacent[at(k)]) {
                    if (chosen.count(m) == 0 && m_counties.parent[at(m)] == kRegionState &&
                        (best < 0 || groundDistance(centroid[at(m)], centre) <
                                         groundDistance(centroid[at(best)], centre))) {
                        best = m;
                    }
                }
            }
            if (best < 0) {
                break;
            }
            chosen.insert(best);
        }
        chosen.insert(forced.begin(), forced.end());
        m_regionCounty.assign(at(count), 0);
        for (const int k : chosen) {
            m_regionCounty[at(k)] = 1;
        }
        m_regionCell.assign(at(n), 0);
        for (int c = 0; c < n; ++c) {
            const int county = m_counties.label[at(c)];
            m_regionCell[at(c)] = county >= 0 && m_regionCounty[at(county)] ? 1 : 0;
            if (m_regionCell[at(c)]) {
                m_regionBox.expandToInclude(m_lattice.centre(c));
            }
        }
        m_regionBox = m_regionBox.expandedBy(std::max(m_lattice.sideX(), m_lattice.sideY()));
    }

    /// Tract populations follow density (about 4,200 people per tract on average); blocks
    /// share their tract's people exactly, some blocks having none.
    void countPeople()
    {
        Random people = stream(6);
        const int n = m_lattice.cellCount();
        std::vector<double> tractRaw(at(m_tracts.count()), 0.0);
        std::vector<double> blockRaw(at(m_blocks.count()), 0.0);
        std::array<double, 3> stateRaw{};
        std::array<int, 3> stateTracts{};
        for (int c = 0; c < n; ++c) {
            if (m_tracts.label[at(c)] >= 0) {
                tractRaw[at(m_tracts.label[at(c)])] += m_density[at(c)];
                blockRaw[at(m_blocks.label[at(c)])] += m_density[at(c)];
                stateRaw[at(m_states.label[at(c)])] += m_density[at(c)];
            }
        }
        for (int t = 0; t < m_tracts.count(); ++t) {
            ++stateTracts[at(stateOfTract(t))];
        }
        m_tractPopulation.resize(at(m_tracts.count()));
        for (int t = 0; t < m_tracts.count(); ++t) {
            const int s = stateOfTract(t);
            const double scale = 4200.0 * stateTracts[at(s)] / std::max(1e-9, stateRaw[at(s)]);
            m_tractPopulation[at(t)] =
                std::max<std::int64_t>(40, std::llround(tractRaw[at(t)] * scale));
        }
        // Blocks: shares by largest remainder so that they add up to the tract.
        m_blockPopulation.assign(at(m_blocks.count()), 0);
        std::vector<std::vector<int>> blocksOf(at(m_tracts.count()));
        for (int b = 0; b < m_blocks.count(); ++b) {
            blocksOf[at(m_blocks.parent[at(b)])].push_back(b);
        }
        for (int t = 0; t < m_tracts.count(); ++t) {
            const auto& blocks = blocksOf[at(t)];
            std::vector<double> weight;
            double sum = 0;
            for (const int b : blocks) {
                const bool empty = blocks.size() > 3 && people.chance(0.08);
                weight.push_back(empty ? 0.0 : blockRaw[at(b)] * people.uniform(0.3, 1.7));
                sum += weight.back();
            }
            if (sum <= 0) {
                weight.assign(blocks.size(), 1.0);
                sum = static_cast<double>(blocks.size());
            }
            const std::int64_t total = m_tractPopulation[at(t)];
            std::int64_t given = 0;
            std::vector<std::pair<double, std::size_t>> remainders;
            for (std::size_t k = 0; k < blocks.size(); ++k) {
                const double exact = static_cast<double>(total) * weight[k] / sum;
                m_blockPopulation[at(blocks[k])] = static_cast<std::int64_t>(exact);
                given += m_blockPopulation[at(blocks[k])];
                remainders.push_back({exact - std::floor(exact), k});
            }
            std::stable_sort(remainders.begin(), remainders.end(),
                             [](auto& a, auto& b) { return a.first > b.first; });
            for (std::size_t k = 0; given < total; k = (k + 1) % remainders.size()) {
                ++m_blockPopulation[at(blocks[remainders[k].second])];
                ++given;
            }
        }
    }

    int stateOfTract(int tract) const { return m_counties.parent[at(m_tracts.parent[at(tract)])]; }

    // ------------------------------------------------------------------ boundaries

    void writeBoundaries()
    {
        PlaceNames names(m_seed ^ 0xc0c0);
        step("writing states");
        LayerWriter states(
            m_folder, "states", ShapeType::Polygon,
            {textField("STATEFP", 2), textField("STUSPS", 2), textField("NAME", 40)});
        traceUnits(m_lattice, m_states.label, m_states.count(), [&](int s, const Rings& rings) {
            states.set("STATEFP", kStates[at(s)].code);
            states.set("STUSPS", kStates[at(s)].abbreviation);
            states.set("NAME", kStates[at(s)].name);
            states.add(Geometry::polygon(rings));
        });
        m_result.stateBoundaries = {states.finish(), "STATEFP", "NAME", ""};
        m_result.stateAbbreviationField = "STUSPS";
        for (const StateEntry& state : kStates) {
            m_result.states.push_back({state.code, state.name, state.abbreviation});
        }

        step("writing counties");
        std::vector<std::int64_t> countyPopulation(at(m_counties.count()), 0);
        for (int t = 0; t < m_tracts.count(); ++t) {
            countyPopulation[at(m_tracts.parent[at(t)])] += m_tractPopulation[at(t)];
        }
        std::array<int, 3> perState{};
        for (int k = 0; k < m_counties.count(); ++k) {
            const int s = m_counties.parent[at(k)];
            m_countyCode.push_back(std::string(kStates[at(s)].code) +
                                   format("%03d", 2 * perState[at(s)]++ + 1));
            m_countyName.push_back(names.next(s == 0));
        }
        LayerWriter counties(m_folder, "counties", ShapeType::Polygon,
                             {textField("GEOID", 5), textField("STATEFP", 2),
                              textField("COUNTYFP", 3), textField("NAME", 40),
                              textField("NAMELSAD", 60), integerField("POP")});
        traceUnits(m_lattice, m_counties.label, m_counties.count(), [&](int k, const Rings& rings) {
            const std::string& code = m_countyCode[at(k)];
            counties.set("GEOID", code);
            counties.set("STATEFP", code.substr(0, 2));
            counties.set("COUNTYFP", code.substr(2));
            counties.set("NAME", m_countyName[at(k)]);
            counties.set("NAMELSAD", m_countyName[at(k)] + " County");
            counties.set("POP", int32(countyPopulation[at(k)]));
            counties.add(Geometry::polygon(rings));
        });
        m_result.counties = {counties.finish(), "GEOID", "NAME", "POP"};
        for (int k = 0; k < m_counties.count(); ++k) {
            if (m_regionCounty[at(k)]) {
                m_result.regionCountyCodes.push_back(m_countyCode[at(k)]);
            }
        }

        step("writing census tracts");
        numberTracts();
        LayerWriter tracts(m_folder, "tracts", ShapeType::Polygon,
                           {textField("GEOID10", 11), textField("STATEFP10", 2),
                            textField("COUNTYFP10", 3), textField("TRACTCE10", 6),
                            textField("NAMELSAD10", 40), integerField("POP10"),
                            integerField("HU10")});
        Random housing = stream(7);
        traceUnits(m_lattice, m_tracts.label, m_tracts.count(), [&](int t, const Rings& rings) {
            const std::string& code = m_tractCode[at(t)];
            tracts.set("GEOID10", code);
            tracts.set("STATEFP10", code.substr(0, 2));
            tracts.set("COUNTYFP10", code.substr(2, 3));
            tracts.set("TRACTCE10", code.substr(5));
            tracts.set("NAMELSAD10", m_tractName[at(t)]);
            tracts.set("POP10", int32(m_tractPopulation[at(t)]));
            tracts.set("HU10", int32(std::llround(static_cast<double>(m_tractPopulation[at(t)]) /
                                                  housing.uniform(2.3, 3.1))));
            tracts.add(Geometry::polygon(rings));
        });
        m_result.tracts = {tracts.finish(), "GEOID10", "NAMELSAD10", "POP10"};

        step("writing census blocks");
        std::vector<std::unique_ptr<LayerWriter>> blocks;
        for (const StateEntry& state : kStates) {
            blocks.push_back(std::make_unique<LayerWriter>(
                m_folder, std::string("blocks_") + state.code, ShapeType::Polygon,
                std::vector<Field>{textField("BLOCKID10", 15), integerField("POP10"),
                                   integerField("HU10")}));
        }
        std::vector<int> blockNumber(at(m_tracts.count()), 0);
        traceUnits(m_lattice, m_blocks.label, m_blocks.count(), [&](int b, const Rings& rings) {
            const int t = m_blocks.parent[at(b)];
            const int k = blockNumber[at(t)]++;
            LayerWriter& writer = *blocks[at(stateOfTract(t))];
            writer.set("BLOCKID10",
                       m_tractCode[at(t)] + format("%04d", (1 + k / 30) * 1000 + k % 30));
            writer.set("POP10", int32(m_blockPopulation[at(b)]));
            writer.set("HU10", int32(std::llround(static_cast<double>(m_blockPopulation[at(b)]) /
                                                  housing.uniform(2.3, 3.1))));
            writer.add(Geometry::polygon(rings));
        });
        for (std::size_t s = 0; s < kStates.size(); ++s) {
            m_result.blocks.push_back(
                {kStates[s].code, {blocks[s]->finish(), "BLOCKID10", "", "POP10"}});
        }

        step("writing the study region boundary");
        m_result.regionName = m_geography.regionCity().name + " Metro";
        LayerWriter region(m_folder, "study_region", ShapeType::Polygon,
                           {textField("REGION_NM", 60)});
        std::vector<int> regionLabel(at(m_lattice.cellCount()), -1);
        for (int c = 0; c < m_lattice.cellCount(); ++c) {
            regionLabel[at(c)] = m_regionCell[at(c)] ? 0 : -1;
        }
        traceUnits(m_lattice, regionLabel, 1, [&](int, const Rings& rings) {
            region.set("REGION_NM", m_result.regionName);
            region.add(Geometry::polygon(rings));
        });
        m_result.regionBoundary = region.finish();
        m_result.regionNameField = "REGION_NM";
    }

    /// Tract numbers as the census gives them: four digits rising through the county with
    /// gaps, and now and then a tract split in two (".01", ".02").
    void numberTracts()
    {
        Random numbers = stream(8);
        m_tractCode.resize(at(m_tracts.count()));
        m_tractName.resize(at(m_tracts.count()));
        int county = -1;
        int base = 0;
        int splitPending = 0;
        for (int t = 0; t < m_tracts.count(); ++t) {
            const bool lastOfCounty =
                t + 1 == m_tracts.count() || m_tracts.parent[at(t + 1)] != m_tracts.parent[at(t)];
            if (m_tracts.parent[at(t)] != county) {
                county = m_tracts.parent[at(t)];
                base = 100 + numbers.integer(1, 9);
                splitPending = 0;
            } else if (splitPending == 0) {
                base += numbers.integer(1, 3);
            }
            int suffix = 0;
            if (splitPending > 0) {
                suffix = 2;
                splitPending = 0;
            } else if (!lastOfCounty && numbers.chance(0.12)) {
                suffix = 1;
                splitPending = 1;
            }
            m_tractCode[at(t)] = m_countyCode[at(county)] + format("%04d%02d", base, suffix);
            m_tractName[at(t)] = suffix == 0 ? format("Census Tract %d", base)
                                             : format("Census Tract %d.%02d", base, suffix);
        }
    }

    // ------------------------------------------------------------------ site maps

    struct MapCell {
        Point centre;
        bool inRegion;
    };
    struct MapGrid {
        std::vector<MapCell> cells;
        double hx = 0; // half-sizes of a cell
        double hy = 0;
    };

    /// Cells of a grid over the state's extent whose centres lie in the state, at least
    /// `target` of them. Rows are shifted sideways like courses of bricks, so that the map does
    /// not look like a chessboard.
    MapGrid stateMapGrid(std::int64_t target, const Random& random) const
    {
        Envelope box;
        for (int c = 0; c < m_lattice.cellCount(); ++c) {
            if (m_states.label[at(c)] == kRegionState) {
                box.expandToInclude(m_lattice.centre(c));
            }
        }
        const double stateArea = m_states.cells[kRegionState] * m_lattice.cellArea();
        double wanted = static_cast<double>(target) * box.width() * box.height() / stateArea;
        MapGrid grid;
        for (int attempt = 0; attempt < 8; ++attempt) {
            const double aspect = box.height() / (box.width() * kLongitudeScale);
            const int rows = std::max(1, static_cast<int>(std::lround(std::sqrt(wanted * aspect))));
            const int columns = std::max(1, static_cast<int>(std::lround(wanted / rows)));
            grid.hx = box.width() / columns / 2;
            grid.hy = box.height() / rows / 2;
            grid.cells.clear();
            Random shifts = random;
            for (int r = 0; r < rows; ++r) {
                const double shift = shifts.uniform(-1.0, 0.0);
                for (int q = 0; q <= columns; ++q) {
                    const Point centre{box.xmin() + (2 * (q + shift) + 1) * grid.hx,
                                       box.ymin() + (2 * r + 1) * grid.hy};
                    const int cell = m_lattice.cellAt(centre);
                    if (stateOfCell(cell) == kRegionState) {
                        grid.cells.push_back({centre, inRegion(cell)});
                    }
                }
            }
            if (static_cast<std::int64_t>(grid.cells.size()) >= target) {
                break;
            }
            wanted *= 1.02 * static_cast<double>(target) / std::max<double>(1, grid.cells.size());
        }
        return grid;
    }

    /// Indexes of cells to spoil: half of them in the region, the rest anywhere else.
    static std::vector<std::size_t> plant(Random& random, const std::vector<MapCell>& cells,
                                          int count, std::set<std::size_t>& taken)
    {
        std::vector<std::size_t> region;
        std::vector<std::size_t> elsewhere;
        for (std::size_t k = 0; k < cells.size(); ++k) {
            (cells[k].inRegion ? region : elsewhere).push_back(k);
        }
        std::vector<std::size_t> chosen;
        for (int k = 0; k < count; ++k) {
            const auto& pool = (k < (count + 1) / 2 && !region.empty()) ? region : elsewhere;
            for (int attempt = 0; attempt < 1000; ++attempt) {
                const std::size_t i = random.pick(pool);
                if (taken.insert(i).second) {
                    chosen.push_back(i);
                    break;
                }
            }
        }
        return chosen;
    }

    /// One statewide map: `value(writer, centre, random)` sets a valid value; `spoil(writer,
    /// k)` sets the k-th invalid one.
    template <class Value, class Spoil>
    void writeSiteMap(const std::string& code, const std::string& name, const std::string& field,
                      const std::vector<Field>& fields, std::int64_t target, std::uint64_t id,
                      int invalidValues, Value&& value, Spoil&& spoil)
    {
        step("writing the statewide map " + name);
        Random random = stream(id);
        const MapGrid grid = stateMapGrid(target, random);
        std::set<std::size_t> taken;
        const auto badValues = plant(random, grid.cells, invalidValues, taken);
        const auto badShapes = plant(random, grid.cells, 4, taken);
        LayerWriter writer(m_folder, name, ShapeType::Polygon, fields);
        SiteMap map{code, {}, field, {}, {}};
        for (std::size_t k = 0; k < grid.cells.size(); ++k) {
            const Point c = grid.cells[k].centre;
            value(writer, c, random);
            const auto valueAt = std::find(badValues.begin(), badValues.end(), k);
            if (valueAt != badValues.end()) {
                spoil(writer, static_cast<int>(valueAt - badValues.begin()));
            }
            const auto shapeAt = std::find(badShapes.begin(), badShapes.end(), k);
            Path ring;
            if (shapeAt == badShapes.end()) {
                ring = starRing(random, c, grid.hx, grid.hy, mapVertices(random));
            } else if ((shapeAt - badShapes.begin()) % 2 == 0) {
                ring = bowTie(c, 0.6 * grid.hx, 0.6 * grid.hy);
            } else {
                ring = sliver(c, 0.6 * grid.hx, 0.6 * grid.hy);
            }
            const std::int64_t oid = writer.add(Geometry::polygon({ring}));
            if (valueAt != badValues.end()) {
                map.invalidValueIds.push_back(oid);
            }
            if (shapeAt != badShapes.end()) {
                map.invalidShapeIds.push_back(oid);
            }
        }
        map.source = writer.finish();
        std::sort(map.invalidValueIds.begin(), map.invalidValueIds.end());
        std::sort(map.invalidShapeIds.begin(), map.invalidShapeIds.end());
        m_result.siteMaps.push_back(std::move(map));
    }

    /// How close to the coast, 1 on the shore, 0 half a degree inland and beyond.
    double coastal(Point p) const
    {
        return std::clamp(1.0 - (p.x - m_geography.coastX(p.y)) * kLongitudeScale / 0.5, 0.0, 1.0);
    }

    void writeSiteMaps()
    {
        const Noise soil(m_seed ^ 0x5011, 3.0, 4);
        const Noise wet(m_seed ^ 0x3e7, 5.0, 3);
        const Noise slope(m_seed ^ 0x51, 4.0, 4);
        const Noise water(m_seed ^ 0x6a7e, 2.5, 3);
        // Softer soils near the coast and in the valleys.
        const auto softness = [&](Point p) {
            return std::clamp(0.65 * soil.spread(p.x, p.y) + 0.45 * coastal(p) - 0.05, 0.0, 1.0);
        };
        const std::array<const char*, 5> classes{"A", "B", "C", "D", "E"};
        const std::array<std::array<const char*, 2>, 5> units{
            {{"Kgr", "Jgb"}, {"Tv", "KJf"}, {"Tss", "QT"}, {"Qoa", "Qa"}, {"Qaf", "Qm"}}};
        const auto soilClass = [&](Point p) {
            const double v = softness(p);
            return v < 0.12 ? 0 : v < 0.3 ? 1 : v < 0.5 ? 2 : v < 0.85 ? 3 : 4;
        };

        writeSiteMap(
            "SOIL", "soil_sites", "SOIL_CLS", {textField("SOIL_CLS", 2), textField("GEO_UNIT", 8)},
            m_profile.siteMapPolygons[0], 10, 4,
            [&](LayerWriter& w, Point p, Random& r) {
                const int k = soilClass(p);
                w.set("SOIL_CLS", classes[at(k)]);
                w.set("GEO_UNIT", units[at(k)][at(r.integer(0, 1))]);
            },
            [&](LayerWriter& w, int k) {
                const std::array<Variant, 4> bad{Variant(""), Variant("F"), Variant::null(),
                                                 Variant(" ")};
                w.set("SOIL_CLS", bad[at(k % 4)]);
            });

        const std::array<const char*, 6> descriptions{"None",     "Very low", "Low",
                                                      "Moderate", "High",     "Very high"};
        writeSiteMap(
            "LIQF", "liquefaction", "LIQ_SUSC",
            {integerField("LIQ_SUSC"), textField("SUSC_DESC", 16)}, m_profile.siteMapPolygons[1],
            11, 4,
            [&](LayerWriter& w, Point p, Random&) {
                const double v = 0.7 * softness(p) + 0.3 * wet.spread(p.x, p.y);
                const int k = std::clamp(static_cast<int>(std::lround(7.0 * v - 1.5)), 0, 5);
                w.set("LIQ_SUSC", int32(k));
                w.set("SUSC_DESC", descriptions[at(k)]);
            },
            [&](LayerWriter& w, int k) {
                const std::array<Variant, 4> bad{int32(-1), int32(7), Variant::null(), int32(12)};
                w.set("LIQ_SUSC", bad[at(k % 4)]);
            });

        writeSiteMap(
            "LAND", "landslide", "LS_CAT", {smallField("LS_CAT")}, m_profile.siteMapPolygons[2], 12,
            4,
            [&](LayerWriter& w, Point p, Random&) {
                const double v = slope.spread(p.x, p.y) * (1.0 - 0.6 * coastal(p));
                w.set("LS_CAT",
                      int16(std::clamp(static_cast<int>(std::lround(10.0 * std::pow(v, 1.4))), 0,
                                       10)));
            },
            [&](LayerWriter& w, int k) {
                const std::array<Variant, 4> bad{int16(-1), int16(11), Variant::null(), int16(15)};
                w.set("LS_CAT", bad[at(k % 4)]);
            });

        writeSiteMap(
            "WATR", "groundwater", "GW_DEPTH", {doubleField("GW_DEPTH")},
            m_profile.siteMapPolygons[3], 13, 4,
            [&](LayerWriter& w, Point p, Random&) {
                const double v = water.spread(p.x, p.y);
                const double depth = 2.0 + 80.0 * v * v * (0.3 + 0.7 * (1.0 - coastal(p)));
                w.set("GW_DEPTH", rounded(depth, 0.1));
            },
            [&](LayerWriter& w, int k) {
                const std::array<Variant, 4> bad{Variant(-4.5), Variant(-9999.0), Variant::null(),
                                                 Variant(-0.5)};
                w.set("GW_DEPTH", bad[at(k % 4)]);
            });
    }

    // ------------------------------------------------------------------ seismicity

    void writeFaults()
    {
        step("writing faults");
        Random random = stream(71);
        PlaceNames names(m_seed ^ 0xfa17);
        const std::vector<std::string> endings{"",       " Ridge",  " Valley", " Creek",
                                               " Hills", " Canyon", " Peak"};
        const auto makeFault = [&](Point centre, double azimuth, double length,
                                   const std::string& slip, double dip) {
            Fault fault;
            fault.id = static_cast<int>(m_faults.size()) + 1;
            fault.name = names.next();
            fault.name += random.pick(endings);
            fault.name += (random.chance(0.3) ? " fault zone" : " fault");
            fault.slipType = slip;
            fault.dip = rounded(dip, 1.0);
            fault.slipRate = rounded(std::exp(random.uniform(std::log(0.1), std::log(25.0))), 0.1);
            fault.length = length;
            const Point a = offset(centre, azimuth, -length / 2);
            const Point b = offset(centre, azimuth, length / 2);
            const Path path = meander(random, a, b, 0.04, m_profile.pathSpacing);
            const int parts = random.chance(0.15) ? random.integer(2, 3) : 1;
            const double total = pathLength(path);
            for (int k = 0; k < parts; ++k) {
                // En-echelon pieces, each stepped a little to the side.
                Path piece = subPath(path, total * k / parts, total * (k + 0.92) / parts);
                const double step = (k % 2 == 0 ? 0.0 : 0.015);
                for (Point& p : piece) {
                    p = offset(p, azimuth + kPi / 2, step);
                }
                fault.parts.push_back(std::move(piece));
            }
            m_faults.push_back(std::move(fault));
        };
        const auto kindOf = [&](int state, double& azimuth, double& dip) -> std::string {
            const double u = random.uniform();
            if (state == 1 || (state == 2 && u < 0.5)) {
                azimuth = kPi / 2 + random.uniform(-0.35, 0.35);
                dip = random.uniform(50, 70);
                return "Normal";
            }
            if (u < 0.6) {
                azimuth = kPi / 2 + 0.95 + random.uniform(-0.3, 0.3);
                dip = random.uniform(80, 90);
                return "Right-lateral strike-slip";
            }
            azimuth = kPi / 2 + 0.6 + random.uniform(-0.5, 0.5);
            if (u < 0.8) {
                dip = random.uniform(45, 65);
                return "Reverse";
            }
            dip = random.uniform(20, 40);
            return "Thrust";
        };

        // The region's own faults first: they are the scenario faults.
        const std::array<const char*, 5> regionKinds{"Right-lateral strike-slip",
                                                     "Right-lateral strike-slip", "Reverse",
                                                     "Right-lateral strike-slip", "Thrust"};
        const Point centre = m_geography.regionCentre();
        for (std::size_t k = 0; k < regionKinds.size(); ++k) {
            Point where = centre;
            for (int attempt = 0; attempt < 100; ++attempt) {
                const auto [angle, distance] = random.polar(0.2, 0.9);
                where = offset(centre, angle, k == 0 ? 0.1 : distance);
                if (inRegion(where)) {
                    break;
                }
            }
            const std::string kind = regionKinds[k];
            const double dip = kind == "Reverse"  ? random.uniform(45, 65)
                               : kind == "Thrust" ? random.uniform(20, 40)
                                                  : random.uniform(80, 90);
            const double azimuth = kPi / 2 + 0.95 + random.uniform(-0.2, 0.2);
            makeFault(where, azimuth, random.uniform(0.5, 1.3), kind, dip);
        }
        m_scenarioFaultCount = static_cast<int>(regionKinds.size());
        while (static_cast<int>(m_faults.size()) < m_profile.faults) {
            const Point where{random.uniform(kExtent.xmin(), kExtent.xmax()),
                              random.uniform(kExtent.ymin(), kExtent.ymax())};
            const int state = m_geography.stateAt(where);
            if (state < 0) {
                continue;
            }
            double azimuth = 0;
            double dip = 0;
            const std::string kind = kindOf(state, azimuth, dip);
            makeFault(where, azimuth, 0.1 * std::exp(random.uniform(0.0, std::log(15.0))), kind,
                      dip);
        }

        LayerWriter faults(m_folder, "faults", ShapeType::Polyline,
                           {integerField("FAULT_ID"), textField("FAULT_NAME", 60),
                            textField("SLIP_TYPE", 32), doubleField("DIP_DEG"),
                            doubleField("SLIP_RATE")});
        for (const Fault& fault : m_faults) {
            faults.set("FAULT_ID", int32(fault.id));
            faults.set("FAULT_NAME", fault.name);
            faults.set("SLIP_TYPE", fault.slipType);
            faults.set("DIP_DEG", fault.dip);
            faults.set("SLIP_RATE", fault.slipRate);
            faults.add(Geometry::polyline(fault.parts));
        }
        m_result.faults = {faults.finish(), "FAULT_ID", "FAULT_NAME", "SLIP_TYPE", "DIP_DEG"};

        LayerWriter scenario(m_folder, "scenario_faults", ShapeType::Polyline,
                             {integerField("FLT_ID"), textField("FLT_NAME", 60),
                              textField("SLIP_TYPE", 32), doubleField("DIP_DEG"),
                              doubleField("MAX_MAG"), doubleField("WIDTH_KM")});
        for (int k = 0; k < m_scenarioFaultCount; ++k) {
            const Fault& fault = m_faults[at(k)];
            scenario.set("FLT_ID", int32(fault.id));
            scenario.set("FLT_NAME", fault.name);
            scenario.set("SLIP_TYPE", fault.slipType);
            scenario.set("DIP_DEG", fault.dip);
            // Magnitude from rupture length (km).
            scenario.set("MAX_MAG", rounded(5.08 + 1.16 * std::log10(fault.length * 111.0), 0.1));
            scenario.set("WIDTH_KM", rounded(random.uniform(12, 20), 0.5));
            scenario.add(Geometry::polyline(fault.parts));
        }
        m_result.scenarioFaults = {scenario.finish(), "FLT_ID", "FLT_NAME", "SLIP_TYPE", "DIP_DEG"};
    }

    static std::string compass(Point from, Point to)
    {
        static const std::array<const char*, 8> names{"E", "NE", "N", "NW", "W", "SW", "S", "SE"};
        const double angle = std::atan2(to.y - from.y, (to.x - from.x) * kLongitudeScale);
        const int sector = static_cast<int>(std::lround(angle / (kPi / 4))) & 7;
        return names[at(sector)];
    }

    void writeEpicentres()
    {
        step("writing historical epicentres");
        Random random = stream(70);
        double totalLength = 0;
        for (const Fault& fault : m_faults) {
            totalLength += fault.length;
        }
        struct Event {
            Date date;
            Point where;
            double magnitude;
            double depth;
        };
        std::vector<Event> events;
        while (static_cast<int>(events.size()) < m_profile.epicentres) {
            Point p;
            if (random.chance(0.65)) {
                double pick = random.uniform(0, totalLength);
                const Fault* fault = &m_faults.front();
                for (const Fault& f : m_faults) {
                    fault = &f;
                    pick -= f.length;
                    if (pick <= 0) {
                        break;
                    }
                }
                const Path& part =
                    fault->parts[at(random.integer(0, static_cast<int>(fault->parts.size()) - 1))];
                const Point on = part[at(random.integer(0, static_cast<int>(part.size()) - 1))];
                const double angle = random.uniform(0, 2 * kPi);
                p = offset(on, angle, std::abs(random.normal()) * 0.03);
            } else {
                p = {random.uniform(kExtent.xmin(), kExtent.xmax()),
                     random.uniform(kExtent.ymin(), kExtent.ymax())};
                const bool offshore =
                    p.x < m_geography.coastX(p.y) && p.x > m_geography.coastX(p.y) - 0.4;
                if (m_geography.stateAt(p) < 0 && !offshore) {
                    continue;
                }
            }
            // Gutenberg-Richter magnitudes; old records hold only the larger events.
            const double magnitude =
                std::min(7.9, rounded(2.5 - std::log10(1.0 - random.uniform() + 1e-12), 0.1));
            const int year = random.integer(1900, 2015);
            if ((year < 1932 && magnitude < 5.0) || (year < 1970 && magnitude < 4.0)) {
                continue;
            }
            const int month = random.integer(1, 12);
            const int day = random.integer(1, 28);
            const int hour = random.integer(0, 23);
            const int minute = random.integer(0, 59);
            const Date date =
                Date::fromParts(year, month, day, hour, minute, random.integer(0, 59));
            events.push_back({date, p, magnitude,
                              rounded(std::clamp(8.0 + 5.0 * random.normal(), 0.5, 25.0), 0.1)});
        }
        std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
            return a.date.serial < b.date.serial;
        });
        LayerWriter epicentres(m_folder, "epicenters", ShapeType::Point,
                               {textField("EVENT_ID", 12), doubleField("MAG"),
                                doubleField("DEPTH_KM"), dateField("EVENT_DATE"),
                                textField("PLACE", 60)});
        for (std::size_t k = 0; k < events.size(); ++k) {
            const Event& e = events[k];
            const City& city = m_geography.nearestCity(e.where);
            epicentres.set("EVENT_ID", format("ev%08d", static_cast<int>(k + 1)));
            epicentres.set("MAG", e.magnitude);
            epicentres.set("DEPTH_KM", e.depth);
            epicentres.set("EVENT_DATE", e.date);
            epicentres.set("PLACE",
                           format("%d km %s of %s",
                                  static_cast<int>(groundDistance(city.location, e.where) * 111.0),
                                  compass(city.location, e.where).c_str(), city.name.c_str()));
            epicentres.add(Geometry::point(e.where));
        }
        m_result.epicentres = {epicentres.finish(), "EVENT_ID", "MAG", "DEPTH_KM", "EVENT_DATE"};
    }

    // ------------------------------------------------------------------ ground motion

    void writeGroundMotion()
    {
        const Fault& fault = m_faults.front();
        const Path& trace = fault.parts.front();
        const Point epicentre = trace[trace.size() / 2];
        const double strike = std::atan2(trace.back().y - trace.front().y,
                                         (trace.back().x - trace.front().x) * kLongitudeScale);
        struct Parameter {
            const char* code;
            const char* name;
            const char* units;
            std::function<double(double)> value; // of distance in km
        };
        const std::array<Parameter, 4> parameters{
            {{"PGAM", "shake_pga", "g",
              [](double r) { return 0.85 * std::pow(1.0 + r / 8.0, -1.1); }},
             {"PGVM", "shake_pgv", "cm/s",
              [](double r) { return 95.0 * std::pow(1.0 + r / 8.0, -1.05); }},
             {"SA03", "shake_sa03", "g",
              [](double r) { return 2.1 * 0.85 * std::pow(1.0 + r / 8.0, -1.1); }},
             {"SA10", "shake_sa10", "g", [](double r) {
                  return 1.1 * 0.85 * std::pow(1.0 + r / 8.0, -1.1) * std::pow(1.0 + r / 80.0, 0.3);
              }}}};
        constexpr int kBands = 16;
        for (std::size_t m = 0; m < parameters.size(); ++m) {
            const Parameter& parameter = parameters[m];
            step(std::string("writing the ground-motion map ") + parameter.name);
            Random random = stream(30 + m);
            std::array<double, 5> weights{};
            std::array<double, 5> phases{};
            for (std::size_t k = 0; k < weights.size(); ++k) {
                // At most 0.11 in all: neighbouring contours, 1.3 times apart, never cross.
                weights[k] = random.uniform(-0.022, 0.022);
                phases[k] = random.uniform(0, 2 * kPi);
            }
            std::vector<double> radii;
            std::vector<Path> contours;
            for (int b = 0; b < kBands; ++b) {
                radii.push_back(0.02 * std::pow(1.3, b));
                const int vertices = 64 + 8 * b;
                Path ring;
                for (int i = 0; i < vertices; ++i) {
                    const double theta = 2 * kPi * i / vertices;
                    double wave = 0;
                    for (std::size_t k = 0; k < weights.size(); ++k) {
                        wave += weights[k] * std::sin((k + 2) * theta + phases[k] + 0.3 * b);
                    }
                    // Stretched along the fault.
                    const double stretch = 1.0 / std::sqrt(std::pow(std::cos(theta) / 1.6, 2) +
                                                           std::pow(std::sin(theta), 2));
                    ring.push_back(
                        offset(epicentre, theta + strike, radii.back() * stretch * (1.0 + wave)));
                }
                ring.push_back(ring.front());
                contours.push_back(std::move(ring));
            }
            LayerWriter writer(m_folder, parameter.name, ShapeType::Polygon,
                               {doubleField("VALUE"), textField("UNITS", 8)});
            for (int b = 0; b < kBands; ++b) {
                const double middle =
                    b == 0 ? radii[0] / 2 : std::sqrt(radii[at(b - 1)] * radii[at(b)]);
                writer.set("VALUE", rounded(parameter.value(middle * 111.0), 0.001));
                writer.set("UNITS", parameter.units);
                Rings rings{contours[at(b)]};
                if (b > 0) {
                    rings.push_back(contours[at(b - 1)]);
                }
                writer.add(Geometry::polygon(rings));
            }
            m_result.groundMotionMaps.push_back({parameter.code, writer.finish(), "VALUE"});
        }
    }

    void writeProbabilisticMap()
    {
        step("writing the probabilistic map USGS");
        const std::vector<std::string> parameters{"pga", "pgv", "sa03", "sa10"};
        const std::vector<int> periods{100, 250, 500, 750, 1000, 1500, 2000, 2500};
        std::vector<Field> fields{integerField("GRID_ID")};
        for (const auto& parameter : parameters) {
            for (const int period : periods) {
                fields.push_back(doubleField(parameter + std::to_string(period)));
            }
        }
        LayerWriter writer(m_folder, "USGS", ShapeType::Polygon, fields);
        const Noise site(m_seed ^ 0x95, 3.0, 3);
        const Noise velocity(m_seed ^ 0x96, 2.0, 2);
        const double s = m_profile.usgsStep;
        const Envelope box = m_regionBox.expandedBy(0.25);
        const int columns = static_cast<int>(std::ceil(box.width() / s));
        const int rows = static_cast<int>(std::ceil(box.height() / s));
        const double x0 = std::floor(box.xmin() / s) * s;
        const double y0 = std::floor(box.ymin() / s) * s;
        int id = 0;
        for (int r = 0; r < rows; ++r) {
            for (int q = 0; q < columns; ++q) {
                const double x = x0 + q * s;
                const double y = y0 + r * s;
                const Point centre{x + s / 2, y + s / 2};
                double nearest = std::numeric_limits<double>::max();
                for (int f = 0; f < m_scenarioFaultCount; ++f) {
                    for (const Path& part : m_faults[at(f)].parts) {
                        nearest = std::min(nearest, distanceToPath(centre, part).first);
                    }
                }
                // Hazard at 475 years, higher near the faults and on soft ground.
                const double hazard =
                    0.2 + 0.55 * std::exp(-nearest / 0.25) + 0.15 * site.at(centre.x, centre.y);
                writer.set("GRID_ID", int32(++id));
                for (const int period : periods) {
                    const double pga = hazard * std::pow(period / 475.0, 0.42);
                    const std::string p = std::to_string(period);
                    writer.set("pga" + p, rounded(pga, 0.0001));
                    writer.set(
                        "pgv" + p,
                        rounded(pga * (90.0 + 30.0 * velocity.at(centre.x, centre.y)), 0.01));
                    writer.set("sa03" + p, rounded(pga * 2.25, 0.0001));
                    writer.set(
                        "sa10" + p,
                        rounded(pga * (0.8 + 0.4 * velocity.at(centre.y, centre.x)), 0.0001));
                }
                writer.add(
                    Geometry::polygon({{{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}, {x, y}}}));
            }
        }
        m_result.probabilisticMap = {writer.finish(), parameters, periods};
    }

    // ------------------------------------------------------------------ inundation

    /// Star polygons in the cells of a grid over `box` where `depthAt` gives a depth.
    void writeBandMap(LayerWriter& writer, const Envelope& box, double cell, Random& random,
                      const std::string& scenario,
                      const std::function<std::optional<double>(Point)>& depthAt)
    {
        const int columns = std::max(1, static_cast<int>(box.width() / cell));
        const int rows = std::max(1, static_cast<int>(box.height() / cell));
        const double hx = box.width() / columns / 2;
        const double hy = box.height() / rows / 2;
        for (int r = 0; r < rows; ++r) {
            for (int q = 0; q < columns; ++q) {
                const Point c{box.xmin() + (2 * q + 1) * hx, box.ymin() + (2 * r + 1) * hy};
                const auto depth = depthAt(c);
                if (!depth) {
                    continue;
                }
                const double feet = rounded(*depth, 0.1);
                writer.set("DEPTH_FT", feet);
                writer.set("DEPTH_CLS", feet < 1    ? "0-1 ft"
                                        : feet < 3  ? "1-3 ft"
                                        : feet < 6  ? "3-6 ft"
                                        : feet < 10 ? "6-10 ft"
                                                    : "10+ ft");
                writer.set("SCENARIO", scenario);
                writer.add(
                    Geometry::polygon({starRing(random, c, hx, hy, random.integer(16, 60))}));
            }
        }
    }

    static Envelope boxOf(const Path& path, double margin)
    {
        Envelope box;
        for (const Point& p : path) {
            box.expandToInclude(p);
        }
        return box.expandedBy(margin);
    }

    void writeInundation()
    {
        Random rivers = stream(20);
        const Point centre = m_geography.regionCentre();
        const double damEndY = centre.y - 0.35;
        m_damRiver = meander(rivers, offset(centre, -0.25, 0.75),
                             {m_geography.coastX(damEndY) + 0.02, damEndY}, 0.12, 0.01);
        m_leveeRiver =
            meander(rivers, offset(centre, 0.55, 1.0), offset(centre, 2.8, 0.3), 0.15, 0.01);
        const double cell = m_profile.inundationCell;
        const std::vector<Field> fields{doubleField("DEPTH_FT"), textField("DEPTH_CLS", 8),
                                        textField("SCENARIO", 60)};
        const std::string city = m_geography.regionCity().name;
        const auto onLand = [&](Point p) { return m_geography.stateAt(p) >= 0; };

        step("writing the inundation map dam_inundation");
        {
            Random random = stream(21);
            LayerWriter writer(m_folder, "dam_inundation", ShapeType::Polygon, fields);
            writeBandMap(writer, boxOf(m_damRiver, 0.1), cell, random,
                         city + " Reservoir, full breach", [&](Point p) -> std::optional<double> {
                             const auto [d, t] = distanceToPath(p, m_damRiver);
                             const double half = 0.015 + 0.05 * t;
                             if (d >= half || !onLand(p)) {
                                 return std::nullopt;
                             }
                             return 0.3 + (2.0 + 28.0 * (1.0 - t)) * std::pow(1.0 - d / half, 0.7);
                         });
            m_result.inundationMaps.push_back(
                {"DAMF", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
        }
        step("writing the inundation map tsunami_inundation");
        {
            // Another stretch of coast, far from the region.
            Random random = stream(22);
            const Noise reach(m_seed ^ 0x75, 6.0, 2);
            LayerWriter writer(m_folder, "tsunami_inundation", ShapeType::Polygon, fields);
            writeBandMap(writer, Envelope(-118.7, 32.55, -116.9, 34.0), cell, random,
                         "Offshore M8.0 source", [&](Point p) -> std::optional<double> {
                             const double inland =
                                 (p.x - m_geography.coastX(p.y)) * kLongitudeScale;
                             const double reachOf = 0.03 + 0.04 * reach.at(p.y, 0.5);
                             if (inland <= 0 || inland >= reachOf || !onLand(p)) {
                                 return std::nullopt;
                             }
                             return 0.5 + 30.0 * std::pow(1.0 - inland / reachOf, 1.5);
                         });
            m_result.inundationMaps.push_back(
                {"TSUN", writer.finish(), "DEPTH_FT", "DEPTH_CLS", true});
        }
        step("writing the inundation map seiche_inundation");
        {
            Random random = stream(23);
            const Blob& lake = m_geography.lake();
            LayerWriter writer(m_folder, "seiche_inundation", ShapeType::Polygon, fields);
            writeBandMap(writer,
                         Envelope(lake.centre.x - 0.5, lake.centre.y - 0.4, lake.centre.x + 0.5,
                                  lake.centre.y + 0.4),
                         cell, random, "Lake seiche, 2 m wave",
                         [&](Point p) -> std::optional<double> {
                             const double shore = (lake.ratio(p) - 1.0) * lake.radius;
                             if (shore <= 0 || shore >= 0.045 || !onLand(p)) {
                                 return std::nullopt;
                             }
                             return 0.5 + 5.0 * (1.0 - shore / 0.045);
                         });
            m_result.inundationMaps.push_back(
                {"SEIC", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
        }
        step("writing the inundation map levee_inundation");
        {
            Random random = stream(24);
            const Noise width(m_seed ^ 0x1e7, 4.0, 2);
            LayerWriter writer(m_folder, "levee_inundation", ShapeType::Polygon, fields);
            writeBandMap(writer, boxOf(m_leveeRiver, 0.1), cell, random,
                         "Levee overtopping, 100-year flow", [&](Point p) -> std::optional<double> {
                             const double d = distanceToPath(p, m_leveeRiver).first;
                             const double half = 0.03 + 0.03 * width.at(p.x, p.y);
                             if (d >= half || !onLand(p)) {
                                 return std::nullopt;
                             }
                             return 0.5 + 7.0 * (1.0 - d / half);
                         });
            m_result.inundationMaps.push_back(
                {"LEVF", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
        }
    }

    // ------------------------------------------------------------------ lines

    void writeLines()
    {
        Random random = stream(60);
        const auto& cities = m_geography.cities();
        const City& main = m_geography.regionCity();
        // Other cities by distance from the region's.
        std::vector<const City*> byDistance;
        for (const City& c : cities) {
            if (&c != &main) {
                byDistance.push_back(&c);
            }
        }
        std::stable_sort(byDistance.begin(), byDistance.end(), [&](auto* a, auto* b) {
            return groundDistance(a->location, main.location) <
                   groundDistance(b->location, main.location);
        });
        const City* eastern = byDistance.front();
        for (const City* c : byDistance) {
            if (c->state == 1) {
                eastern = c;
                break;
            }
        }
        const double spacing = m_profile.pathSpacing;
        const auto route = [&](const std::string& name, const City& a, const City& b) {
            return Route{name, a.name, b.name,
                         meander(random, a.location, b.location, 0.08, spacing)};
        };

        std::vector<Route> highways;
        const std::vector<std::string> highwayNames{"I-880", "I-680", "SR-24",
                                                    "I-580", "SR-4",  "SR-152"};
        for (std::size_t k = 0; k < 5 && k < byDistance.size(); ++k) {
            highways.push_back(route(highwayNames[k], main, *byDistance[k]));
        }
        highways.push_back(route("I-80", main, *eastern));
        {
            const double y0 = main.location.y + 2.2;
            const double y1 = main.location.y - 2.2;
            Route coastal{"US-101", "north coast", "south coast",
                          meander(random, {m_geography.coastX(y0) + 0.2, y0},
                                  {m_geography.coastX(y1) + 0.2, y1}, 0.05, spacing)};
            highways.push_back(std::move(coastal));
        }
        std::vector<Route> railways{route("Coast Line", main, *byDistance[0]),
                                    route("Valley Subdivision", main, *byDistance[1]),
                                    route("Overland Route", main, *eastern)};
        const City& far = *byDistance[std::min<std::size_t>(3, byDistance.size() - 1)];
        std::vector<Route> pipelines{
            {"Sierra Aqueduct", "Sierra", main.name,
             meander(random, {-119.9, main.location.y + 0.3}, main.location, 0.06, spacing)},
            route("Valley Gas Transmission Line 401", far, main),
            route("Bay Products Pipeline", main, *byDistance[0]),
            {"Lake Supply Main", "lake", byDistance[1]->name,
             meander(random, m_geography.lake().centre, byDistance[1]->location, 0.05, spacing)}};
        m_highways = highways;

        const std::vector<std::string> owners{"Pacific Western Railroad", "Sierra Northern",
                                              "Bay Terminal Railway"};
        const std::vector<std::string> systems{"Water", "Natural gas", "Refined products", "Water"};
        writeLineLayer("highways", highways, m_profile.highwaySegments, random,
                       {textField("SEG_ID", 10), textField("SEG_NAME", 60), textField("ROUTE", 10),
                        smallField("LANES")},
                       "SEG_ID", "SEG_NAME", [&](LayerWriter& w, std::size_t r, int k, int n) {
                           const Route& h = highways[r];
                           w.set("SEG_ID", format("HWY%06d", n));
                           w.set("SEG_NAME", format("%s %s-%s %d", h.name.c_str(), h.from.c_str(),
                                                    h.to.c_str(), k + 1));
                           w.set("ROUTE", h.name);
                           w.set("LANES", int16(h.name[0] == 'I' ? 8 : h.name[0] == 'U' ? 4 : 2));
                       });
        writeLineLayer("railways", railways, m_profile.railSegments, random,
                       {textField("RR_ID", 10), textField("RR_NAME", 60), textField("OWNER", 40)},
                       "RR_ID", "RR_NAME", [&](LayerWriter& w, std::size_t r, int, int n) {
                           w.set("RR_ID", format("RR%06d", n));
                           w.set("RR_NAME", railways[r].name);
                           w.set("OWNER", owners[r % owners.size()]);
                       });
        writeLineLayer("pipelines", pipelines, m_profile.pipelineSegments, random,
                       {textField("PIPE_ID", 10), textField("PIPE_NAME", 60),
                        textField("SYSTEM", 16), doubleField("DIAM_IN")},
                       "PIPE_ID", "PIPE_NAME", [&](LayerWriter& w, std::size_t r, int, int n) {
                           w.set("PIPE_ID", format("PL%06d", n));
                           w.set("PIPE_NAME", pipelines[r].name);
                           w.set("SYSTEM", systems[r % systems.size()]);
                           w.set("DIAM_IN", r == 0 ? 96.0 : r == 1 ? 30.0 : 16.0);
                       });
    }

    /// Cuts every route into segments of one length so that all routes give about `target`
    /// segments; one in seventeen has two parts (a gap at an interchange or a crossing).
    template <class Attributes>
    void writeLineLayer(const std::string& name, const std::vector<Route>& routes, int target,
                        Random& random, const std::vector<Field>& fields,
                        const std::string& idField, const std::string& nameField,
                        Attributes&& attributes)
    {
        step("writing the line inventory " + name);
        double total = 0;
        for (const Route& r : routes) {
            total += pathLength(r.path);
        }
        const double length = total / target;
        LayerWriter writer(m_folder, name, ShapeType::Polyline, fields);
        int number = 0;
        for (std::size_t index = 0; index < routes.size(); ++index) {
            const Route& r = routes[index];
            const double routeLength = pathLength(r.path);
            const int pieces = std::max(1, static_cast<int>(std::lround(routeLength / length)));
            for (int k = 0; k < pieces; ++k) {
                const double from = routeLength * k / pieces;
                const double to = routeLength * (k + 1) / pieces;
                std::vector<Path> parts;
                if (random.chance(1.0 / 17)) {
                    const double middle = (from + to) / 2;
                    const double gap = 0.05 * (to - from);
                    parts.push_back(subPath(r.path, from, middle - gap));
                    parts.push_back(subPath(r.path, middle + gap, to));
                } else {
                    parts.push_back(subPath(r.path, from, to));
                }
                attributes(writer, index, k, ++number);
                writer.add(Geometry::polyline(parts));
            }
        }
        const std::int64_t count = writer.count();
        m_result.lineInventory.push_back(
            {writer.finish(), ShapeType::Polyline, idField, nameField, count});
    }

    // ------------------------------------------------------------------ points

    /// Draws cells with chances in proportion to density raised to a power.
    class CellSampler {
    public:
        CellSampler(std::vector<int> cells, const std::vector<float>& density, double exponent)
            : m_cells(std::move(cells))
        {
            double sum = 0;
            for (const int c : m_cells) {
                sum += std::pow(density[at(c)], exponent);
                m_cumulative.push_back(sum);
            }
        }
        int draw(Random& random) const
        {
            const double target = random.uniform() * m_cumulative.back();
            const auto k = std::upper_bound(m_cumulative.begin(), m_cumulative.end(), target) -
                           m_cumulative.begin();
            return m_cells[std::min(m_cells.size() - 1, static_cast<std::size_t>(k))];
        }

    private:
        std::vector<int> m_cells;
        std::vector<double> m_cumulative;
    };

    struct Samplers {
        CellSampler inside;
        CellSampler outside;
    };

    Samplers samplers(double exponent) const
    {
        std::vector<int> inside;
        std::vector<int> outside;
        const Envelope around = m_regionBox.expandedBy(0.5);
        for (int c = 0; c < m_lattice.cellCount(); ++c) {
            if (m_regionCell[at(c)]) {
                inside.push_back(c);
            } else if (m_states.label[at(c)] >= 0 && around.contains(m_lattice.centre(c))) {
                outside.push_back(c);
            }
        }
        return {CellSampler(inside, m_density, exponent),
                CellSampler(outside, m_density, exponent)};
    }

    /// A point in a cell drawn from the region nine times in ten, from around it otherwise.
    Point drawPoint(const Samplers& s, Random& random) const
    {
        const int cell = random.chance(0.1) ? s.outside.draw(random) : s.inside.draw(random);
        const auto [angle, distance] = random.polar(0.0, 1.0);
        return m_lattice.inside(cell, angle, std::sqrt(distance));
    }

    void writePointLayer(const std::string& name, int count, double exponent, std::uint64_t id,
                         const std::vector<Field>& fields, const std::string& idField,
                         const std::string& nameField,
                         const std::function<void(LayerWriter&, Point, int, Random&)>& attributes)
    {
        step("writing the point inventory " + name);
        Random random = stream(id);
        const Samplers s = samplers(exponent);
        LayerWriter writer(m_folder, name, ShapeType::Point, fields);
        for (int k = 1; k <= count; ++k) {
            const Point p = drawPoint(s, random);
            attributes(writer, p, k, random);
            writer.add(Geometry::point(p));
        }
        const std::int64_t written = writer.count();
        m_result.pointInventory.push_back(
            {writer.finish(), ShapeType::Point, idField, nameField, written});
    }

    std::string placeOf(Point p) const { return m_geography.nearestCity(p).name; }

    void writePoints()
    {
        const auto coordinates = [](LayerWriter& w, Point p) {
            w.set("LATITUDE", rounded(p.y, 1e-6));
            w.set("LONGITUDE", rounded(p.x, 1e-6));
        };
        writePointLayer(
            "schools", m_profile.schools, 0.9, 50,
            {textField("SCHOOL_ID", 10), textField("SCHOOL_NM", 60), integerField("ENROLL"),
             doubleField("LATITUDE"), doubleField("LONGITUDE")},
            "SCHOOL_ID", "SCHOOL_NM", [&](LayerWriter& w, Point p, int k, Random& r) {
                static const std::array<const char*, 4> kinds{
                    "Elementary School", "Elementary School", "Middle School", "High School"};
                const int kind = r.integer(0, 3);
                const std::string where = kind == 3 ? placeOf(p) : r.pick(kWords);
                w.set("SCHOOL_ID", format("SCH%06d", k));
                w.set("SCHOOL_NM", where + " " + kinds[at(kind)]);
                w.set("ENROLL", int32(kind == 3 ? r.integer(900, 2800) : r.integer(200, 900)));
                coordinates(w, p);
            });
        writeHospitals();
        writePointLayer("fire_stations", m_profile.fireStations, 0.6, 52,
                        {textField("STA_ID", 8), textField("STA_NAME", 60), doubleField("LATITUDE"),
                         doubleField("LONGITUDE")},
                        "STA_ID", "STA_NAME", [&](LayerWriter& w, Point p, int k, Random& r) {
                            w.set("STA_ID", format("FS%05d", k));
                            w.set("STA_NAME",
                                  placeOf(p) + " Fire Station " + std::to_string(r.integer(1, 60)));
                            coordinates(w, p);
                        });
        writePointLayer("police_stations", m_profile.policeStations, 0.8, 53,
                        {textField("PD_ID", 8), textField("PD_NAME", 60)}, "PD_ID", "PD_NAME",
                        [&](LayerWriter& w, Point p, int k, Random& r) {
                            w.set("PD_ID", format("PD%05d", k));
                            w.set("PD_NAME", r.chance(0.7)
                                                 ? placeOf(p) + " Police Department"
                                                 : r.pick(kWords) + " Sheriff Substation");
                        });
        writePointLayer("emergency_centers", m_profile.emergencyCenters, 0.3, 54,
                        {textField("EOC_ID", 8), textField("EOC_NAME", 60)}, "EOC_ID", "EOC_NAME",
                        [&](LayerWriter& w, Point p, int k, Random&) {
                            w.set("EOC_ID", format("EOC%04d", k));
                            w.set("EOC_NAME", placeOf(p) + " Emergency Operations Center");
                        });
        writeBridges();
        const std::vector<std::pair<const char*, double>> occupancies{
            {"RES1", 0.62}, {"RES2", 0.05}, {"RES3", 0.1},  {"COM1", 0.05},
            {"COM2", 0.03}, {"COM4", 0.06}, {"IND1", 0.02}, {"IND2", 0.02},
            {"REL1", 0.02}, {"GOV1", 0.01}, {"EDU1", 0.01}, {"AGR1", 0.01}};
        writePointLayer("buildings", static_cast<int>(m_profile.buildings), 1.0, 56,
                        {textField("BLDG_ID", 10), textField("ADDRESS", 60),
                         textField("OCCUPANCY", 5), smallField("STORIES")},
                        "BLDG_ID", "ADDRESS", [&](LayerWriter& w, Point, int k, Random& r) {
                            double pick = r.uniform();
                            std::size_t o = 0;
                            while (o + 1 < occupancies.size() && pick >= occupancies[o].second) {
                                pick -= occupancies[o++].second;
                            }
                            const std::string occupancy = occupancies[o].first;
                            w.set("BLDG_ID", format("B%08d", k));
                            const int block = r.integer(1, 99);
                            std::string address =
                                std::to_string(block * 100 + r.integer(0, 99)) + " ";
                            address += r.pick(kWords) + " ";
                            address += r.pick(kStreetEndings);
                            w.set("ADDRESS", address);
                            w.set("OCCUPANCY", occupancy);
                            w.set("STORIES", int16(occupancy == "RES1"   ? r.integer(1, 2)
                                                   : occupancy == "RES3" ? r.integer(2, 12)
                                                                         : r.integer(1, 5)));
                        });
    }

    /// Hospitals as building footprints: one rectangle, or a campus of up to three.
    void writeHospitals()
    {
        step("writing the point inventory hospitals");
        Random random = stream(51);
        const Samplers s = samplers(1.0);
        LayerWriter writer(
            m_folder, "hospitals", ShapeType::Polygon,
            {textField("HOSP_ID", 8), textField("FACNAME", 60), integerField("BEDS")});
        const double sx = m_lattice.sideX();
        const double sy = m_lattice.sideY();
        for (int k = 1; k <= m_profile.hospitals; ++k) {
            const int cell = random.chance(0.1) ? s.outside.draw(random) : s.inside.draw(random);
            const Point c = m_lattice.centre(cell);
            const double direction = random.uniform(0, kPi);
            const int parts = random.chance(0.3) ? random.integer(2, 3) : 1;
            Rings rings;
            for (int part = 0; part < parts; ++part) {
                // Parts 0.3 cell sides apart, each under 0.14 across its diagonal: they never meet.
                const double along = 0.3 * (part - (parts - 1) / 2.0);
                const Point middle{c.x + along * sx * std::cos(direction),
                                   c.y + along * sy * std::sin(direction)};
                const double a = random.uniform(0.05, 0.1);
                const double b = random.uniform(0.04, 0.1);
                const double turn = direction + random.uniform(-0.2, 0.2);
                Path ring;
                for (const auto& [u, v] : std::array<std::pair<double, double>, 4>{
                         {{-a, -b}, {a, -b}, {a, b}, {-a, b}}}) {
                    ring.push_back({middle.x + (u * std::cos(turn) - v * std::sin(turn)) * sx,
                                    middle.y + (u * std::sin(turn) + v * std::cos(turn)) * sy});
                }
                ring.push_back(ring.front());
                rings.push_back(std::move(ring));
            }
            writer.set("HOSP_ID", format("H%05d", k));
            writer.set("FACNAME", random.chance(0.5) ? placeOf(c) + " Community Hospital"
                                                     : random.pick(kWords) + " Medical Center");
            writer.set("BEDS",
                       int32(parts > 1 ? random.integer(150, 600) : random.integer(20, 250)));
            writer.add(Geometry::polygon(rings));
        }
        const std::int64_t count = writer.count();
        m_result.pointInventory.push_back(
            {writer.finish(), ShapeType::Polygon, "HOSP_ID", "FACNAME", count});
    }

    /// Bridges: most on the highways near the region, the rest on local roads.
    void writeBridges()
    {
        step("writing the point inventory highway_bridges");
        Random random = stream(55);
        const Samplers s = samplers(0.5);
        const Envelope near = m_regionBox.expandedBy(0.3);
        std::vector<std::pair<Point, const Route*>> onHighways;
        for (const Route& r : m_highways) {
            for (const Point& p : r.path) {
                if (near.contains(p)) {
                    onHighways.push_back({p, &r});
                }
            }
        }
        const std::vector<std::string> waters{"CREEK", "RIVER", "SLOUGH", "CANAL", "WASH"};
        LayerWriter writer(m_folder, "highway_bridges", ShapeType::Point,
                           {textField("STRUCNUM", 15), textField("FEAT_DESC", 40),
                            smallField("YEAR_BUILT"), doubleField("LATITUDE"),
                            doubleField("LONGITUDE")});
        for (int k = 1; k <= m_profile.bridges; ++k) {
            Point p;
            std::string crossing;
            std::string word = random.pick(kWords);
            std::transform(word.begin(), word.end(), word.begin(),
                           [](unsigned char ch) { return static_cast<char>(std::toupper(ch)); });
            if (!onHighways.empty() && random.chance(0.7)) {
                const auto& [on, route] =
                    onHighways[at(random.integer(0, static_cast<int>(onHighways.size()) - 1))];
                const auto [angle, distance] = random.polar(0.0, 0.002);
                p = offset(on, angle, distance);
                crossing = random.chance(0.5) ? word + " " + random.pick(waters)
                                              : route->name + " OVERCROSSING";
            } else {
                p = drawPoint(s, random);
                crossing = word + " " + random.pick(waters);
            }
            const int district = random.integer(1, 12);
            const char owner = random.chance(0.8) ? 'C' : 'L';
            writer.set("STRUCNUM", format("%02d%c%04d", district, owner, k));
            writer.set("FEAT_DESC", crossing);
            writer.set("YEAR_BUILT", int16(random.integer(1925, 2012)));
            writer.set("LATITUDE", rounded(p.y, 1e-6));
            writer.set("LONGITUDE", rounded(p.x, 1e-6));
            writer.add(Geometry::point(p));
        }
        const std::int64_t count = writer.count();
        m_result.pointInventory.push_back(
            {writer.finish(), ShapeType::Point, "STRUCNUM", "FEAT_DESC", count});
    }

    // ------------------------------------------------------------------ the rest

    void writeOtherLayers()
    {
        step("writing the MarPlot objects");
        {
            Random random = stream(80);
            const Samplers s = samplers(0.5);
            const std::vector<std::string> chemicals{"Chlorine",       "Anhydrous ammonia",
                                                     "Sulfur dioxide", "Hydrochloric acid",
                                                     "Propane",        "Gasoline"};
            const std::vector<std::string> kinds{" Chemical", " Water Treatment Plant",
                                                 " Tank Farm", " Refinery", " Cold Storage"};
            LayerWriter writer(
                m_folder, "marplot", ShapeType::Point,
                {textField("OBJ_NAME", 40), textField("CHEMICAL", 30), doubleField("QTY_LBS")});
            for (int k = 0; k < m_profile.marPlot; ++k) {
                const int cell = s.inside.draw(random);
                const auto [angle, distance] = random.polar(0.0, 1.0);
                const Point p = m_lattice.inside(cell, angle, distance);
                std::string name = random.pick(kWords);
                name += random.pick(kinds);
                writer.set("OBJ_NAME", name);
                writer.set("CHEMICAL", random.pick(chemicals));
                writer.set("QTY_LBS", rounded(std::pow(10.0, random.uniform(2.0, 5.5)), 1.0));
                writer.add(Geometry::point(p));
            }
            m_result.marPlot = writer.finish();
        }

        step("writing the flood view");
        {
            // Square cells as a depth grid turned into polygons gives them.
            const double s = m_profile.floodViewCell;
            LayerWriter writer(m_folder, "flood_view", ShapeType::Polygon,
                               {doubleField("DEPTH_FT"), smallField("RET_PERIOD")});
            const Envelope box = boxOf(m_leveeRiver, 0.05);
            const double x0 = std::floor(box.xmin() / s) * s;
            const double y0 = std::floor(box.ymin() / s) * s;
            const int columns = static_cast<int>(std::ceil((box.xmax() - x0) / s));
            const int rows = static_cast<int>(std::ceil((box.ymax() - y0) / s));
            for (int r = 0; r < rows; ++r) {
                for (int q = 0; q < columns; ++q) {
                    const double x = x0 + q * s;
                    const double y = y0 + r * s;
                    const Point c{x + s / 2, y + s / 2};
                    const double d = distanceToPath(c, m_leveeRiver).first;
                    if (d >= 0.035 || m_geography.stateAt(c) < 0) {
                        continue;
                    }
                    writer.set("DEPTH_FT", rounded(0.2 + 9.0 * (1.0 - d / 0.035), 0.1));
                    writer.set("RET_PERIOD", int16(100));
                    writer.add(Geometry::polygon(
                        {{{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}, {x, y}}}));
                }
            }
            m_result.floodView = writer.finish();
        }

        step("writing the flood study cases");
        {
            Random random = stream(82);
            struct Case {
                const char* name;
                const char* hazard;
                bool annual;
                bool option0;
                bool losses;
            };
            const std::array<Case, 6> cases{
                {{"Levee breach, 100-year", "Riverine", true, true, true},
                 {"Coastal surge", "Coastal", true, true, true},
                 {"Dam release", "Riverine", false, true, true},
                 {"Combined river and coast", "Riverine and coastal", true, true, true},
                 {"Lake seiche", "Riverine", true, false, true},
                 {"Draft case", "Riverine", true, true, false}}};
            LayerWriter study(m_folder, "flood_study_cases", ShapeType::Null,
                              {smallField("CASE_ID"), textField("CASE_NAME", 40),
                               textField("HAZARD", 24), dateField("CREATED")});
            LayerWriter losses(m_folder, "flood_losses", ShapeType::Null,
                               {smallField("CASE_ID"), textField("RET_PERIOD", 10),
                                smallField("ANALYSIS_OPT"), textField("OCCUPANCY", 5),
                                doubleField("BLDG_LOSS"), doubleField("CONT_LOSS")});
            const std::vector<std::string> occupancies{
                "RES1", "RES2", "RES3", "RES4", "RES5", "RES6",  "COM1", "COM2", "COM3", "COM4",
                "COM5", "COM6", "COM7", "COM8", "COM9", "COM10", "IND1", "IND2", "IND3", "IND4",
                "IND5", "IND6", "AGR1", "REL1", "GOV1", "GOV2",  "EDU1", "EDU2"};
            const std::array<std::pair<const char*, double>, 6> periods{
                {{"10", 10}, {"25", 25}, {"50", 50}, {"100", 100}, {"500", 500}, {"Annual", 0}}};
            for (std::size_t k = 0; k < cases.size(); ++k) {
                const Case& c = cases[k];
                study.set("CASE_ID", int16(static_cast<int>(k) + 1));
                study.set("CASE_NAME", c.name);
                study.set("HAZARD", c.hazard);
                study.set("CREATED",
                          Date::fromParts(2009 + static_cast<int>(k) % 3,
                                          1 + 2 * static_cast<int>(k), 10 + static_cast<int>(k)));
                study.add();
                if (!c.losses) {
                    continue;
                }
                for (int option = 0; option < 2; ++option) {
                    if (option == 0 && !c.option0) {
                        continue;
                    }
                    for (const auto& [period, years] : periods) {
                        if (years == 0 && !c.annual) {
                            continue;
                        }
                        for (const auto& occupancy : occupancies) {
                            const double base = random.uniform(5.0, 2500.0);
                            const double scale =
                                years == 0 ? 0.012 : std::log(years) / std::log(500.0);
                            losses.set("CASE_ID", int16(static_cast<int>(k) + 1));
                            losses.set("RET_PERIOD", period);
                            losses.set("ANALYSIS_OPT", int16(option));
                            losses.set("OCCUPANCY", occupancy);
                            losses.set("BLDG_LOSS", rounded(base * scale, 0.001));
                            losses.set("CONT_LOSS",
                                       rounded(base * scale * random.uniform(0.3, 0.7), 0.001));
                            losses.add();
                        }
                    }
                }
            }
            m_result.floodStudyCases = study.finish();
            m_result.floodLosses = losses.finish();
        }
    }

    fs::path m_folder;
    Profile m_profile;
    std::uint64_t m_seed;
    std::function<void(const std::string&)> m_progress;
    Geography m_geography;
    Lattice m_lattice;
    CurveOrder m_curve;

    std::vector<float> m_density;
    Units m_states;
    Units m_counties;
    Units m_tracts;
    Units m_blocks;
    std::vector<char> m_regionCounty;
    std::vector<char> m_regionCell;
    Envelope m_regionBox;
    std::vector<std::int64_t> m_tractPopulation;
    std::vector<std::int64_t> m_blockPopulation;
    std::vector<std::string> m_countyCode;
    std::vector<std::string> m_countyName;
    std::vector<std::string> m_tractCode;
    std::vector<std::string> m_tractName;

    std::vector<Fault> m_faults;
    int m_scenarioFaultCount = 0;
    Path m_damRiver;
    Path m_leveeRiver;
    std::vector<Route> m_highways;

    SampleSources m_result;
};

} // namespace

SampleSources writeSampleSources(const std::filesystem::path& folder, SampleSize size,
                                 std::uint64_t seed,
                                 const std::function<void(const std::string& step)>& progress)
{
    return SampleWriter(folder, size, seed, progress).run();
}

} // namespace brevant::samplehost
