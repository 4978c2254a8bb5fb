#include "layers/AddData.h"

#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace brevant::layers {

namespace {

int drawingGroup(platform::geometry::ShapeType type)
{
    using platform::geometry::ShapeType;
    switch (type) {
    case ShapeType::Polygon:
        return 0;
    case ShapeType::Polyline:
        return 1;
    case ShapeType::Point:
    case ShapeType::Multipoint:
        return 2;
    case ShapeType::Null:
        break;
    }
    // Classes of no known shape go on top, where they are seen.
    return 3;
}

} // namespace

std::vector<std::shared_ptr<platform::carto::FeatureLayer>>
layersOfDataSet(const std::filesystem::path& path)
{
    namespace gdb = platform::geodatabase;
    std::vector<std::shared_ptr<platform::carto::FeatureLayer>> layers;
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".shp") {
        layers.push_back(std::make_shared<platform::carto::FeatureLayer>(
            gdb::Workspace::openShapefileFolder(path.parent_path())
                .openFeatureClass(path.stem().string())));
        return layers;
    }
    const auto workspace = gdb::Workspace::open(path, true);
    for (const auto& name : workspace.datasetNames()) {
        auto table = workspace.openTable(name);
        if (std::dynamic_pointer_cast<gdb::FeatureClass>(table)) {
            layers.push_back(
                std::make_shared<platform::carto::FeatureLayer>(workspace.openFeatureClass(name)));
        }
    }
    return layers;
}

void addByShapeType(platform::carto::Map& map,
                    const std::vector<std::shared_ptr<platform::carto::FeatureLayer>>& layers)
{
    std::vector<std::shared_ptr<platform::carto::FeatureLayer>> groups[4];
    for (const auto& layer : layers) {
        groups[drawingGroup(layer->shapeType())].push_back(layer);
    }
    for (const auto& group : groups) {
        for (const auto& layer : group) {
            if (map.spatialReference().isUnknown()) {
                map.setSpatialReference(layer->featureClass()->spatialReference());
            }
            map.addLayer(layer);
        }
    }
}

} // namespace brevant::layers
