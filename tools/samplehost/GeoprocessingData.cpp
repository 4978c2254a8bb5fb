#include "samplehost/GeoprocessingData.h"

#include "samplehost/Random.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cpl_error.h>
#include <cstdio>
#include <gdal_priv.h>
#include <iterator>
#include <memory>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>
#include <stdexcept>
#include <utility>
#include <vector>

namespace brevant::samplehost {

namespace {

namespace fs = std::filesystem;
constexpr std::uint64_t kSeed = 20240917;

/// The numbers of one layer. The engine is seeded as the generator always seeded it, so the
/// files stay the same.
Random streamOf(std::uint64_t stream)
{
    return Random::withEngineSeed(kSeed * 1000003 + stream);
}

struct Destination {
    fs::path folder;
    std::function<void(const GeneratedFile&)> written;
};

struct Extent {
    double minX, minY, maxX, maxY;
    double width() const { return maxX - minX; }
    double height() const { return maxY - minY; }
};

constexpr Extent kState{-124.0, 32.0, -114.0, 42.0};
constexpr Extent kSubArea{-122.0, 37.0, -120.0, 39.0};

/// Rows of nearly equal column counts, so any feature count fills the extent exactly.
std::vector<int> rowColumns(std::int64_t count, const Extent& extent)
{
    auto rows =
        std::llround(std::sqrt(static_cast<double>(count) * extent.height() / extent.width()));
    rows = std::clamp<std::int64_t>(rows, 1, count);
    std::vector<int> columns(static_cast<std::size_t>(rows));
    for (std::int64_t k = 0; k < rows; ++k) {
        columns[static_cast<std::size_t>(k)] =
            static_cast<int>(count / rows + (k < count % rows ? 1 : 0));
    }
    return columns;
}

struct Ring {
    std::vector<double> xs, ys;

    void clear()
    {
        xs.clear();
        ys.clear();
    }
    void add(double x, double y)
    {
        xs.push_back(x);
        ys.push_back(y);
    }
    OGRLinearRing* close()
    {
        add(xs.front(), ys.front());
        auto* ring = new OGRLinearRing;
        ring->setPoints(static_cast<int>(xs.size()), xs.data(), ys.data());
        return ring;
    }
};

/// Angles strictly increasing over one turn, so a ring with positive radii about a point is
/// simple whatever the radii.
std::vector<double> turnAngles(Random& random, int count)
{
    std::vector<double> angles(static_cast<std::size_t>(count));
    const double start = random.uniform(0.0, 2 * kPi);
    for (int i = 0; i < count; ++i) {
        angles[static_cast<std::size_t>(i)] =
            start + 2 * kPi * (i + 0.5 + random.uniform(-0.35, 0.35)) / count;
    }
    return angles;
}

/// A star-shaped ring inside the cell of centre (cx, cy) and half-sizes (hx, hy). Radii are
/// fractions of the way to the cell's edge, so the ring reaches into the corners and the gaps
/// between neighbours stay a minority of the area.
OGRPolygon* cellPolygon(Random& random, double cx, double cy, double hx, double hy, int vertices,
                        bool withHole, Ring& ring)
{
    const double ox = cx + hx * random.uniform(-0.03, 0.03);
    const double oy = cy + hy * random.uniform(-0.03, 0.03);
    const double base = random.uniform(0.83, 0.92);
    const int lobes = random.integer(2, 6);
    const double phase = random.uniform(0.0, 2 * kPi);

    ring.clear();
    for (const double angle : turnAngles(random, vertices)) {
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        const double toEdge = 1.0 / std::max(std::abs(c), std::abs(s));
        const double radius = std::clamp(base + 0.05 * std::sin(lobes * angle + phase) +
                                             random.uniform(-0.015, 0.015),
                                         0.55, 0.95) *
                              toEdge;
        ring.add(ox + hx * radius * c, oy + hy * radius * s);
    }
    auto* polygon = new OGRPolygon;
    polygon->addRingDirectly(ring.close());

    if (withHole) {
        // Well inside the circle the outer ring encloses (radius >= 0.55 less the chord sag).
        const int holeVertices = random.integer(8, 24);
        const double holeBase = random.uniform(0.12, 0.25);
        ring.clear();
        auto angles = turnAngles(random, holeVertices);
        std::reverse(angles.begin(), angles.end());
        for (const double angle : angles) {
            const double radius = holeBase * random.uniform(0.8, 1.2);
            ring.add(ox + hx * radius * std::cos(angle), oy + hy * radius * std::sin(angle));
        }
        polygon->addRingDirectly(ring.close());
    }
    return polygon;
}

struct Field {
    const char* name;
    OGRFieldType type;
    int width;
};

std::int64_t scaled(double base, double scale)
{
    return std::max<std::int64_t>(1, std::llround(base * scale));
}

/// One GeoPackage with one layer; fill(feature, i) sets the i-th feature's geometry and
/// attributes. All inserts share one transaction, which is what makes SQLite fast here.
template <typename Fill>
void writeLayer(const Destination& into, const std::string& file, const char* layerName,
                OGRwkbGeometryType geometryType, const std::vector<Field>& fields,
                std::int64_t count, Fill fill)
{
    const auto started = std::chrono::steady_clock::now();
    const fs::path path = into.folder / file;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        fs::remove(path.string() + suffix);
    }
    auto* driver = GetGDALDriverManager()->GetDriverByName("GPKG");
    if (driver == nullptr) {
        throw std::runtime_error("GDAL has no GPKG driver");
    }
    std::unique_ptr<GDALDataset> dataset(
        driver->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!dataset) {
        throw std::runtime_error("cannot create " + path.string() + ": " + CPLGetLastErrorMsg());
    }
    OGRSpatialReference srs;
    srs.importFromEPSG(4269);
    srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    const char* options[] = {"GEOMETRY_NAME=Shape", "FID=OBJECTID", "SPATIAL_INDEX=YES", nullptr};
    OGRLayer* layer =
        dataset->CreateLayer(layerName, &srs, geometryType, const_cast<char**>(options));
    if (layer == nullptr) {
        throw std::runtime_error("cannot create layer " + std::string(layerName) + ": " +
                                 CPLGetLastErrorMsg());
    }
    for (const Field& field : fields) {
        OGRFieldDefn definition(field.name, field.type);
        definition.SetWidth(field.width);
        if (layer->CreateField(&definition) != OGRERR_NONE) {
            throw std::runtime_error("cannot create field " + std::string(field.name));
        }
    }

