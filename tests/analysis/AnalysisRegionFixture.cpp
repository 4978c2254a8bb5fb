#include "analysis/AnalysisRegionFixture.h"

#include "host/local/HostRoot.h"
#include "host/local/MapRegistration.h"
#include "host/local/RegionDatabase.h"
#include "host/local/Schemas.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <fstream>
#include <sstream>

namespace brevant::test {

namespace geodatabase = platform::geodatabase;
namespace local = host::local;
using platform::geometry::Geometry;

namespace {

std::vector<platform::geometry::Point> ring(const Zone& zone)
{
    return {{zone.x, zone.y},
            {zone.x + zone.size, zone.y},
            {zone.x + zone.size, zone.y + zone.size},
            {zone.x, zone.y + zone.size},
            {zone.x, zone.y}};
}

} // namespace

void AnalysisRegionFixture::SetUp()
{
    InventoryRegionFixture::SetUp();
    m_sources = root() / "Sources";
    std::filesystem::create_directories(m_sources);
    local::createDatabase(*local::findDatabase(local::HostFolder::Region, "RegionBndry.mdb"),
                          regionFolder() + "RegionBndry.mdb");
    for (const char* table : {"hztract", "eqTract"}) {
        executeSql(local::createTableStatement(*local::findServerTable(table)));
    }
}

void AnalysisRegionFixture::registerUserMap(const std::string& code, const std::vector<Zone>& zones)
{
    const auto file = m_sources / (code + ".geojson");
    {
        std::ofstream out(file);
        out << R"({"type": "FeatureCollection", "features": [)";
        for (std::size_t i = 0; i < zones.size(); ++i) {
            out << (i ? "," : "") << R"({"type": "Feature", "properties": {"paramvalue": )"
                << zones[i].values.at("paramvalue").toDouble()
                << R"(}, "geometry": {"type": "Polygon", "coordinates": [[)";
            const auto points = ring(zones[i]);
            for (std::size_t k = 0; k < points.size(); ++k) {
                out << (k ? "," : "") << "[" << points[k].x << "," << points[k].y << "]";
            }
            out << "]]}}";
        }
        out << "]}";
    }
    local::registerMap(root(), {"", code, {file, ""}, "", std::nullopt});
}

void AnalysisRegionFixture::writeUsgsMap(const std::vector<Zone>& zones)
{
    auto workspace = local::createDatabase(
        *local::findDatabase(local::HostFolder::Region, "USGS.mdb"), regionFolder() + "USGS.mdb");
    auto usgs = workspace.openFeatureClass("USGS");
    geodatabase::InsertCursor insert = usgs->insert();
    for (const Zone& zone : zones) {
        auto row = usgs->createRow();
        local::setNamedValues(row, zone.values);
        row.setShape(Geometry::polygon({ring(zone)}));
        insert.insertRow(row);
    }
    insert.flush();
}

void AnalysisRegionFixture::addLineInventory(const std::string& name,
                                             const std::vector<Segment>& segments,
                                             const std::string& database)
{
    const std::string path = regionFolder() + database;
    auto workspace = std::filesystem::exists(path) ? geodatabase::Workspace::open(path)
                                                   : geodatabase::Workspace::createGeoPackage(path);
    for (const auto& schema : local::inventoryClassSchemas(name, 'L')) {
        auto table = std::dynamic_pointer_cast<geodatabase::FeatureClass>(
            local::createClass(workspace, schema));
        geodatabase::InsertCursor insert = table->insert();
        for (const Segment& segment : segments) {
            auto row = table->createRow();
            row.setValue(2, segment.id);
            row.setShape(Geometry::fromWkt(segment.wkt));
            insert.insertRow(row);
        }
        insert.flush();
    }
    const auto host = local::HostRoot::load(root());
    local::RegionDatabase(host.regionDatabasePath(host.currentRegion()))
        .putInventoryClass({name, database, "L", local::hazardTableName(name)});
    for (const auto& table : local::inventoryServerTables(name, 'L')) {
        executeSql(local::createTableStatement(table));
    }
}

std::shared_ptr<geodatabase::FeatureClass>
AnalysisRegionFixture::openClass(const std::string& database, const std::string& name) const
{
    return geodatabase::Workspace::open(regionFolder() + database).openFeatureClass(name);
}

std::vector<std::string> AnalysisRegionFixture::fieldNames(const geodatabase::Table& table,
                                                           int from)
{
    std::vector<std::string> names;
    for (int i = from; i < table.fields().count(); ++i) {
        names.push_back(table.fields().field(i).name);
    }
    return names;
}

int AnalysisRegionFixture::errorRecordCount() const
{
    const std::string log = errorLog();
    int count = 0;
    for (auto at = log.find("\nCode = "); at != std::string::npos;
         at = log.find("\nCode = ", at + 1)) {
        ++count;
    }
    return count;
}

void AnalysisRegionFixture::addBridges()
{
    addPointInventory("hzHighwayBridge", {{"HB000001", -99.5, 40.5, "06001400100"},
                                          {"HB000002", -98.5, 40.5, "06001400100"},
                                          {"HB000003", -97.5, 40.5, "06001400200"}});
}

std::vector<double> AnalysisRegionFixture::bridgeValues(const std::string& field) const
{
    const auto bridges = openClass("trn.mdb", "hzHighwayBridge");
    std::vector<double> values;
    for (const char* id : {"HB000001", "HB000002", "HB000003"}) {
        values.push_back(valueOf(*bridges, id, field).toDouble());
    }
    return values;
}

} // namespace brevant::test
