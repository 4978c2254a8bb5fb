#pragma once

#include "platform/geometry/Envelope.h"

#include <QImage>
#include <QPainter>
#include <QSize>

namespace brevant::platform::carto {
class DisplayTransformation;
class Map;
} // namespace brevant::platform::carto

namespace brevant::platform::display {

/// Draws a map: its visible layers from the bottom one up, each only within its scale range
/// and with its renderer (joined fields included); then the labels of layers that display
/// them; then the selected features of every visible feature layer in its selection colour
/// (the map's selection environment colour when the layer has none). Features are read for the
/// drawn area only. Errors reading a layer's data pass through as PlatformError.
class MapRenderer {
public:
    explicit MapRenderer(const carto::Map& map) : m_map(map) {}

    /// Draws into the painter's device pixels as `transformation` maps the map onto them
    /// (its device frame, resolution and fitted bounds).
    void draw(QPainter& painter, const carto::DisplayTransformation& transformation) const;
    /// A picture of `size` pixels on white showing `extent` (grown to the picture's shape; the
    /// view's extent when empty), symbols sized for `dotsPerInch`.
    QImage render(const geometry::Envelope& extent, QSize size, double dotsPerInch = 96.0) const;
    /// A picture of the map's active view: its extent on its device frame and resolution.
    QImage renderActiveView() const;

private:
    const carto::Map& m_map;
};

} // namespace brevant::platform::display
