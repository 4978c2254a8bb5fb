#pragma once

#include "samplehost/SampleSources.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace brevant::samplehost {

struct SampleHostReport {
    std::string region;
    int64_t tracts = 0;
    int64_t maps = 0;
    int64_t inventoryClasses = 0;
    int64_t inventoryFeatures = 0;
    int64_t repaired = 0;
};

/// Writes a complete, deterministic host root into `root` (missing or empty) the way a user
/// would build one from their own files: synthetic source files are written to a scratch
/// folder, then the administration builders make the host, the region, the registered maps and
/// the inventory from them; the data no builder handles (state units and census blocks,
/// epicentres and faults, the probabilistic map, the MarPlot footprints, the flood view and
/// the flood study cases) is copied into the system's own classes and tables.
SampleHostReport writeSampleHost(const std::filesystem::path& root, SampleSize size,
                                 std::uint64_t seed,
                                 const std::function<void(const std::string& step)>& progress = {});

} // namespace brevant::samplehost
