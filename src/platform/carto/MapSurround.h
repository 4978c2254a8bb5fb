#pragma once

#include "platform/automation/AutomationObject.h"

#include <memory>
#include <string>

namespace brevant::platform::carto {

class Map;

/// The kinds of map surround a map frame can make.
enum class SurroundKind { Legend, MarkerNorthArrow, ScaleLine };

/// Something drawn beside a map that describes it: a legend, a north arrow, a scale bar. It
/// belongs to one map and lives in a map surround frame on the page.
class MapSurround : public automation::AutomationObject {
public:
    virtual SurroundKind kind() const = 0;

    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }
    /// The map described; null once the map is gone.
    std::shared_ptr<Map> map() const { return m_map.lock(); }
    void setMap(const std::shared_ptr<Map>& map) { m_map = map; }

protected:
    MapSurround() = default;

private:
    std::string m_name;
    std::weak_ptr<Map> m_map;
};

} // namespace brevant::platform::carto
