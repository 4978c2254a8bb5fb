#pragma once

#include "platform/carto/CartographicLineSymbol.h"
#include "platform/carto/HashLineSymbol.h"
#include "platform/carto/MarkerLineSymbol.h"
#include "platform/carto/SimpleLineSymbol.h"

#include <optional>
#include <variant>
#include <vector>

namespace brevant::platform::carto {

/// One line of a stack.
using LineLayer =
    std::variant<SimpleLineSymbol, CartographicLineSymbol, MarkerLineSymbol, HashLineSymbol>;

/// Lines stacked along one path (a casing under a centre line, ties over a rail). Layers keep
/// the order in which they were added; layer 0 is drawn first, later layers lie on top.
struct MultiLayerLineSymbol {
    std::vector<LineLayer> layers;

    /// Adds a layer on top; a missing layer (a symbol a catalogue could not build) adds
    /// nothing.
    void addLayer(std::optional<LineLayer> layer)
    {
        if (layer) {
            layers.push_back(std::move(*layer));
        }
    }
    int layerCount() const { return static_cast<int>(layers.size()); }

    bool operator==(const MultiLayerLineSymbol&) const = default;
};

} // namespace brevant::platform::carto
