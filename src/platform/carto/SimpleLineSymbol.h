#pragma once

#include "platform/carto/RgbColor.h"

namespace brevant::platform::carto {

/// Styles of a simple line; the value is the style code users pick from a list.
enum class SimpleLineStyle : int {
    Solid = 0,
    Dash = 1,
    Dot = 2,
    DashDot = 3,
    DashDotDot = 4,
    Null = 5,
    InsideFrame = 6,
};

/// A plain line. Width in points; a width of 0 is the thinnest line the device draws.
struct SimpleLineSymbol {
    SimpleLineStyle style = SimpleLineStyle::Solid;
    RgbColor color;
    double width = 1.0;

    bool operator==(const SimpleLineSymbol&) const = default;
};

} // namespace brevant::platform::carto
