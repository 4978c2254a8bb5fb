#pragma once

#include "platform/carto/MultiLayerLineSymbol.h"

#include <variant>

namespace brevant::platform::carto {

/// Any line symbol: what a fill's outline, a frame's border and a line renderer take.
using LineSymbol = std::variant<SimpleLineSymbol, CartographicLineSymbol, MarkerLineSymbol,
                                HashLineSymbol, MultiLayerLineSymbol>;

} // namespace brevant::platform::carto
