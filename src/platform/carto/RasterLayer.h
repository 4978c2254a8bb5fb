#pragma once

#include "platform/carto/Layer.h"

#include <filesystem>

namespace brevant::platform::carto {

/// An image (PNG, JPEG, BMP) drawn stretched over a rectangle of the map: a scanned map, an
/// aerial photograph, a rendered grid. Its symbology cannot be edited as a feature layer's can.
class RasterLayer : public Layer {
public:
    /// Named after the file's stem.
    RasterLayer(std::filesystem::path file, geometry::Envelope extent);

    std::string_view className() const override { return "RasterLayer"; }
    LayerKind kind() const override { return LayerKind::Raster; }
    geometry::Envelope extent() const override { return m_extent; }

    const std::filesystem::path& file() const { return m_file; }
    void setExtent(geometry::Envelope extent) { m_extent = extent; }
    /// Opacity from 0 (invisible) to 1.
    double opacity() const { return m_opacity; }
    void setOpacity(double opacity) { m_opacity = opacity; }

private:
    std::filesystem::path m_file;
    geometry::Envelope m_extent;
    double m_opacity = 1.0;
};

} // namespace brevant::platform::carto
