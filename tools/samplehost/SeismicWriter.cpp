#include "platform/automation/Date.h"
#include "samplehost/LayerWriter.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>

namespace brevant::samplehost {

void writeFaults(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing faults");
    LayerWriter faults(out.folder, "faults", ShapeType::Polyline,
                       {integerField("FAULT_ID"), textField("FAULT_NAME", 60),
                        textField("SLIP_TYPE", 32), doubleField("DIP_DEG"),
                        doubleField("SLIP_RATE")});
    for (const Fault& fault : layout.faults) {
        faults.set("FAULT_ID", int32(fault.id));
        faults.set("FAULT_NAME", fault.name);
        faults.set("SLIP_TYPE", fault.slipType);
        faults.set("DIP_DEG", fault.dip);
        faults.set("SLIP_RATE", fault.slipRate);
        faults.add(Geometry::polyline(fault.parts));
    }
    sources.faults = {faults.finish(), "FAULT_ID", "FAULT_NAME", "SLIP_TYPE", "DIP_DEG"};

    LayerWriter scenario(out.folder, "scenario_faults", ShapeType::Polyline,
                         {integerField("FLT_ID"), textField("FLT_NAME", 60),
                          textField("SLIP_TYPE", 32), doubleField("DIP_DEG"),
                          doubleField("MAX_MAG"), doubleField("WIDTH_KM")});
    for (int k = 0; k < layout.scenarioFaultCount; ++k) {
        const Fault& fault = layout.faults[at(k)];
        scenario.set("FLT_ID", int32(fault.id));
        scenario.set("FLT_NAME", fault.name);
        scenario.set("SLIP_TYPE", fault.slipType);
        scenario.set("DIP_DEG", fault.dip);
        // Magnitude from rupture length (km).
        scenario.set("MAX_MAG", rounded(5.08 + 1.16 * std::log10(fault.length * 111.0), 0.1));
        scenario.set("WIDTH_KM", fault.widthKm);
        scenario.add(Geometry::polyline(fault.parts));
    }
    sources.scenarioFaults = {scenario.finish(), "FLT_ID", "FLT_NAME", "SLIP_TYPE", "DIP_DEG"};
}

namespace {

std::string compass(Point from, Point to)
{
    static const std::array<const char*, 8> names{"E", "NE", "N", "NW", "W", "SW", "S", "SE"};
    const double angle = std::atan2(to.y - from.y, (to.x - from.x) * kLongitudeScale);
    const int sector = static_cast<int>(std::lround(angle / (kPi / 4))) & 7;
    return names[at(sector)];
}

} // namespace

void writeEpicentres(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing historical epicentres");
    Random random = layout.stream(70);
    double totalLength = 0;
    for (const Fault& fault : layout.faults) {
        totalLength += fault.length;
    }
    struct Event {
        Date date;
        Point where;
        double magnitude;
        double depth;
    };
    std::vector<Event> events;
    while (static_cast<int>(events.size()) < layout.profile.epicentres) {
        Point p;
        if (random.chance(0.65)) {
            double pick = random.uniform(0, totalLength);
            const Fault* fault = &layout.faults.front();
            for (const Fault& f : layout.faults) {
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
                p.x < layout.geography.coastX(p.y) && p.x > layout.geography.coastX(p.y) - 0.4;
            if (layout.geography.stateAt(p) < 0 && !offshore) {
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
        const Date date = Date::fromParts(year, month, day, hour, minute, random.integer(0, 59));
        events.push_back(
            {date, p, magnitude, rounded(std::clamp(8.0 + 5.0 * random.normal(), 0.5, 25.0), 0.1)});
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.date.serial < b.date.serial; });
    LayerWriter epicentres(out.folder, "epicenters", ShapeType::Point,
                           {textField("EVENT_ID", 12), doubleField("MAG"), doubleField("DEPTH_KM"),
                            dateField("EVENT_DATE"), textField("PLACE", 60)});
    for (std::size_t k = 0; k < events.size(); ++k) {
        const Event& e = events[k];
        const City& city = layout.geography.nearestCity(e.where);
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
    sources.epicentres = {epicentres.finish(), "EVENT_ID", "MAG", "DEPTH_KM", "EVENT_DATE"};
}

void writeGroundMotion(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    const Fault& fault = layout.faults.front();
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
        {{"PGAM", "shake_pga", "g", [](double r) { return 0.85 * std::pow(1.0 + r / 8.0, -1.1); }},
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
        out.step(std::string("writing the ground-motion map ") + parameter.name);
        Random random = layout.stream(30 + m);
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
        LayerWriter writer(out.folder, parameter.name, ShapeType::Polygon,
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
        sources.groundMotionMaps.push_back({parameter.code, writer.finish(), "VALUE"});
    }
}

void writeProbabilisticMap(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the probabilistic map USGS");
    const std::vector<std::string> parameters{"pga", "pgv", "sa03", "sa10"};
    const std::vector<int> periods{100, 250, 500, 750, 1000, 1500, 2000, 2500};
    std::vector<Field> fields{integerField("GRID_ID")};
    for (const auto& parameter : parameters) {
        for (const int period : periods) {
            fields.push_back(doubleField(parameter + std::to_string(period)));
        }
    }
    LayerWriter writer(out.folder, "USGS", ShapeType::Polygon, fields);
    const Noise site(layout.seed ^ 0x95, 3.0, 3);
    const Noise velocity(layout.seed ^ 0x96, 2.0, 2);
    const double s = layout.profile.usgsStep;
    const Envelope box = layout.regionBox.expandedBy(0.25);
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
            for (int f = 0; f < layout.scenarioFaultCount; ++f) {
                for (const Path& part : layout.faults[at(f)].parts) {
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
                writer.set("pgv" + p,
                           rounded(pga * (90.0 + 30.0 * velocity.at(centre.x, centre.y)), 0.01));
                writer.set("sa03" + p, rounded(pga * 2.25, 0.0001));
                writer.set("sa10" + p,
                           rounded(pga * (0.8 + 0.4 * velocity.at(centre.y, centre.x)), 0.0001));
            }
            writer.add(
                Geometry::polygon({{{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}, {x, y}}}));
        }
    }
    sources.probabilisticMap = {writer.finish(), parameters, periods};
}

} // namespace brevant::samplehost
