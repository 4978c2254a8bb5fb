#pragma once

#include "host/GisDataService.h"

#include <filesystem>

namespace brevant::host::local {

/// Data access of the reference host: feature classes and tables from the region's personal
/// geodatabases, server tables from the region's tabular database, and the region maps 0
/// (hzboundary), 1 (hztract) and 8 (hzCounty) of RegionBndry.mdb. Every failure names the
/// database and the class.
class LocalGisDataService : public GisDataService {
public:
    explicit LocalGisDataService(std::filesystem::path root) : m_root(std::move(root)) {}

    Variant OpenFeatureClass(const std::string& className,
                             const std::string& databasePath) override;
    /// `databaseName` is the region database name ("sqlite:" + path).
    Variant OpenServerTable(const std::string& databaseName, const std::string& tableName) override;
    Variant GetBoundaryClass(int16_t kind, int16_t option, const std::string& name) override;
    /// Pipelines live in the region's Pipeline.mdb as hzPipeline0 (gas), hzPipeline1 (oil) and
    /// hzPipeline2 (water).
    Variant OpenPipelineClass(int16_t index) override;
    void CopyFeatures(const Variant& source, const Variant& target,
                      const std::string& whereClause) override;
    void DeleteFeatureClass(const std::string& className, const std::string& location) override;
    void GetFieldRange(const std::string& database, const std::string& className,
                       const std::string& fieldName, double& minValue, double& maxValue) override;
    /// A regular grid over the envelope of the boundary shape (well-known text) widened by
    /// parameter 5: columns parameter 1 degrees apart starting parameter 3 east of its west
    /// edge, rows parameter 2 apart starting parameter 4 north of its south edge. The points
    /// the shape contains are added to gridClass. A spacing that is not above 0, or an envelope
    /// of more points than parameter 6, fails before anything is written.
    void BuildGridPoints(const Variant& gridClass, const Variant& boundaryShape, double parameter1,
                         double parameter2, double parameter3, double parameter4,
                         double parameter5, double parameter6) override;
    /// Replaces the rows of className of databasePath with the points of gridClass that a
    /// polygon of boundaryClass contains (attributes matched by name).
    void TransferGrid(const Variant& gridClass, const std::string& databasePath,
                      const std::string& className, const Variant& boundaryClass) override;
    Variant OpenShapefile(const std::string& name, const std::string& folder) override;

private:
    std::string regionFolder() const;

    std::filesystem::path m_root;
};

} // namespace brevant::host::local
