#pragma once

#include "host/local/SourceData.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace brevant::host::local {

/// What `brevant region create` is given.
struct RegionRequest {
    std::string name;
    VectorSource boundary;
    VectorSource tracts;
    std::optional<VectorSource> counties;
    /// Field of the tract code; empty: the first of Tract, GEOID, GEOID10, GEOID20.
    std::string tractField;
    /// Field of the county code; empty: the first of CountyFips, GEOID, FIPS, id.
    std::string countyField;
    int32_t aggLevel = 2;
    /// Make the new region the host's current one (the first region always is).
    bool makeCurrent = false;
};

struct RegionReport {
    std::string name;
    int32_t number = 0;
    std::filesystem::path folder;
    int64_t tracts = 0;
    /// Tracts of the source whose interior point lies outside the boundary.
    int64_t tractsOutside = 0;
    int64_t counties = 0;
    /// Shapes (of all sources) that were invalid and were repaired, and those with nothing
    /// usable left.
    int64_t repaired = 0;
    int64_t dropped = 0;
    bool current = false;
};

/// Builds a study region of a host root from the user's boundary, tracts and (optionally)
/// counties: the region folder with its boundary database (dissolved boundary, tracts with
/// 11-character codes, counties, the tract hazard table, empty targets of the clipped maps and
/// the grid), empty inventory databases, the tabular database with its server tables and
/// settings, and the region's entry in host.json.
///
/// Everything is read and checked before anything is written, and the folder is built under a
/// temporary name, so bad input (a boundary without polygons, tracts without the tract field,
/// a file that does not open) is an InvalidInput host error that leaves the host root as it
/// was.
RegionReport createRegion(const std::filesystem::path& root, const RegionRequest& request,
                          const std::function<void(const std::string&)>& progress = {});

/// The name of a tract or county code with the width it must have: numbers lose their leading
/// zeros in some files, so whole numbers are padded back; other texts must already have
/// `width` digits. nullopt when the value cannot be such a code.
std::optional<std::string> normaliseCode(const platform::automation::Variant& value,
                                         std::size_t width);

} // namespace brevant::host::local
