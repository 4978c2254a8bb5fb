#pragma once

#include "platform/carto/RgbColor.h"

namespace brevant::platform::carto {

/// Styles of a simple marker; the value is the style code users pick from a list.
enum class SimpleMarkerStyle : int { Circle = 0, Square = 1, Cross = 2, X = 3, Diamond = 4 };

/// A geometric marker. Sizes are in points; a size of 0 draws nothing.
struct SimpleMarkerSymbol {
    SimpleMarkerStyle style = SimpleMarkerStyle::Circle;
    RgbColor color;
    double size = 8.0;
    double angle = 0.0;
    bool outline = false;
    RgbColor outlineColor;
    double outlineSize = 1.0;

    bool operator==(const SimpleMarkerSymbol&) const = default;
};

} // namespace brevant::platform::carto
