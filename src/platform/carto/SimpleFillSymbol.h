#pragma once

#include "platform/carto/LineSymbol.h"

namespace brevant::platform::carto {

/// Styles of a simple fill; the value is the style code users pick from a list.
enum class SimpleFillStyle : int {
    Solid = 0,
    Hollow = 1,
    Horizontal = 2,
    Vertical = 3,
    ForwardDiagonal = 4,
    BackwardDiagonal = 5,
    Cross = 6,
    DiagonalCross = 7,
};

/// An area filled with a colour or a hatch, with an outline (by default a black solid line of
/// 0.4 points).
struct SimpleFillSymbol {
    SimpleFillStyle style = SimpleFillStyle::Solid;
    RgbColor color;
    LineSymbol outline = SimpleLineSymbol{SimpleLineStyle::Solid, {}, 0.4};

    bool operator==(const SimpleFillSymbol&) const = default;
};

} // namespace brevant::platform::carto
