#include "samplehost/LayerWriter.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

#include <algorithm>
#include <array>
#include <set>

namespace brevant::samplehost {

namespace {

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
MapGrid stateMapGrid(const RegionLayout& layout, std::int64_t target, const Random& random)
{
    Envelope box;
    for (int c = 0; c < layout.lattice.cellCount(); ++c) {
        if (layout.states.label[at(c)] == kRegionState) {
            box.expandToInclude(layout.lattice.centre(c));
        }
    }
    const double stateArea = layout.states.cells[kRegionState] * layout.lattice.cellArea();
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
                const int cell = layout.lattice.cellAt(centre);
                if (layout.stateOfCell(cell) == kRegionState) {
                    grid.cells.push_back({centre, layout.inRegion(cell)});
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
std::vector<std::size_t> plant(Random& random, const std::vector<MapCell>& cells, int count,
                               std::set<std::size_t>& taken)
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
void writeSiteMap(const RegionLayout& layout, const Output& out, SampleSources& sources,
                  const std::string& code, const std::string& name, const std::string& field,
                  const std::vector<Field>& fields, std::int64_t target, std::uint64_t id,
                  int invalidValues, Value&& value, Spoil&& spoil)
{
    out.step("writing the statewide map " + name);
    Random random = layout.stream(id);
    const MapGrid grid = stateMapGrid(layout, target, random);
    std::set<std::size_t> taken;
    const auto badValues = plant(random, grid.cells, invalidValues, taken);
    const auto badShapes = plant(random, grid.cells, 4, taken);
    LayerWriter writer(out.folder, name, ShapeType::Polygon, fields);
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
    sources.siteMaps.push_back(std::move(map));
}

/// How close to the coast, 1 on the shore, 0 half a degree inland and beyond.
double coastal(const Geography& geography, Point p)
{
    return std::clamp(1.0 - (p.x - geography.coastX(p.y)) * kLongitudeScale / 0.5, 0.0, 1.0);
}

} // namespace

void writeSiteMaps(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    const Noise soil(layout.seed ^ 0x5011, 3.0, 4);
    const Noise wet(layout.seed ^ 0x3e7, 5.0, 3);
    const Noise slope(layout.seed ^ 0x51, 4.0, 4);
    const Noise water(layout.seed ^ 0x6a7e, 2.5, 3);
    // Softer soils near the coast and in the valleys.
    const auto softness = [&](Point p) {
        return std::clamp(0.65 * soil.spread(p.x, p.y) + 0.45 * coastal(layout.geography, p) - 0.05,
                          0.0, 1.0);
    };
    const std::array<const char*, 5> classes{"A", "B", "C", "D", "E"};
    const std::array<std::array<const char*, 2>, 5> units{
        {{"Kgr", "Jgb"}, {"Tv", "KJf"}, {"Tss", "QT"}, {"Qoa", "Qa"}, {"Qaf", "Qm"}}};
    const auto soilClass = [&](Point p) {
        const double v = softness(p);
        return v < 0.12 ? 0 : v < 0.3 ? 1 : v < 0.5 ? 2 : v < 0.85 ? 3 : 4;
    };

    writeSiteMap(
        layout, out, sources, "SOIL", "soil_sites", "SOIL_CLS",
        {textField("SOIL_CLS", 2), textField("GEO_UNIT", 8)}, layout.profile.siteMapPolygons[0], 10,
        4,
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
        layout, out, sources, "LIQF", "liquefaction", "LIQ_SUSC",
        {integerField("LIQ_SUSC"), textField("SUSC_DESC", 16)}, layout.profile.siteMapPolygons[1],
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
        layout, out, sources, "LAND", "landslide", "LS_CAT", {smallField("LS_CAT")},
        layout.profile.siteMapPolygons[2], 12, 4,
        [&](LayerWriter& w, Point p, Random&) {
            const double v = slope.spread(p.x, p.y) * (1.0 - 0.6 * coastal(layout.geography, p));
            w.set("LS_CAT",
                  int16(std::clamp(static_cast<int>(std::lround(10.0 * std::pow(v, 1.4))), 0, 10)));
        },
        [&](LayerWriter& w, int k) {
            const std::array<Variant, 4> bad{int16(-1), int16(11), Variant::null(), int16(15)};
            w.set("LS_CAT", bad[at(k % 4)]);
        });

    writeSiteMap(
        layout, out, sources, "WATR", "groundwater", "GW_DEPTH", {doubleField("GW_DEPTH")},
        layout.profile.siteMapPolygons[3], 13, 4,
        [&](LayerWriter& w, Point p, Random&) {
            const double v = water.spread(p.x, p.y);
            const double depth =
                2.0 + 80.0 * v * v * (0.3 + 0.7 * (1.0 - coastal(layout.geography, p)));
            w.set("GW_DEPTH", rounded(depth, 0.1));
        },
        [&](LayerWriter& w, int k) {
            const std::array<Variant, 4> bad{Variant(-4.5), Variant(-9999.0), Variant::null(),
                                             Variant(-0.5)};
            w.set("GW_DEPTH", bad[at(k % 4)]);
        });
}

} // namespace brevant::samplehost
