#pragma once

#include "platform/carto/CartographicLineSymbol.h"
#include "platform/carto/MultiLayerMarkerSymbol.h"

namespace brevant::platform::carto {

/// Markers repeated along a line, turned with it. With a template a marker sits at the start of
/// each mark; without one, markers follow each other at twice their size. The line itself is
/// not drawn; `color` and `width` describe it for legends and editors.
struct MarkerLineSymbol {
    RgbColor color;
    double width = 1.0;
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    double offset = 0.0;
    MarkerLayer marker = SimpleMarkerSymbol{};
    std::optional<LineTemplate> lineTemplate;

    bool operator==(const MarkerLineSymbol&) const = default;
};

} // namespace brevant::platform::carto
