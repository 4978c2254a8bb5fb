#pragma once

#include "platform/carto/CartographicLineSymbol.h"
#include "platform/carto/MarkerLineSymbol.h"

#include <variant>

namespace brevant::platform::carto {

/// The line a hash line draws each hash mark with.
using HashSymbol = std::variant<CartographicLineSymbol, MarkerLineSymbol>;

/// Short strokes across a line (railway ties, for instance): each hash is `width` points long,
/// turned `angle` degrees from the line's direction, and drawn with the hash symbol (a thin line
/// in `color` when none is set). With a template a hash sits at the start of each mark; without
/// one, hashes follow each other `width` points apart (at least 4).
struct HashLineSymbol {
    RgbColor color;
    double width = 1.0;
    double angle = 90.0;
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    double offset = 0.0;
    std::optional<HashSymbol> hashSymbol;
    std::optional<LineTemplate> lineTemplate;

    bool operator==(const HashLineSymbol&) const = default;
};

} // namespace brevant::platform::carto
