#include "context/SyncSQL.h"

#include "context/ErrorTrap.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "platform/automation/ErrorNumbers.h"

namespace brevant::context {

using platform::automation::LibraryCode::Procedure;

void SyncLocMovedFromMap(const std::string& tableName)
{
    runTrapped(" SyncLocMovedFromMap", Procedure, [&] {
        auto& services = host::hostServices();
        const std::string database =
            services.createInventoryCatalogService()->GetDatabaseName(tableName);
        services.createGisUtilityService()->UpdateMovedLocations(tableName, database);
    });
}

void SyncTabEditedFromMap(const std::string& tableName, bool anyProcessed)
{
    runTrapped(" SyncTabEditedFromMap", Procedure, [&] {
        auto& services = host::hostServices();
        const std::string database =
            services.createInventoryCatalogService()->GetDatabaseName(tableName);
        services.createGisUtilityService()->UpdateEditedRecords(database, tableName, anyProcessed);
    });
}

} // namespace brevant::context
