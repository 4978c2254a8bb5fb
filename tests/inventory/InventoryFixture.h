#pragma once

#include "datamaps/DataMapsFixture.h"
#include "platform/geometry/Geometry.h"

#include <map>
#include <string>
#include <vector>

namespace brevant::test {

/// A feature of a user's source file: its name and shape (WKT in the file's system).
struct SourceFeature {
    std::string name;
    std::string wkt;
};

/// DataMapsFixture with two counties (06001 west of kMiddle, 06013 east of it, both reaching
/// beyond the region) and the empty inventory classes hzSchool (points), hzHighwaySegment and
/// hzLevees (lines), catalogued with their server tables.
class InventoryFixture : public DataMapsFixture {
protected:
    void SetUp() override;

    /// Writes a user's source class `name` of `kind` into Sources/<file> (a GeoPackage) in the
    /// EPSG system `epsg`; returns the file's path.
    std::string writeSource(const std::string& file, const std::string& name,
                            platform::geometry::ShapeType kind,
                            const std::vector<SourceFeature>& features, int epsg = 4269);
    /// The inventory class `name` from the database the catalogue keeps it in.
    std::shared_ptr<platform::geodatabase::FeatureClass> inventory(const std::string& name) const;
    /// Values of one field of every row of a class, in identifier order ("<null>" for null).
    static std::vector<std::string> column(const platform::geodatabase::Table& table,
                                           const std::string& field);
    /// Identifier (field 2) -> value of `field`.
    static std::map<std::string, std::string> byId(const platform::geodatabase::Table& table,
                                                   const std::string& field);
};

} // namespace brevant::test
