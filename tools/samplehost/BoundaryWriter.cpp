#include "samplehost/LayerWriter.h"
#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

#include <memory>

namespace brevant::samplehost {

void writeBoundaries(const RegionLayout& layout, const Output& out, SampleSources& sources)
{
    out.step("writing states");
    LayerWriter states(out.folder, "states", ShapeType::Polygon,
                       {textField("STATEFP", 2), textField("STUSPS", 2), textField("NAME", 40)});
    traceUnits(layout.lattice, layout.states.label, layout.states.count(),
               [&](int s, const Rings& rings) {
                   states.set("STATEFP", kStates[at(s)].code);
                   states.set("STUSPS", kStates[at(s)].abbreviation);
                   states.set("NAME", kStates[at(s)].name);
                   states.add(Geometry::polygon(rings));
               });
    sources.stateBoundaries = {states.finish(), "STATEFP", "NAME", ""};
    sources.stateAbbreviationField = "STUSPS";
    for (const StateEntry& state : kStates) {
        sources.states.push_back({state.code, state.name, state.abbreviation});
    }

    out.step("writing counties");
    std::vector<std::int64_t> countyPopulation(at(layout.counties.count()), 0);
    for (int t = 0; t < layout.tracts.count(); ++t) {
        countyPopulation[at(layout.tracts.parent[at(t)])] += layout.tractPopulation[at(t)];
    }
    LayerWriter counties(out.folder, "counties", ShapeType::Polygon,
                         {textField("GEOID", 5), textField("STATEFP", 2), textField("COUNTYFP", 3),
                          textField("NAME", 40), textField("NAMELSAD", 60), integerField("POP")});
    traceUnits(layout.lattice, layout.counties.label, layout.counties.count(),
               [&](int k, const Rings& rings) {
                   const std::string& code = layout.countyCode[at(k)];
                   counties.set("GEOID", code);
                   counties.set("STATEFP", code.substr(0, 2));
                   counties.set("COUNTYFP", code.substr(2));
                   counties.set("NAME", layout.countyName[at(k)]);
                   counties.set("NAMELSAD", layout.countyName[at(k)] + " County");
                   counties.set("POP", int32(countyPopulation[at(k)]));
                   counties.add(Geometry::polygon(rings));
               });
    sources.counties = {counties.finish(), "GEOID", "NAME", "POP"};
    for (int k = 0; k < layout.counties.count(); ++k) {
        if (layout.regionCounty[at(k)]) {
            sources.regionCountyCodes.push_back(layout.countyCode[at(k)]);
        }
    }

    out.step("writing census tracts");
    LayerWriter tracts(out.folder, "tracts", ShapeType::Polygon,
                       {textField("GEOID10", 11), textField("STATEFP10", 2),
                        textField("COUNTYFP10", 3), textField("TRACTCE10", 6),
                        textField("NAMELSAD10", 40), integerField("POP10"), integerField("HU10")});
    Random housing = layout.stream(7);
    traceUnits(
        layout.lattice, layout.tracts.label, layout.tracts.count(), [&](int t, const Rings& rings) {
            const std::string& code = layout.tractCode[at(t)];
            tracts.set("GEOID10", code);
            tracts.set("STATEFP10", code.substr(0, 2));
            tracts.set("COUNTYFP10", code.substr(2, 3));
            tracts.set("TRACTCE10", code.substr(5));
            tracts.set("NAMELSAD10", layout.tractName[at(t)]);
            tracts.set("POP10", int32(layout.tractPopulation[at(t)]));
            tracts.set("HU10",
                       int32(std::llround(static_cast<double>(layout.tractPopulation[at(t)]) /
                                          housing.uniform(2.3, 3.1))));
            tracts.add(Geometry::polygon(rings));
        });
    sources.tracts = {tracts.finish(), "GEOID10", "NAMELSAD10", "POP10"};

    out.step("writing census blocks");
    std::vector<std::unique_ptr<LayerWriter>> blocks;
    for (const StateEntry& state : kStates) {
        blocks.push_back(std::make_unique<LayerWriter>(
            out.folder, std::string("blocks_") + state.code, ShapeType::Polygon,
            std::vector<Field>{textField("BLOCKID10", 15), integerField("POP10"),
                               integerField("HU10")}));
    }
    std::vector<int> blockNumber(at(layout.tracts.count()), 0);
    traceUnits(
        layout.lattice, layout.blocks.label, layout.blocks.count(), [&](int b, const Rings& rings) {
            const int t = layout.blocks.parent[at(b)];
            const int k = blockNumber[at(t)]++;
            LayerWriter& writer = *blocks[at(layout.stateOfTract(t))];
            writer.set("BLOCKID10",
                       layout.tractCode[at(t)] + format("%04d", (1 + k / 30) * 1000 + k % 30));
            writer.set("POP10", int32(layout.blockPopulation[at(b)]));
            writer.set("HU10",
                       int32(std::llround(static_cast<double>(layout.blockPopulation[at(b)]) /
                                          housing.uniform(2.3, 3.1))));
            writer.add(Geometry::polygon(rings));
        });
    for (std::size_t s = 0; s < kStates.size(); ++s) {
        sources.blocks.push_back(
            {kStates[s].code, {blocks[s]->finish(), "BLOCKID10", "", "POP10"}});
    }

    out.step("writing the study region boundary");
    sources.regionName = layout.regionName;
    LayerWriter region(out.folder, "study_region", ShapeType::Polygon,
                       {textField("REGION_NM", 60)});
    std::vector<int> regionLabel(at(layout.lattice.cellCount()), -1);
    for (int c = 0; c < layout.lattice.cellCount(); ++c) {
        regionLabel[at(c)] = layout.regionCell[at(c)] ? 0 : -1;
    }
    traceUnits(layout.lattice, regionLabel, 1, [&](int, const Rings& rings) {
        region.set("REGION_NM", sources.regionName);
        region.add(Geometry::polygon(rings));
    });
    sources.regionBoundary = region.finish();
    sources.regionNameField = "REGION_NM";
}

} // namespace brevant::samplehost
