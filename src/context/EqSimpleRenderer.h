#pragma once

#include "platform/carto/CartographicLineSymbol.h"
#include "platform/carto/CharacterMarkerSymbol.h"
#include "platform/carto/HashLineSymbol.h"
#include "platform/carto/MarkerLineSymbol.h"
#include "platform/carto/MultiLayerLineSymbol.h"
#include "platform/carto/MultiLayerMarkerSymbol.h"
#include "platform/carto/RgbColor.h"
#include "platform/carto/SimpleFillSymbol.h"
#include "platform/carto/SimpleMarkerSymbol.h"

#include <cstdint>
#include <optional>
#include <string>

namespace brevant::platform::carto {
class FeatureLayer;
}

// The default symbology of the layers the library adds. Point and line symbols come by name
// from the host's symbol catalogue; polygons get one fixed fill.
//
// Every procedure runs under the chaining trap (context::runChained): a failure is recorded in
// the region's error log under the procedure's name with a leading blank (" GetColor",
// " CreateRendrer", ...) and raised again with its number and source kept and that name as its
// description, so each builder it climbs through adds a record and the calling procedure's
// trap converts it to its own library code.
namespace brevant::context {

/// Gives `layer` a new simple renderer with the symbol built for its shape type: the
/// catalogue's multi-layer marker for points, its multi-layer line for polylines, the fixed
/// fill for polygons. Any other shape type shows "Invalid feature type" (title "KORVAL") and
/// leaves the layer with an empty simple renderer; that is not an error. Throws
/// AutomationError when the layer has no feature class or the symbol cannot be built.
void CreateRendrer(platform::carto::FeatureLayer& layer, const std::string& symbolName);

/// Parses a colour text "red,green,blue" ("255,255,190"). Red and green are read leniently
/// (leading blanks skipped, reading stops at the first character that is not part of a
/// number, empty is 0); blue must be a whole number. Each is rounded half to even. Throws
/// AutomationError 5 when the text has fewer than two commas, 13 when blue is not a number, 6
/// when a part overflows and 0x80070057 when a part lies outside 0 to 255.
platform::carto::RgbColor GetColor(const std::string& colourText);

/// The named point symbol of the catalogue, its layers added in catalogue order (layer 1
/// first, drawn at the bottom). Creates a new catalogue object, which the per-layer builders
/// read from until the next build. An empty symbol when the catalogue reports no layers.
/// Throws AutomationError for what the catalogue refuses (an unknown name, for one) and 6 for
/// more than 32767 layers.
platform::carto::MultiLayerMarkerSymbol GetMultiPointSymbol(const std::string& symbolName);

/// The named line symbol of the catalogue, as GetMultiPointSymbol; layers of a type the
/// factory does not build are left out.
platform::carto::MultiLayerLineSymbol GetMultiLineSymbol(const std::string& symbolName);

/// The fill of every polygon layer, whatever the name: solid, RGB 255,255,190, default
/// outline. Never reads the catalogue.
platform::carto::SimpleFillSymbol GetSimplePolygonSymbol(const std::string& symbolName);

// Per-layer builders. Each reads layer `layerIndex` (from 1) of the symbol that the latest
// GetMultiPointSymbol or GetMultiLineSymbol opened; before any build they throw
// AutomationError 91.

/// A character marker for a "Character Marker Symbol" layer, the fixed simple marker for any
/// other point layer type.
platform::carto::MarkerLayer GetPointSymbol(int16_t layerIndex);

/// A marker line, cartographic line or hash line for the layer types "Marker Line Symbol",
/// "Cartographic Line Symbol" and "Hash Line Symbol"; nullopt for any other type name.
std::optional<platform::carto::LineLayer> GetLineSymbol(int16_t layerIndex);

/// A character marker with the layer's font, character, size, colour and angle.
platform::carto::CharacterMarkerSymbol GetCharacterMarkerSymbol(int16_t layerIndex);

/// The fixed simple marker: default style, black, size 0. The layer is not read.
platform::carto::SimpleMarkerSymbol GetSimpleMarkerSymbol(int16_t layerIndex);

/// A cartographic line with the layer's colour, width, cap and join; dashed by a template of
/// the layer's interval and one element (mark, gap) unless the gap is exactly 0.
platform::carto::CartographicLineSymbol GetCartograhicLineSymbol(int16_t layerIndex);

/// A marker line with the layer's colour and width, a character marker or the fixed simple
/// marker read from the same layer index, and the dash template of GetCartograhicLineSymbol.
/// The layer's cap and join are not used.
platform::carto::MarkerLineSymbol GetMarkerLineSymbol(int16_t layerIndex);

/// A hash line with the layer's angle, colour and width, hashes drawn with the marker line or
/// cartographic line of the same layer index (none for any other hash type), and the dash
/// template of GetCartograhicLineSymbol.
platform::carto::HashLineSymbol GetHashLineSymbol(int16_t layerIndex);

/// Cap style of a name: "Butt" 0, "Round" 1, "Square" 2, anything else 0. Case matters.
int16_t GetLineCap(const std::string& name);

/// Join style of a name: "Miter" 0, "Round" 1, "Bevel" 2, anything else 0. Case matters.
int16_t GetLineJoin(const std::string& name);

} // namespace brevant::context
