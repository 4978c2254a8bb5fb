#pragma once

#include "host/HostService.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's utilities around the region's tabular database: display precisions, default site
/// conditions, inventory identifiers, the server-side analysis tables that follow the
/// geodatabases, and the query-tool table. Every operation the host does not provide raises
/// automation error 438.
class GisUtilityService : public HostService {
public:
    using Variant = platform::automation::Variant;

    /// Number of decimals with which the values of a table's field are shown.
    virtual int16_t GetDisplayPrecision(const std::string& tableName, const std::string& fieldName);
    /// The region's default soil class, susceptibility categories and ground-water depth.
    virtual void GetDefaultSiteValues(std::string& soilType, int16_t& liquefactionCategory,
                                      int16_t& landslideCategory, float& waterDepth);
    /// Copies the locations of records moved on the map into the table's server tables.
    virtual void UpdateMovedLocations(const std::string& tableName,
                                      const std::string& databaseName);
    /// Copies records edited in the class into its server tables; anyProcessed: any were.
    virtual void UpdateEditedRecords(const std::string& databaseName, const std::string& tableName,
                                     bool anyProcessed);
    /// Prepares the generation of new record identifiers for an inventory table.
    virtual void PrepareIdentifiers(const std::string& tableName);
    /// The next new record identifier of the table given to PrepareIdentifiers.
    virtual std::string GetNextIdentifier();
    /// Name of the inventory table that an analysis record set stands for.
    virtual std::string GetRecordSetTableName(const std::string& recordSetId);
    /// Updates the server analysis table of an inventory table for the listed hazard codes.
    virtual void UpdateAnalysisTable(const std::string& tableName, const std::string& databaseName,
                                     const Variant& mapTypes, bool isPoint);
    /// Updates the server-side hazard table of a line inventory class from the listed codes.
    virtual void UpdateLineHazardTable(const std::string& hazardTableName,
                                       const std::string& databaseName, const Variant& mapTypes);
    /// Name of the table that holds the values of a result table.
    virtual std::string GetResultTableName(const std::string& tableName);
    /// Deletes all records of a table of the region's tabular database.
    virtual void EmptyTable(const std::string& tableName);
    /// Writes the query-tool record of a map layer (its data, and the joined table if any).
    virtual void WriteQueryToolRecord(int32_t layerIndex, const std::string& layerName,
                                      int16_t kind, const std::string& tableName,
                                      const std::string& databaseName,
                                      const std::string& joinTableName,
                                      const std::string& joinDatabaseName);
};

inline int16_t GisUtilityService::GetDisplayPrecision(const std::string&, const std::string&)
{
    unsupported("GisUtilityService", "GetDisplayPrecision");
}

inline void GisUtilityService::GetDefaultSiteValues(std::string&, int16_t&, int16_t&, float&)
{
    unsupported("GisUtilityService", "GetDefaultSiteValues");
}

inline void GisUtilityService::UpdateMovedLocations(const std::string&, const std::string&)
{
    unsupported("GisUtilityService", "UpdateMovedLocations");
}

inline void GisUtilityService::UpdateEditedRecords(const std::string&, const std::string&, bool)
{
    unsupported("GisUtilityService", "UpdateEditedRecords");
}

inline void GisUtilityService::PrepareIdentifiers(const std::string&)
{
    unsupported("GisUtilityService", "PrepareIdentifiers");
}

inline std::string GisUtilityService::GetNextIdentifier()
{
    unsupported("GisUtilityService", "GetNextIdentifier");
}

inline std::string GisUtilityService::GetRecordSetTableName(const std::string&)
{
    unsupported("GisUtilityService", "GetRecordSetTableName");
}

inline void GisUtilityService::UpdateAnalysisTable(const std::string&, const std::string&,
                                                   const Variant&, bool)
{
    unsupported("GisUtilityService", "UpdateAnalysisTable");
}

inline void GisUtilityService::UpdateLineHazardTable(const std::string&, const std::string&,
                                                     const Variant&)
{
    unsupported("GisUtilityService", "UpdateLineHazardTable");
}

inline std::string GisUtilityService::GetResultTableName(const std::string&)
{
    unsupported("GisUtilityService", "GetResultTableName");
}

inline void GisUtilityService::EmptyTable(const std::string&)
{
    unsupported("GisUtilityService", "EmptyTable");
}

inline void GisUtilityService::WriteQueryToolRecord(int32_t, const std::string&, int16_t,
                                                    const std::string&, const std::string&,
                                                    const std::string&, const std::string&)
{
    unsupported("GisUtilityService", "WriteQueryToolRecord");
}

} // namespace brevant::host
