#include "context/ContextObjects.h"

#include "context/StudyRegionContext.h"
#include "platform/automation/AutomationError.h"

#include <string>

namespace brevant::context {

void throwObjectNotSet(const char* what)
{
    constexpr int32_t kObjectVariableNotSet = 91;
    throw platform::automation::AutomationError(
        kObjectVariableNotSet, "Brevant",
        std::string("Object variable or With block variable not set (") + what + ")");
}

host::GisDataService& contextGisDataService()
{
    auto& service = studyRegionContext().GisDataService;
    if (!service) {
        throwObjectNotSet("GisDataService");
    }
    return *service;
}

host::RegionSettingsStore& contextSettingsStore()
{
    auto& store = studyRegionContext().RegionSettingsStore;
    if (!store) {
        throwObjectNotSet("RegionSettingsStore");
    }
    return *store;
}

platform::carto::Map& currentMapOrFail()
{
    auto& map = studyRegionContext().CurrentMap;
    if (!map) {
        throwObjectNotSet("CurrentMap");
    }
    return *map;
}

} // namespace brevant::context
