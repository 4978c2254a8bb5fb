#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace brevant::samplehost {

/// One file the geoprocessing data generator has finished.
struct GeneratedFile {
    std::string name;
    std::int64_t features = 0;
    double seconds = 0;
};

/// Writes the seeded GeoPackages the whole-command benchmarks time (bench/README.md lists
/// them) into `folder`, which must exist; files of the same names are replaced. Feature counts
/// are multiplied by `scale` (at least one feature each); the boundary is the same at every
/// scale. There is one fixed seed: every run gives the same features. `written` is told of each
/// file as it is finished. Throws std::runtime_error when GDAL cannot write a file.
void writeGeoprocessingData(const std::filesystem::path& folder, double scale,
                            const std::function<void(const GeneratedFile&)>& written = {});

} // namespace brevant::samplehost
