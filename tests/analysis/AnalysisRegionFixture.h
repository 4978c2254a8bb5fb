#pragma once

#include "context/InventoryRegionFixture.h"
#include "host/local/SchemaWriter.h"

#include <memory>
#include <string>
#include <vector>

namespace brevant::test {

/// An axis-aligned square map polygon with its values by field name.
struct Zone {
    double x = 0.0;
    double y = 0.0;
    double size = 1.0;
    host::local::NamedValues values;
};

/// One line inventory record: identifier and path (WKT).
struct Segment {
    std::string id;
    std::string wkt;
};

/// InventoryRegionFixture with what the scenario analyses read: the region's boundary database
/// (an empty eqTract among its classes), the server tables "hztract" and "eqTract", user maps
/// registered through the host's map registration, the probabilistic map and line inventory.
class AnalysisRegionFixture : public InventoryRegionFixture {
protected:
    void SetUp() override;

    /// Registers the user map of `code` (a "paramvalue" per zone) for the current region.
    void registerUserMap(const std::string& code, const std::vector<Zone>& zones);
    /// Writes "USGS" of USGS.mdb with the zones; fields a zone does not name stay null.
    void writeUsgsMap(const std::vector<Zone>& zones);
    /// Adds line class `name` and its hazard table ("Eq" + suffix + "hft") with one record per
    /// segment to `database`, catalogues it and creates its server tables.
    void addLineInventory(const std::string& name, const std::vector<Segment>& segments,
                          const std::string& database = "trn.mdb");

    /// A class of a region database, opened afresh (so it shows fields added since).
    std::shared_ptr<platform::geodatabase::FeatureClass>
    openClass(const std::string& database, const std::string& name) const;
    /// Names of the class's fields from `from` on, in order.
    static std::vector<std::string> fieldNames(const platform::geodatabase::Table& table,
                                               int from = 0);
    /// Adds hzHighwayBridge with HB000001 at (-99.5, 40.5) and HB000002 at (-98.5, 40.5) in
    /// tract 06001400100, HB000003 at (-97.5, 40.5) in tract 06001400200.
    void addBridges();
    /// A field of the bridges HB000001 to HB000003 of the inventory, in that order.
    std::vector<double> bridgeValues(const std::string& field) const;
    /// How many records the region's error log holds.
    int errorRecordCount() const;

private:
    std::filesystem::path m_sources;
};

} // namespace brevant::test
