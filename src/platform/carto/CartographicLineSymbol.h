#pragma once

#include "platform/carto/LineTemplate.h"
#include "platform/carto/RgbColor.h"

#include <optional>

namespace brevant::platform::carto {

/// Line end styles, with the codes the symbol catalogue's names map to.
enum class LineCap : int { Butt = 0, Round = 1, Square = 2 };
/// Line corner styles, with the codes the symbol catalogue's names map to.
enum class LineJoin : int { Miter = 0, Round = 1, Bevel = 2 };

/// A line with caps, joins and an optional dash template. Width and offset in points; the
/// offset (a parallel shift to the left of the line's direction) is kept but not drawn.
struct CartographicLineSymbol {
    RgbColor color;
    double width = 1.0;
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    double offset = 0.0;
    std::optional<LineTemplate> lineTemplate;

    bool operator==(const CartographicLineSymbol&) const = default;
};

} // namespace brevant::platform::carto
