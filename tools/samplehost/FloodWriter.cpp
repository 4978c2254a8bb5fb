#include "samplehost/LayerWriter.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

#include <array>
#include <cmath>
#include <functional>
#include <optional>

namespace brevant::samplehost {

namespace {

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
            writer.add(Geometry::polygon({starRing(random, c, hx, hy, random.integer(16, 60))}));
        }
    }
}

} // namespace

void writeInundation(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    const double cell = layout.profile.inundationCell;
    const std::vector<Field> fields{doubleField("DEPTH_FT"), textField("DEPTH_CLS", 8),
                                    textField("SCENARIO", 60)};
    const std::string city = layout.geography.regionCity().name;
    const auto onLand = [&](Point p) { return layout.geography.stateAt(p) >= 0; };

    out.step("writing the inundation map dam_inundation");
    {
        Random random = layout.stream(21);
        LayerWriter writer(out.folder, "dam_inundation", ShapeType::Polygon, fields);
        writeBandMap(writer, boxOf(layout.damRiver, 0.1), cell, random,
                     city + " Reservoir, full breach", [&](Point p) -> std::optional<double> {
                         const auto [d, t] = distanceToPath(p, layout.damRiver);
                         const double half = 0.015 + 0.05 * t;
                         if (d >= half || !onLand(p)) {
                             return std::nullopt;
                         }
                         return 0.3 + (2.0 + 28.0 * (1.0 - t)) * std::pow(1.0 - d / half, 0.7);
                     });
        sources.inundationMaps.push_back({"DAMF", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
    }
    out.step("writing the inundation map tsunami_inundation");
    {
        // Another stretch of coast, far from the region.
        Random random = layout.stream(22);
        const Noise reach(layout.seed ^ 0x75, 6.0, 2);
        LayerWriter writer(out.folder, "tsunami_inundation", ShapeType::Polygon, fields);
        writeBandMap(writer, Envelope(-118.7, 32.55, -116.9, 34.0), cell, random,
                     "Offshore M8.0 source", [&](Point p) -> std::optional<double> {
                         const double inland =
                             (p.x - layout.geography.coastX(p.y)) * kLongitudeScale;
                         const double reachOf = 0.03 + 0.04 * reach.at(p.y, 0.5);
                         if (inland <= 0 || inland >= reachOf || !onLand(p)) {
                             return std::nullopt;
                         }
                         return 0.5 + 30.0 * std::pow(1.0 - inland / reachOf, 1.5);
                     });
        sources.inundationMaps.push_back({"TSUN", writer.finish(), "DEPTH_FT", "DEPTH_CLS", true});
    }
    out.step("writing the inundation map seiche_inundation");
    {
        Random random = layout.stream(23);
        const Blob& lake = layout.geography.lake();
        LayerWriter writer(out.folder, "seiche_inundation", ShapeType::Polygon, fields);
        writeBandMap(writer,
                     Envelope(lake.centre.x - 0.5, lake.centre.y - 0.4, lake.centre.x + 0.5,
                              lake.centre.y + 0.4),
                     cell, random, "Lake seiche, 2 m wave", [&](Point p) -> std::optional<double> {
                         const double shore = (lake.ratio(p) - 1.0) * lake.radius;
                         if (shore <= 0 || shore >= 0.045 || !onLand(p)) {
                             return std::nullopt;
                         }
                         return 0.5 + 5.0 * (1.0 - shore / 0.045);
                     });
        sources.inundationMaps.push_back({"SEIC", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
    }
    out.step("writing the inundation map levee_inundation");
    {
        Random random = layout.stream(24);
        const Noise width(layout.seed ^ 0x1e7, 4.0, 2);
        LayerWriter writer(out.folder, "levee_inundation", ShapeType::Polygon, fields);
        writeBandMap(writer, boxOf(layout.leveeRiver, 0.1), cell, random,
                     "Levee overtopping, 100-year flow", [&](Point p) -> std::optional<double> {
                         const double d = distanceToPath(p, layout.leveeRiver).first;
                         const double half = 0.03 + 0.03 * width.at(p.x, p.y);
                         if (d >= half || !onLand(p)) {
                             return std::nullopt;
                         }
                         return 0.5 + 7.0 * (1.0 - d / half);
                     });
        sources.inundationMaps.push_back({"LEVF", writer.finish(), "DEPTH_FT", "DEPTH_CLS", false});
    }
}

void writeFloodView(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the flood view");
    // Square cells as a depth grid turned into polygons gives them.
    const double s = layout.profile.floodViewCell;
    LayerWriter writer(out.folder, "flood_view", ShapeType::Polygon,
                       {doubleField("DEPTH_FT"), smallField("RET_PERIOD")});
    const Envelope box = boxOf(layout.leveeRiver, 0.05);
    const double x0 = std::floor(box.xmin() / s) * s;
    const double y0 = std::floor(box.ymin() / s) * s;
    const int columns = static_cast<int>(std::ceil((box.xmax() - x0) / s));
    const int rows = static_cast<int>(std::ceil((box.ymax() - y0) / s));
    for (int r = 0; r < rows; ++r) {
        for (int q = 0; q < columns; ++q) {
            const double x = x0 + q * s;
            const double y = y0 + r * s;
            const Point c{x + s / 2, y + s / 2};
            const double d = distanceToPath(c, layout.leveeRiver).first;
            if (d >= 0.035 || layout.geography.stateAt(c) < 0) {
                continue;
            }
            writer.set("DEPTH_FT", rounded(0.2 + 9.0 * (1.0 - d / 0.035), 0.1));
            writer.set("RET_PERIOD", int16(100));
            writer.add(
                Geometry::polygon({{{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}, {x, y}}}));
        }
    }
    sources.floodView = writer.finish();
}

void writeFloodStudyCases(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing the flood study cases");
    Random random = layout.stream(82);
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
    LayerWriter study(out.folder, "flood_study_cases", ShapeType::Null,
                      {smallField("CASE_ID"), textField("CASE_NAME", 40), textField("HAZARD", 24),
                       dateField("CREATED")});
    LayerWriter losses(out.folder, "flood_losses", ShapeType::Null,
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
                  Date::fromParts(2009 + static_cast<int>(k) % 3, 1 + 2 * static_cast<int>(k),
                                  10 + static_cast<int>(k)));
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
                    const double scale = years == 0 ? 0.012 : std::log(years) / std::log(500.0);
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
    sources.floodStudyCases = study.finish();
    sources.floodLosses = losses.finish();
}

} // namespace brevant::samplehost
