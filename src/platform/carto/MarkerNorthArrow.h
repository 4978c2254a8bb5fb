#pragma once

#include "platform/carto/MapSurround.h"
#include "platform/carto/MultiLayerMarkerSymbol.h"

namespace brevant::platform::carto {

/// A north arrow drawn as a marker centred in its frame. A character marker whose font is not
/// installed is drawn as an arrow with an N instead, at the marker's size and colour.
class MarkerNorthArrow : public MapSurround {
public:
    std::string_view className() const override { return "MarkerNorthArrow"; }
    SurroundKind kind() const override { return SurroundKind::MarkerNorthArrow; }

    const MarkerLayer& markerSymbol() const { return m_marker; }
    void setMarkerSymbol(MarkerLayer marker) { m_marker = std::move(marker); }

private:
    MarkerLayer m_marker = CharacterMarkerSymbol{{}, 174, 36.0, 0.0, {}};
};

} // namespace brevant::platform::carto
