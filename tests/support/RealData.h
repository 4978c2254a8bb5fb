#pragma once

#include "host/local/RegionBuilder.h"

#include <filesystem>

namespace brevant::test {

/// The real public data beside the checkout (empty folder when there is none).
std::filesystem::path sharedData();

/// Creates the region "San Francisco" in the host root `root` from the real data: the county
/// of the nationwide county file as boundary (written to `scratch`/sf.gpkg first) and the 2010
/// tracts. The data must be there.
host::local::RegionReport createSanFranciscoRegion(const std::filesystem::path& root,
                                                   const std::filesystem::path& scratch);

} // namespace brevant::test
