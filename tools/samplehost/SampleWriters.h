#pragma once

#include "samplehost/SampleSources.h"

#include <filesystem>
#include <functional>
#include <string>

namespace brevant::samplehost {

struct RegionLayout;

/// Where the writers put their GeoPackages, and whom they tell each step as it starts.
struct Output {
    std::filesystem::path folder;
    std::function<void(const std::string& step)> progress;

    void step(const std::string& what) const
    {
        if (progress) {
            progress(what);
        }
    }
};

// One writer per family of layers. Each reads the region's layout, writes its files into the
// output folder and records them in `sources`; each draws from streams of its own, so the
// families can be written, changed or left out one by one.

/// States, counties, census tracts and blocks, and the study region's boundary.
void writeBoundaries(const RegionLayout& layout, const Output& out, SampleSources& sources);

/// The four statewide site-condition maps, with their planted faults.
void writeSiteMaps(const RegionLayout& layout, const Output& out, SampleSources& sources);

/// Seismicity and shaking: the faults and the region's scenario faults, historical epicentres,
/// the ground-motion maps of the first scenario fault and the probabilistic map.
void writeFaults(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeEpicentres(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeGroundMotion(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeProbabilisticMap(const RegionLayout& layout, const Output& out, SampleSources& sources);

/// Floods: the inundation maps, the flood view along the levee river, and the study cases with
/// their losses.
void writeInundation(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeFloodView(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeFloodStudyCases(const RegionLayout& layout, const Output& out, SampleSources& sources);

/// Inventory: the networks cut into segments, the facility lists and the MarPlot objects.
void writeLineInventory(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writePointInventory(const RegionLayout& layout, const Output& out, SampleSources& sources);
void writeMarPlot(const RegionLayout& layout, const Output& out, SampleSources& sources);

} // namespace brevant::samplehost
