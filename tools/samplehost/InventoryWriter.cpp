#include "samplehost/LayerWriter.h"
#include "samplehost/Names.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <functional>

namespace brevant::samplehost {

namespace {

/// Cuts every route into segments of one length so that all routes give about `target`
/// segments; one in seventeen has two parts (a gap at an interchange or a crossing).
template <class Attributes>
void writeLineLayer(const Output& out, SampleSources& sources, const std::string& name,
                    const std::vector<Route>& routes, int target, Random& random,
                    const std::vector<Field>& fields, const std::string& idField,
                    const std::string& nameField, Attributes&& attributes)
{
    out.step("writing the line inventory " + name);
    double total = 0;
    for (const Route& r : routes) {
        total += pathLength(r.path);
    }
    const double length = total / target;
    LayerWriter writer(out.folder, name, ShapeType::Polyline, fields);
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
    sources.lineInventory.push_back(
        {writer.finish(), ShapeType::Polyline, idField, nameField, count});
}

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

Samplers samplers(const RegionLayout& layout, double exponent)
{
    std::vector<int> inside;
    std::vector<int> outside;
    const Envelope around = layout.regionBox.expandedBy(0.5);
    for (int c = 0; c < layout.lattice.cellCount(); ++c) {
        if (layout.regionCell[at(c)]) {
            inside.push_back(c);
        } else if (layout.states.label[at(c)] >= 0 && around.contains(layout.lattice.centre(c))) {
            outside.push_back(c);
        }
    }
    return {CellSampler(inside, layout.density, exponent),
            CellSampler(outside, layout.density, exponent)};
}

/// A point in a cell drawn from the region nine times in ten, from around it otherwise.
Point drawPoint(const RegionLayout& layout, const Samplers& s, Random& random)
{
    const int cell = random.chance(0.1) ? s.outside.draw(random) : s.inside.draw(random);
    const auto [angle, distance] = random.polar(0.0, 1.0);
    return layout.lattice.inside(cell, angle, std::sqrt(distance));
}

void writePointLayer(const RegionLayout& layout, const Output& out, SampleSources& sources,
                     const std::string& name, int count, double exponent, std::uint64_t id,
                     const std::vector<Field>& fields, const std::string& idField,
                     const std::string& nameField,
                     const std::function<void(LayerWriter&, Point, int, Random&)>& attributes)
{
    out.step("writing the point inventory " + name);
    Random random = layout.stream(id);
    const Samplers s = samplers(layout, exponent);
    LayerWriter writer(out.folder, name, ShapeType::Point, fields);
    for (int k = 1; k <= count; ++k) {
        const Point p = drawPoint(layout, s, random);
        attributes(writer, p, k, random);
        writer.add(Geometry::point(p));
    }
    const std::int64_t written = writer.count();
    sources.pointInventory.push_back(
        {writer.finish(), ShapeType::Point, idField, nameField, written});
}

std::string placeOf(const RegionLayout& layout, Point p)
{
    return layout.geography.nearestCity(p).name;
}

/// Hospitals as building footprints: one rectangle, or a campus of up to three.
void writeHospitals(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the point inventory hospitals");
    Random random = layout.stream(51);
    const Samplers s = samplers(layout, 1.0);
    LayerWriter writer(out.folder, "hospitals", ShapeType::Polygon,
                       {textField("HOSP_ID", 8), textField("FACNAME", 60), integerField("BEDS")});
    const double sx = layout.lattice.sideX();
    const double sy = layout.lattice.sideY();
    for (int k = 1; k <= layout.profile.hospitals; ++k) {
        const int cell = random.chance(0.1) ? s.outside.draw(random) : s.inside.draw(random);
        const Point c = layout.lattice.centre(cell);
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
            for (const auto& [u, v] :
                 std::array<std::pair<double, double>, 4>{{{-a, -b}, {a, -b}, {a, b}, {-a, b}}}) {
                ring.push_back({middle.x + (u * std::cos(turn) - v * std::sin(turn)) * sx,
                                middle.y + (u * std::sin(turn) + v * std::cos(turn)) * sy});
            }
            ring.push_back(ring.front());
            rings.push_back(std::move(ring));
        }
        writer.set("HOSP_ID", format("H%05d", k));
        writer.set("FACNAME", random.chance(0.5) ? placeOf(layout, c) + " Community Hospital"
                                                 : random.pick(kWords) + " Medical Center");
        writer.set("BEDS", int32(parts > 1 ? random.integer(150, 600) : random.integer(20, 250)));
        writer.add(Geometry::polygon(rings));
    }
    const std::int64_t count = writer.count();
    sources.pointInventory.push_back(
        {writer.finish(), ShapeType::Polygon, "HOSP_ID", "FACNAME", count});
}

/// Bridges: most on the highways near the region, the rest on local roads.
void writeBridges(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the point inventory highway_bridges");
    Random random = layout.stream(55);
    const Samplers s = samplers(layout, 0.5);
    const Envelope near = layout.regionBox.expandedBy(0.3);
    std::vector<std::pair<Point, const Route*>> onHighways;
    for (const Route& r : layout.highways) {
        for (const Point& p : r.path) {
            if (near.contains(p)) {
                onHighways.push_back({p, &r});
            }
        }
    }
    const std::vector<std::string> waters{"CREEK", "RIVER", "SLOUGH", "CANAL", "WASH"};
    LayerWriter writer(out.folder, "highway_bridges", ShapeType::Point,
                       {textField("STRUCNUM", 15), textField("FEAT_DESC", 40),
                        smallField("YEAR_BUILT"), doubleField("LATITUDE"),
                        doubleField("LONGITUDE")});
    for (int k = 1; k <= layout.profile.bridges; ++k) {
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
            p = drawPoint(layout, s, random);
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
    sources.pointInventory.push_back(
        {writer.finish(), ShapeType::Point, "STRUCNUM", "FEAT_DESC", count});
}

} // namespace

void writeLineInventory(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    Random random = layout.segmentStream;
    const std::vector<Route>& highways = layout.highways;
    const std::vector<Route>& railways = layout.railways;
    const std::vector<Route>& pipelines = layout.pipelines;
    const std::vector<std::string> owners{"Pacific Western Railroad", "Sierra Northern",
                                          "Bay Terminal Railway"};
    const std::vector<std::string> systems{"Water", "Natural gas", "Refined products", "Water"};
    writeLineLayer(out, sources, "highways", highways, layout.profile.highwaySegments, random,
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
    writeLineLayer(out, sources, "railways", railways, layout.profile.railSegments, random,
                   {textField("RR_ID", 10), textField("RR_NAME", 60), textField("OWNER", 40)},
                   "RR_ID", "RR_NAME", [&](LayerWriter& w, std::size_t r, int, int n) {
                       w.set("RR_ID", format("RR%06d", n));
                       w.set("RR_NAME", railways[r].name);
                       w.set("OWNER", owners[r % owners.size()]);
                   });
    writeLineLayer(out, sources, "pipelines", pipelines, layout.profile.pipelineSegments, random,
                   {textField("PIPE_ID", 10), textField("PIPE_NAME", 60), textField("SYSTEM", 16),
                    doubleField("DIAM_IN")},
                   "PIPE_ID", "PIPE_NAME", [&](LayerWriter& w, std::size_t r, int, int n) {
                       w.set("PIPE_ID", format("PL%06d", n));
                       w.set("PIPE_NAME", pipelines[r].name);
                       w.set("SYSTEM", systems[r % systems.size()]);
                       w.set("DIAM_IN", r == 0 ? 96.0 : r == 1 ? 30.0 : 16.0);
                   });
}

void writePointInventory(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    const auto coordinates = [](LayerWriter& w, Point p) {
        w.set("LATITUDE", rounded(p.y, 1e-6));
        w.set("LONGITUDE", rounded(p.x, 1e-6));
    };
    writePointLayer(
        layout, out, sources, "schools", layout.profile.schools, 0.9, 50,
        {textField("SCHOOL_ID", 10), textField("SCHOOL_NM", 60), integerField("ENROLL"),
         doubleField("LATITUDE"), doubleField("LONGITUDE")},
        "SCHOOL_ID", "SCHOOL_NM", [&](LayerWriter& w, Point p, int k, Random& r) {
            static const std::array<const char*, 4> kinds{"Elementary School", "Elementary School",
                                                          "Middle School", "High School"};
            const int kind = r.integer(0, 3);
            const std::string where = kind == 3 ? placeOf(layout, p) : r.pick(kWords);
            w.set("SCHOOL_ID", format("SCH%06d", k));
            w.set("SCHOOL_NM", where + " " + kinds[at(kind)]);
            w.set("ENROLL", int32(kind == 3 ? r.integer(900, 2800) : r.integer(200, 900)));
            coordinates(w, p);
        });
    writeHospitals(layout, out, sources);
    writePointLayer(layout, out, sources, "fire_stations", layout.profile.fireStations, 0.6, 52,
                    {textField("STA_ID", 8), textField("STA_NAME", 60), doubleField("LATITUDE"),
                     doubleField("LONGITUDE")},
                    "STA_ID", "STA_NAME", [&](LayerWriter& w, Point p, int k, Random& r) {
                        w.set("STA_ID", format("FS%05d", k));
                        w.set("STA_NAME", placeOf(layout, p) + " Fire Station " +
                                              std::to_string(r.integer(1, 60)));
                        coordinates(w, p);
                    });
    writePointLayer(layout, out, sources, "police_stations", layout.profile.policeStations, 0.8, 53,
                    {textField("PD_ID", 8), textField("PD_NAME", 60)}, "PD_ID", "PD_NAME",
                    [&](LayerWriter& w, Point p, int k, Random& r) {
                        w.set("PD_ID", format("PD%05d", k));
                        w.set("PD_NAME", r.chance(0.7) ? placeOf(layout, p) + " Police Department"
                                                       : r.pick(kWords) + " Sheriff Substation");
                    });
    writePointLayer(layout, out, sources, "emergency_centers", layout.profile.emergencyCenters, 0.3,
                    54, {textField("EOC_ID", 8), textField("EOC_NAME", 60)}, "EOC_ID", "EOC_NAME",
                    [&](LayerWriter& w, Point p, int k, Random&) {
                        w.set("EOC_ID", format("EOC%04d", k));
                        w.set("EOC_NAME", placeOf(layout, p) + " Emergency Operations Center");
                    });
    writeBridges(layout, out, sources);
    const std::vector<std::pair<const char*, double>> occupancies{
        {"RES1", 0.62}, {"RES2", 0.05}, {"RES3", 0.1},  {"COM1", 0.05},
        {"COM2", 0.03}, {"COM4", 0.06}, {"IND1", 0.02}, {"IND2", 0.02},
        {"REL1", 0.02}, {"GOV1", 0.01}, {"EDU1", 0.01}, {"AGR1", 0.01}};
    writePointLayer(layout, out, sources, "buildings", static_cast<int>(layout.profile.buildings),
                    1.0, 56,
                    {textField("BLDG_ID", 10), textField("ADDRESS", 60), textField("OCCUPANCY", 5),
                     smallField("STORIES")},
                    "BLDG_ID", "ADDRESS", [&](LayerWriter& w, Point, int k, Random& r) {
                        double pick = r.uniform();
                        std::size_t o = 0;
                        while (o + 1 < occupancies.size() && pick >= occupancies[o].second) {
                            pick -= occupancies[o++].second;
                        }
                        const std::string occupancy = occupancies[o].first;
                        w.set("BLDG_ID", format("B%08d", k));
                        const int block = r.integer(1, 99);
                        std::string address = std::to_string(block * 100 + r.integer(0, 99)) + " ";
                        address += r.pick(kWords) + " ";
                        address += r.pick(kStreetEndings);
                        w.set("ADDRESS", address);
                        w.set("OCCUPANCY", occupancy);
                        w.set("STORIES", int16(occupancy == "RES1"   ? r.integer(1, 2)
                                               : occupancy == "RES3" ? r.integer(2, 12)
                                                                     : r.integer(1, 5)));
                    });
}

void writeMarPlot(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the MarPlot objects");
    Random random = layout.stream(80);
    const Samplers s = samplers(layout, 0.5);
    const std::vector<std::string> chemicals{"Chlorine",       "Anhydrous ammonia",
                                             "Sulfur dioxide", "Hydrochloric acid",
                                             "Propane",        "Gasoline"};
    const std::vector<std::string> kinds{" Chemical", " Water Treatment Plant", " Tank Farm",
                                         " Refinery", " Cold Storage"};
    LayerWriter writer(
        out.folder, "marplot", ShapeType::Point,
        {textField("OBJ_NAME", 40), textField("CHEMICAL", 30), doubleField("QTY_LBS")});
    for (int k = 0; k < layout.profile.marPlot; ++k) {
        const int cell = s.inside.draw(random);
        const auto [angle, distance] = random.polar(0.0, 1.0);
        const Point p = layout.lattice.inside(cell, angle, distance);
        std::string name = random.pick(kWords);
        name += random.pick(kinds);
        writer.set("OBJ_NAME", name);
        writer.set("CHEMICAL", random.pick(chemicals));
        writer.set("QTY_LBS", rounded(std::pow(10.0, random.uniform(2.0, 5.5)), 1.0));
        writer.add(Geometry::point(p));
    }
    sources.marPlot = writer.finish();
}

} // namespace brevant::samplehost
