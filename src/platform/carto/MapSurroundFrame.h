#pragma once

#include "platform/carto/Element.h"
#include "platform/carto/LineSymbol.h"
#include "platform/carto/MapSurround.h"
#include "platform/carto/SimpleFillSymbol.h"

#include <memory>
#include <optional>

namespace brevant::platform::carto {

class MapFrame;

/// The rectangle on a page that holds a map surround.
class MapSurroundFrame : public Element {
public:
    MapSurroundFrame(std::shared_ptr<MapSurround> surround, std::weak_ptr<MapFrame> mapFrame)
        : m_surround(std::move(surround)), m_mapFrame(std::move(mapFrame))
    {
    }

    std::string_view className() const override { return "MapSurroundFrame"; }

    const std::shared_ptr<MapSurround>& mapSurround() const { return m_surround; }
    void setMapSurround(std::shared_ptr<MapSurround> surround) { m_surround = std::move(surround); }
    /// The map frame whose map the surround describes; null once it is gone.
    std::shared_ptr<MapFrame> mapFrame() const { return m_mapFrame.lock(); }

    /// No border unless one is set.
    const std::optional<LineSymbol>& border() const { return m_border; }
    void setBorder(std::optional<LineSymbol> border) { m_border = std::move(border); }
    const std::optional<SimpleFillSymbol>& background() const { return m_background; }
    void setBackground(std::optional<SimpleFillSymbol> background)
    {
        m_background = std::move(background);
    }

private:
    std::shared_ptr<MapSurround> m_surround;
    std::weak_ptr<MapFrame> m_mapFrame;
    std::optional<LineSymbol> m_border;
    std::optional<SimpleFillSymbol> m_background;
};

} // namespace brevant::platform::carto
