#pragma once

#include "host/HostService.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's data access: opens feature classes, tables and the region's maps (each handed
/// back in a variant), copies features between classes and builds the contour grid. A data set
/// that cannot be opened fails with the host's error; every operation the host does not
/// provide raises automation error 438.
class GisDataService : public HostService {
public:
    using Variant = platform::automation::Variant;

    /// Opens a feature class (or table) by name from the Access database at its full path.
    virtual Variant OpenFeatureClass(const std::string& className, const std::string& databasePath);
    /// Opens a table of the region's tabular database, named as GetRegionDatabaseName names it.
    virtual Variant OpenServerTable(const std::string& databaseName, const std::string& tableName);
    /// Region map of a kind: 0 boundary, 1 tracts, 2/3 east/west scenario faults, 8 counties.
    virtual Variant GetBoundaryClass(int16_t kind, int16_t option, const std::string& name);
    /// Opens the region's pipeline feature class of an index (0, 1 or 2).
    virtual Variant OpenPipelineClass(int16_t index);
    /// Adds to target the features of source that the where clause selects (empty: all of them).
    virtual void CopyFeatures(const Variant& source, const Variant& target,
                              const std::string& whereClause);
    /// Deletes the named feature class of a database, or the named shapefile of a folder.
    virtual void DeleteFeatureClass(const std::string& className, const std::string& location);
    /// Smallest and largest value of a field; database is a full path or a region-folder file.
    virtual void GetFieldRange(const std::string& database, const std::string& className,
                               const std::string& fieldName, double& minValue, double& maxValue);
    /// Fills gridClass with grid points over the boundary shape (well-known text), from the six
    /// grid parameters.
    virtual void BuildGridPoints(const Variant& gridClass, const Variant& boundaryShape,
                                 double parameter1, double parameter2, double parameter3,
                                 double parameter4, double parameter5, double parameter6);
    /// Copies the points of gridClass that boundaryClass holds into className of databasePath.
    virtual void TransferGrid(const Variant& gridClass, const std::string& databasePath,
                              const std::string& className, const Variant& boundaryClass);
    /// Opens a shapefile by name from its folder (given with its trailing separator).
    virtual Variant OpenShapefile(const std::string& name, const std::string& folder);
};

inline platform::automation::Variant GisDataService::OpenFeatureClass(const std::string&,
                                                                      const std::string&)
{
    unsupported("GisDataService", "OpenFeatureClass");
}

inline platform::automation::Variant GisDataService::OpenServerTable(const std::string&,
                                                                     const std::string&)
{
    unsupported("GisDataService", "OpenServerTable");
}

inline platform::automation::Variant GisDataService::GetBoundaryClass(int16_t, int16_t,
                                                                      const std::string&)
{
    unsupported("GisDataService", "GetBoundaryClass");
}

inline platform::automation::Variant GisDataService::OpenPipelineClass(int16_t)
{
    unsupported("GisDataService", "OpenPipelineClass");
}

inline void GisDataService::CopyFeatures(const Variant&, const Variant&, const std::string&)
{
    unsupported("GisDataService", "CopyFeatures");
}

inline void GisDataService::DeleteFeatureClass(const std::string&, const std::string&)
{
    unsupported("GisDataService", "DeleteFeatureClass");
}

inline void GisDataService::GetFieldRange(const std::string&, const std::string&,
                                          const std::string&, double&, double&)
{
    unsupported("GisDataService", "GetFieldRange");
}

inline void GisDataService::BuildGridPoints(const Variant&, const Variant&, double, double, double,
                                            double, double, double)
{
    unsupported("GisDataService", "BuildGridPoints");
}

inline void GisDataService::TransferGrid(const Variant&, const std::string&, const std::string&,
                                         const Variant&)
{
    unsupported("GisDataService", "TransferGrid");
}

inline platform::automation::Variant GisDataService::OpenShapefile(const std::string&,
                                                                   const std::string&)
{
    unsupported("GisDataService", "OpenShapefile");
}

} // namespace brevant::host
