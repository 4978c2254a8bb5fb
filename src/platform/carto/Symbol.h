#pragma once

#include "platform/carto/LineSymbol.h"
#include "platform/carto/MultiLayerMarkerSymbol.h"
#include "platform/carto/SimpleFillSymbol.h"

#include <optional>
#include <variant>

namespace brevant::platform::carto {

/// Any symbol a renderer can hand a feature: markers for points, lines for polylines, fills for
/// polygons. Symbols are values: copying one copies all its layers.
using Symbol = std::variant<SimpleMarkerSymbol, CharacterMarkerSymbol, MultiLayerMarkerSymbol,
                            SimpleLineSymbol, CartographicLineSymbol, MarkerLineSymbol,
                            HashLineSymbol, MultiLayerLineSymbol, SimpleFillSymbol>;

/// What kind of shape a symbol draws.
enum class SymbolKind { Marker, Line, Fill };

SymbolKind symbolKind(const Symbol& symbol);

/// The same line or marker as a Symbol.
Symbol toSymbol(const LineSymbol& line);
Symbol toSymbol(const MarkerLayer& marker);

/// The line symbol a Symbol holds; nullopt for markers and fills.
std::optional<LineSymbol> asLineSymbol(const Symbol& symbol);

/// The colour that stands for a symbol in a list: the fill colour, or the colour of the top
/// layer of a stack (black for an empty stack).
RgbColor mainColor(const Symbol& symbol);

} // namespace brevant::platform::carto
