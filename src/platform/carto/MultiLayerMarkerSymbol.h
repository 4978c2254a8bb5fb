#pragma once

#include "platform/carto/CharacterMarkerSymbol.h"
#include "platform/carto/SimpleMarkerSymbol.h"

#include <variant>
#include <vector>

namespace brevant::platform::carto {

/// One marker of a stack: what a multi-layer marker holds and a marker line repeats.
using MarkerLayer = std::variant<SimpleMarkerSymbol, CharacterMarkerSymbol>;

/// Markers stacked on one spot. Layers keep the order in which they were added; layer 0 is
/// drawn first, so later layers lie on top of it.
struct MultiLayerMarkerSymbol {
    std::vector<MarkerLayer> layers;

    void addLayer(MarkerLayer layer) { layers.push_back(std::move(layer)); }
    int layerCount() const { return static_cast<int>(layers.size()); }

    bool operator==(const MultiLayerMarkerSymbol&) const = default;
};

} // namespace brevant::platform::carto
