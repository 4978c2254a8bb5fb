#pragma once

#include "host/local/SourceData.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace brevant::host::local {

/// What `brevant map register` is given.
struct MapRequest {
    /// Empty: the host's current region.
    std::string region;
    std::string code;
    VectorSource source;
    /// The user's field that holds the code's value; empty: the code's own value field
    /// ("Type" or "paramvalue") must be there.
    std::string valueField;
    /// One value for every polygon instead of a field (dissolved hazard-zone outlines).
    std::optional<std::string> value;
};

struct MapReport {
    std::string region;
    std::string code;
    std::filesystem::path database;
    std::string className;
    int64_t polygons = 0;
    /// Values that were empty or could not be read as the code's kind of value.
    int64_t emptyValues = 0;
    int64_t repaired = 0;
    int64_t dropped = 0;
};

/// Registers the user's map of a hazard code for a region: the polygons are copied, moved to
/// geographic NAD83 and repaired, into `UserMaps/<CODE>.mdb` of the region folder with the
/// code's value field (text for soil and inundation codes, numbers otherwise), and the
/// region's registry points the code at that copy. A map registered earlier for the code is
/// replaced. Bad input (an unknown code or region, a source that does not open or holds no
/// polygons, a missing value field, a value of the wrong kind, one value outside the code's
/// range) is an InvalidInput host error that changes nothing.
MapReport registerMap(const std::filesystem::path& root, const MapRequest& request);

} // namespace brevant::host::local
