#include "samplehost/SampleSources.h"

#include "samplehost/RegionLayout.h"
#include "samplehost/SampleWriters.h"

namespace brevant::samplehost {

SampleSources writeSampleSources(const std::filesystem::path& folder, SampleSize size,
                                 std::uint64_t seed,
                                 const std::function<void(const std::string& step)>& progress)
{
    const Output out{folder, progress};
    std::filesystem::create_directories(folder);
    out.step("laying out states, counties, tracts and blocks");
    const RegionLayout layout(size, seed);

    SampleSources sources;
    writeBoundaries(layout, out, sources);
    writeSiteMaps(layout, out, sources);
    writeFaults(layout, out, sources);
    writeEpicentres(layout, out, sources);
    writeGroundMotion(layout, out, sources);
    writeProbabilisticMap(layout, out, sources);
    writeInundation(layout, out, sources);
    writeLineInventory(layout, out, sources);
    writePointInventory(layout, out, sources);
    writeMarPlot(layout, out, sources);
    writeFloodView(layout, out, sources);
    writeFloodStudyCases(layout, out, sources);
    return sources;
}

} // namespace brevant::samplehost
