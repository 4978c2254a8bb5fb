#pragma once

#include "platform/carto/Element.h"
#include "platform/carto/LineSymbol.h"
#include "platform/carto/MapSurround.h"

#include <memory>
#include <optional>

namespace brevant::platform::carto {

class Map;
class MapSurroundFrame;

/// The rectangle on a page that shows a map at the map's current extent.
class MapFrame : public Element {
public:
    explicit MapFrame(std::shared_ptr<Map> map) : m_map(std::move(map)) {}

    std::string_view className() const override { return "MapFrame"; }

    const std::shared_ptr<Map>& map() const { return m_map; }
    void setMap(std::shared_ptr<Map> map) { m_map = std::move(map); }
    /// The border line (black, 1 point, unless set).
    const std::optional<LineSymbol>& border() const { return m_border; }
    void setBorder(std::optional<LineSymbol> border) { m_border = std::move(border); }

    /// A new frame holding a new surround of this frame's map, named after its kind ("Legend",
    /// "North Arrow", "Scale Bar"), without a shape yet and not on any page. The frame must be
    /// held by a shared pointer.
    std::shared_ptr<MapSurroundFrame> createSurroundFrame(SurroundKind kind);

private:
    std::shared_ptr<Map> m_map;
    std::optional<LineSymbol> m_border = SimpleLineSymbol{};
};

} // namespace brevant::platform::carto
