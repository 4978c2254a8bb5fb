#include "context/ObjectWithMap.h"

#include "context/EqShape.h"
#include "platform/automation/MemberTable.h"
#include "platform/carto/Map.h"

namespace brevant::context {

std::shared_ptr<platform::carto::Map> ObjectWithMap::get_m_pMap() const
{
    return CurrentMap();
}

void ObjectWithMap::putref_m_pMap(std::shared_ptr<platform::carto::Map> map)
{
    setCurrentMap(std::move(map));
}

void ObjectWithMap::addMapProperty(platform::automation::MemberTable& table)
{
    table.property("m_pMap", &ObjectWithMap::get_m_pMap, &ObjectWithMap::putref_m_pMap);
}

} // namespace brevant::context
