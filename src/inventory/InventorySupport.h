#pragma once

#include "platform/automation/Variant.h"
#include "platform/geometry/FeatureIndex.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {
class FeatureClass;
}
namespace brevant::platform::geometry {
struct Point;
}

/// What the point and line inventory classes share besides their common members: classes
/// opened through the host, the scratch database, the tract lookup and the obsolete members'
/// message.
namespace brevant::inventory {

/// A feature class opened through the context's GisDataService; error 91 when the host hands
/// back nothing.
std::shared_ptr<platform::geodatabase::FeatureClass> openClass(const std::string& className,
                                                               const std::string& databasePath);
/// Region map `kind` of GisDataService (0 boundary, 1 tracts, 8 counties).
std::shared_ptr<platform::geodatabase::FeatureClass> regionMap(int16_t kind);
/// The scratch database: SystemDataFolder + "temp.mdb".
std::string tempDatabasePath();
/// The inventory class `tableName` from RegionFolder + the database InventoryCatalogService
/// names for it.
std::shared_ptr<platform::geodatabase::FeatureClass> openCataloguedClass(const std::string& tableName);

/// DeleteTempTable of both classes: opens `HzTableName` of the scratch database through
/// GisDataService and deletes it. A scratch copy that is not there is nothing to delete.
/// Tag " DeleteTempTable".
void deleteTempTable(const std::string& HzTableName);

/// Tells the user that a member is obsolete (OK button, the default title).
void showObsolete(const std::string& text);

/// The tract of a point: the "Tract" of the first tract (in identifier order) whose shape the
/// point intersects, inside or on its edge, as a spatial filter with the point would find it;
/// "" when none. The tracts are read once into a feature index, so a million lookups cost no
/// storage query each.
class TractLookup {
public:
    /// Reads the shapes and "Tract" values of the tract class.
    explicit TractLookup(const platform::geodatabase::FeatureClass& tracts);
    std::string tractOf(const platform::geometry::Point& point) const;

private:
    std::vector<std::string> m_tracts;
    platform::geometry::FeatureIndex m_index;
};

} // namespace brevant::inventory
