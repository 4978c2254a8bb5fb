#pragma once

#include "platform/automation/AutomationObject.h"

#include <memory>

namespace brevant::platform::automation {
class MemberTable;
}
namespace brevant::platform::carto {
class Map;
}

namespace brevant::context {

/// Base of the public classes with an `m_pMap` property. The map is process-wide: assigning it
/// through any object makes it the map every object uses, and reading it through any object
/// returns the last one assigned. Assigning anything but a map is a type mismatch (13).
class ObjectWithMap : public platform::automation::AutomationObject {
public:
    std::shared_ptr<platform::carto::Map> get_m_pMap() const;
    void putref_m_pMap(std::shared_ptr<platform::carto::Map> map);

protected:
    /// Adds the `m_pMap` property to a class's member table.
    static void addMapProperty(platform::automation::MemberTable& table);
};

} // namespace brevant::context
