#include "context/ContextObjects.h"

#include "context/StudyRegionContext.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <string>

namespace brevant::context {

void throwObjectNotSet(const char* what)
{
    throw platform::automation::AutomationError(
        platform::automation::ErrorNumber::ObjectVariableNotSet, "Brevant",
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