    if (dataset->StartTransaction() != OGRERR_NONE) {
        throw std::runtime_error("cannot start a transaction on " + path.string());
    }
    OGRFeature feature(layer->GetLayerDefn());
    for (std::int64_t i = 0; i < count; ++i) {
        fill(feature, i);
        feature.SetFID(OGRNullFID);
        if (layer->CreateFeature(&feature) != OGRERR_NONE) {
            throw std::runtime_error("cannot write to " + path.string() + ": " +
                                     CPLGetLastErrorMsg());
        }
    }
    if (dataset->CommitTransaction() != OGRERR_NONE) {
        throw std::runtime_error("cannot commit " + path.string() + ": " + CPLGetLastErrorMsg());
    }
    dataset.reset(); // the spatial index is finished on close
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
    if (into.written) {
        into.written({file, count, elapsed.count()});
    }
}

/// Polygons in a grid of cells over the extent, each inside its own cell, so they never overlap
/// and leave gaps between them.
template <typename Attributes>
void writeCellLayer(const Destination& into, const std::string& file, const char* layerName,
                    const std::vector<Field>& fields, std::int64_t count, const Extent& extent,
                    std::uint64_t stream, double holeShare, Attributes attributes)
{
    Random random = streamOf(stream);
    const auto columns = rowColumns(count, extent);
    const double rowHeight = extent.height() / static_cast<double>(columns.size());
    std::size_t row = 0;
    std::int64_t rowStart = 0;
    Ring ring;
    writeLayer(
        into, file, layerName, wkbPolygon, fields, count, [&](OGRFeature& feature, std::int64_t i) {
            if (i - rowStart == columns[row]) {
                rowStart = i;
                ++row;
            }
            const double width = extent.width() / columns[row];
            const double cx = extent.minX + (static_cast<double>(i - rowStart) + 0.5) * width;
            const double cy = extent.minY + (static_cast<double>(row) + 0.5) * rowHeight;
            const int vertices = random.integer(20, 200);
            const bool hole = random.uniform() < holeShare;
            feature.SetGeometryDirectly(
                cellPolygon(random, cx, cy, width / 2, rowHeight / 2, vertices, hole, ring));
            attributes(feature, random);
        });
}

/// Cell (x, y) at distance d along a Hilbert curve over a side x side grid (side a power of 2):
/// consecutive tiles stay neighbours at every scale.
std::pair<int, int> hilbertCell(int side, int d)
{
    int x = 0;
    int y = 0;
    for (int s = 1; s < side; s *= 2) {
        const int rx = 1 & (d / 2);
        const int ry = 1 & (d ^ rx);
        if (ry == 0) {
            if (rx == 1) {
                x = s - 1 - x;
                y = s - 1 - y;
            }
            std::swap(x, y);
        }
        x += s * rx;
        y += s * ry;
        d /= 4;
    }
    return {x, y};
}

/// Points uniform over the state, written tile by tile along a space-filling curve as
/// inventories sorted by area code are: in random order the spatial index takes twice as long.
void writePoints(const Destination& into, double scale)
{
    constexpr int kSide = 128;
    constexpr int kTiles = kSide * kSide;
    Random random = streamOf(1);
    const std::int64_t count = scaled(1'000'000, scale);
    const std::int64_t perTile = count / kTiles;
    const std::int64_t extra = count % kTiles;
    int tile = -1;
    std::int64_t tileEnd = 0;
    double tileX = 0;
    double tileY = 0;
    const double tileWidth = kState.width() / kSide;
    const double tileHeight = kState.height() / kSide;
    char name[32];
    writeLayer(into, "w1_points.gpkg", "points", wkbPoint,
               {{"name", OFTString, 0}, {"type", OFTString, 0}}, count,
               [&](OGRFeature& feature, std::int64_t i) {
                   while (i == tileEnd) {
                       ++tile;
                       tileEnd += perTile + (tile < extra ? 1 : 0);
                       const auto [column, row] = hilbertCell(kSide, tile);
                       tileX = kState.minX + column * tileWidth;
                       tileY = kState.minY + row * tileHeight;
                   }
                   const double x = tileX + tileWidth * random.uniform();
                   const double y = tileY + tileHeight * random.uniform();
                   if (auto* point = static_cast<OGRPoint*>(feature.GetGeometryRef())) {
                       point->setX(x);
                       point->setY(y);
                   } else {
                       feature.SetGeometryDirectly(new OGRPoint(x, y));
                       feature.SetFieldNull(1);
                   }
                   std::snprintf(name, sizeof name, "P%07lld", static_cast<long long>(i + 1));
                   feature.SetField(0, name);
               });
}

const char* const kClasses[] = {"A", "B", "C", "D", "E"};

void writeHazard(const Destination& into, double scale)
{
    writeCellLayer(into, "w1_hazard.gpkg", "hazard", {{"type", OFTString, 1}},
                   scaled(20'000, scale), kState, 2, 0.0, [](OGRFeature& feature, Random& random) {
                       feature.SetField(0, kClasses[random.integer(0, 4)]);
                   });
}

void writeStatewide(const Destination& into, double scale)
{
    writeCellLayer(into, "w2_statewide.gpkg", "statewide",
                   {{"Type", OFTString, 8}, {"paramvalue", OFTReal, 0}}, scaled(100'000, scale),
                   kState, 3, 0.1, [](OGRFeature& feature, Random& random) {
                       feature.SetField(0, kClasses[random.integer(0, 4)]);
                       feature.SetField(1, std::round(random.uniform(0.05, 1.5) * 1000) / 1000);
                   });
}

/// A wobbly closed curve over about 7 % of the state, with a hole near its middle.
void writeBoundary(const Destination& into)
{
    Random random = streamOf(4);
    const double cx = -119.3;
    const double cy = 36.9;
    const double radius = 1.4;
    const int harmonics[] = {2, 3, 5, 8, 13, 21, 34, 55, 89};
    double amplitudes[std::size(harmonics)];
    double phases[std::size(harmonics)];
    for (std::size_t k = 0; k < std::size(harmonics); ++k) {
        // Amplitudes sum below 0.3, keeping every radius well clear of the hole.
        amplitudes[k] = random.uniform(0.3, 1.0) * 0.075 / (1.0 + 0.5 * static_cast<double>(k));
        phases[k] = random.uniform(0.0, 2 * kPi);
    }
    Ring ring;
    writeLayer(into, "w2_boundary.gpkg", "boundary", wkbPolygon, {{"Name", OFTString, 0}}, 1,
               [&](OGRFeature& feature, std::int64_t) {
                   for (const double angle : turnAngles(random, 4990)) {
                       double r = 1.0 + random.uniform(-0.002, 0.002);
                       for (std::size_t k = 0; k < std::size(harmonics); ++k) {
                           r += amplitudes[k] * std::sin(harmonics[k] * angle + phases[k]);
                       }
                       // Cosine of the latitude keeps the curve round on the ground.
                       ring.add(cx + radius * r * std::cos(angle) / std::cos(cy * kPi / 180),
                                cy + radius * r * std::sin(angle));
                   }
                   auto* polygon = new OGRPolygon;
                   polygon->addRingDirectly(ring.close());
                   ring.clear();
                   auto angles = turnAngles(random, 120);
                   std::reverse(angles.begin(), angles.end());
                   for (const double angle : angles) {
                       const double r = 0.2 * (1.0 + 0.15 * std::sin(3 * angle));
                       ring.add(cx + 0.1 + radius * r * std::cos(angle) / std::cos(cy * kPi / 180),
                                cy - 0.05 + radius * r * std::sin(angle));
                   }
                   polygon->addRingDirectly(ring.close());
                   feature.SetGeometryDirectly(polygon);
                   feature.SetField(0, "Study region");
               });
}

void writeInundation(const Destination& into, double scale)
{
    writeCellLayer(into, "w3_inundation.gpkg", "inundation", {{"w_depth", OFTReal, 0}},
                   scaled(5'000, scale), kSubArea, 5, 0.0, [](OGRFeature& feature, Random& random) {
                       feature.SetField(0, std::round(random.uniform(0.1, 6.0) * 100) / 100);
                   });
}

/// Tracts tessellating the sub-area without gaps: wobbly row lines and wobbly column dividers
/// between them. Each line carries every node of both rows it separates, so neighbouring
/// tracts share their edges vertex for vertex.
void writeTracts(const Destination& into, double scale)
{
    Random random = streamOf(6);
    const Extent& area = kSubArea;
    const std::int64_t count = scaled(2'000, scale);
    const auto columns = rowColumns(count, area);
    const std::size_t rows = columns.size();
    const double rowHeight = area.height() / static_cast<double>(rows);
    const double columnWidth = area.width() / columns.front();

    struct Line {
        double y, amplitude, period, phase;
        std::vector<double> nodes;
        double at(double x) const { return y + amplitude * std::sin(x / period + phase); }
    };
    struct Divider {
        double x, amplitude;
        int waves, points;
    };
    std::vector<std::vector<Divider>> dividers(rows);
    for (std::size_t k = 0; k < rows; ++k) {
        const double width = area.width() / columns[k];
        dividers[k].push_back({area.minX, 0, 0, 0});
        for (int c = 1; c < columns[k]; ++c) {
            dividers[k].push_back({area.minX + (c + random.uniform(-0.25, 0.25)) * width,
                                   0.06 * width * random.uniform(-1.0, 1.0), random.integer(1, 2),
                                   random.integer(0, 6)});
        }
        dividers[k].push_back({area.maxX, 0, 0, 0});
    }
    std::vector<Line> lines(rows + 1);
    for (std::size_t j = 0; j <= rows; ++j) {
        Line& line = lines[j];
        const bool edge = j == 0 || j == rows;
        line.y = area.minY +
                 (static_cast<double>(j) + (edge ? 0.0 : random.uniform(-0.15, 0.15))) * rowHeight;
        line.amplitude = edge ? 0.0 : 0.06 * rowHeight * random.uniform(0.3, 1.0);
        line.period = columnWidth * random.uniform(0.7, 1.5) / (2 * kPi);
        line.phase = random.uniform(0.0, 2 * kPi);
        std::vector<double> structural;
        for (const std::size_t k : {j - 1, j}) {
            if (k < rows) { // j - 1 wraps for the first line
                for (const Divider& divider : dividers[k]) {
                    structural.push_back(divider.x);
                }
            }
        }
        std::sort(structural.begin(), structural.end());
        structural.erase(std::unique(structural.begin(), structural.end()), structural.end());
        const double step = columnWidth / random.uniform(3.0, 7.0);
        for (std::size_t n = 0; n + 1 < structural.size(); ++n) {
            line.nodes.push_back(structural[n]);
            const double gap = structural[n + 1] - structural[n];
            const int between = static_cast<int>(std::ceil(gap / step)) - 1;
            for (int m = 1; m <= between; ++m) {
                line.nodes.push_back(structural[n] + gap * m / (between + 1));
            }
        }
        line.nodes.push_back(structural.back());
    }

    const auto dividerPoint = [&](const Divider& divider, std::size_t k, int m) {
        const double t = static_cast<double>(m) / (divider.points + 1);
        const double bottom = lines[k].at(divider.x);
        const double top = lines[k + 1].at(divider.x);
        return std::pair{divider.x + divider.amplitude * std::sin(kPi * divider.waves * t),
                         bottom + t * (top - bottom)};
    };

    std::size_t row = 0;
    std::int64_t rowStart = 0;
    Ring ring;
    char tract[16];
    writeLayer(into, "w3_tracts.gpkg", "tracts", wkbPolygon,
               {{"Tract", OFTString, 11}, {"CenLat", OFTReal, 0}}, count,
               [&](OGRFeature& feature, std::int64_t i) {
                   if (i - rowStart == columns[row]) {
                       rowStart = i;
                       ++row;
                   }
                   const auto c = static_cast<std::size_t>(i - rowStart);
                   const Divider& left = dividers[row][c];
                   const Divider& right = dividers[row][c + 1];
                   const Line& bottom = lines[row];
                   const Line& top = lines[row + 1];
                   ring.clear();
                   const auto bottomFrom =
                       std::lower_bound(bottom.nodes.begin(), bottom.nodes.end(), left.x);
                   const auto bottomTo = std::upper_bound(bottomFrom, bottom.nodes.end(), right.x);
                   for (auto x = bottomFrom; x != bottomTo; ++x) {
                       ring.add(*x, bottom.at(*x));
                   }
                   for (int m = 1; m <= right.points; ++m) {
                       const auto [x, y] = dividerPoint(right, row, m);
                       ring.add(x, y);
                   }
                   const auto topFrom =
                       std::lower_bound(top.nodes.begin(), top.nodes.end(), left.x);
                   const auto topTo = std::upper_bound(topFrom, top.nodes.end(), right.x);
                   for (auto x = topTo; x != topFrom;) {
                       --x;
                       ring.add(*x, top.at(*x));
                   }
                   for (int m = left.points; m >= 1; --m) {
                       const auto [x, y] = dividerPoint(left, row, m);
                       ring.add(x, y);
                   }
                   auto* polygon = new OGRPolygon;
                   polygon->addRingDirectly(ring.close());
                   OGRPoint centroid;
                   polygon->Centroid(&centroid);
                   feature.SetGeometryDirectly(polygon);
                   // State, county and tract codes, as in census tract identifiers.
                   std::snprintf(tract, sizeof tract, "06%03d%06d",
                                 static_cast<int>((1 + 2 * (i / 5000)) % 1000),
                                 static_cast<int>(100 * (i % 5000) + 100));
                   feature.SetField(0, tract);
                   feature.SetField(1, centroid.getY());
               });
}

} // namespace

void writeGeoprocessingData(const fs::path& folder, double scale,
                            const std::function<void(const GeneratedFile&)>& written)
{
    GDALAllRegister();
    const Destination into{folder, written};
    writePoints(into, scale);
    writeHazard(into, scale);
    writeStatewide(into, scale);
    writeBoundary(into);
    writeInundation(into, scale);
    writeTracts(into, scale);
}

} // namespace brevant::samplehost
