#pragma once

#include "host/HostService.h"
#include "platform/automation/Variant.h"

#include <string>

namespace brevant::host {

/// The host's catalogue of the study region's inventory classes: which database of the region
/// folder holds each class, and each class's hazard table. Every operation the host does not
/// provide raises automation error 438.
class InventoryCatalogService : public HostService {
public:
    using Variant = platform::automation::Variant;

    /// All inventory classes as parallel lists: names, database files, kinds ("P" or "L").
    virtual void GetInventoryClasses(Variant& tableNames, Variant& databaseNames, Variant& kinds);
    /// File name, relative to the region folder, of the database that holds an inventory class.
    virtual std::string GetDatabaseName(const std::string& tableName);
    /// Name of the hazard table of an inventory class.
    virtual std::string GetHazardTableName(const std::string& tableName);
};

inline void InventoryCatalogService::GetInventoryClasses(Variant&, Variant&, Variant&)
{
    unsupported("InventoryCatalogService", "GetInventoryClasses");
}

inline std::string InventoryCatalogService::GetDatabaseName(const std::string&)
{
    unsupported("InventoryCatalogService", "GetDatabaseName");
}

inline std::string InventoryCatalogService::GetHazardTableName(const std::string&)
{
    unsupported("InventoryCatalogService", "GetHazardTableName");
}

} // namespace brevant::host
