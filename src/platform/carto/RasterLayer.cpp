#include "platform/carto/RasterLayer.h"

namespace brevant::platform::carto {

RasterLayer::RasterLayer(std::filesystem::path file, geometry::Envelope extent)
    : Layer(file.stem().string()), m_file(std::move(file)), m_extent(extent)
{
}

} // namespace brevant::platform::carto
