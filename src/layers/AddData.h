#pragma once

#include <filesystem>
#include <memory>
#include <vector>

namespace brevant::platform::carto {
class FeatureLayer;
class Map;
} // namespace brevant::platform::carto

namespace brevant::layers {

/// The file-dialog filter of the data sets a window can add to its map.
inline constexpr const char* kDataSetFilter =
    "Vector data (*.shp *.gpkg *.mdb *.sqlite *.gdb *.geojson *.json);;All files (*)";

/// A layer for each feature class of a chosen data set: the one of a shapefile, or every class
/// of a geodatabase (its plain tables are left out), named by the class. Raises what opening
/// the data raises.
std::vector<std::shared_ptr<platform::carto::FeatureLayer>>
layersOfDataSet(const std::filesystem::path& path);

/// Adds layers to a map in three passes, areas first, then lines, then points, so points end
/// above lines and lines above areas. A map without a coordinate system takes the first
/// layer's.
void addByShapeType(platform::carto::Map& map,
                    const std::vector<std::shared_ptr<platform::carto::FeatureLayer>>& layers);

} // namespace brevant::layers
