#include "context/ContextObjects.h"

#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/FeatureClass.h"

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

std::shared_ptr<platform::geodatabase::FeatureClass> openFeatureClass(const std::string& className,
                                                                      const std::string& databasePath)
{
    auto featureClass = contextGisDataService()
                            .OpenFeatureClass(className, databasePath)
                            .objectAs<platform::geodatabase::FeatureClass>();
    if (!featureClass) {
        throwObjectNotSet("feature class");
    }
    return featureClass;
}

std::shared_ptr<platform::geodatabase::Table> openServerTable(const std::string& tableName)
{
    auto table = contextGisDataService()
                     .OpenServerTable(studyRegionContext().RegionDatabaseName, tableName)
                     .objectAs<platform::geodatabase::Table>();
    if (!table) {
        throwObjectNotSet(("server table " + tableName).c_str());
    }
    return table;
}

int requireField(const platform::geodatabase::Table& table, const std::string& name)
{
    const int index = table.findField(name);
    if (index < 1) {
        throw platform::automation::PlatformError(
            platform::automation::ErrorNumber::InvalidArgument, "Brevant",
            "field " + name + " is not in " + table.name());
    }
    return index;
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
