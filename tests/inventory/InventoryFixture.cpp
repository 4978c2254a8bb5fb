#include "inventory/InventoryFixture.h"

#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/Schemas.h"
#include "host/local/SchemaWriter.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <filesystem>

namespace brevant::test {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;

void InventoryFixture::SetUp()
{
    DataMapsFixture::SetUp();
    fill("RegionBndry.mdb", "hzCounty", "CountyFips",
         {{kWest - 0.1, kSouth - 0.1, kMiddle, kNorth + 0.1, Variant("06001")},
          {kMiddle, kSouth - 0.1, kEast + 0.1, kNorth + 0.1, Variant("06013")}});
    const auto host = host::local::HostRoot::load(root());
    for (const char* database : {"trn.mdb", "util.mdb", "ef.mdb", "hplf.mdb", "uds.mdb"}) {
        host::local::createDatabase(
            *host::local::findDatabase(host::local::HostFolder::Region, database),
            regionFolder() + database);
    }
    host::local::RegionDatabase catalogue(host.regionDatabasePath("Testville"));
    for (const auto& entry : host::local::inventoryClasses()) {
        if (entry.name != "hzSchool" && entry.name != "hzHighwaySegment" &&
            entry.name != "hzLevees") {
            continue;
        }
        const bool hazardTable = host::local::hasHazardTable(entry.name, entry.kind);
        catalogue.putInventoryClass({entry.name, entry.database, std::string(1, entry.kind),
                                     hazardTable ? host::local::hazardTableName(entry.name) : ""});
        for (const auto& table : host::local::inventoryServerTables(entry.name, entry.kind)) {
            executeSql(host::local::createTableStatement(table));
        }
    }
}

std::string InventoryFixture::writeSource(const std::string& file, const std::string& name,
                                          platform::geometry::ShapeType kind,
                                          const std::vector<SourceFeature>& features, int epsg)
{
    const auto folder = root() / "Sources";
    std::filesystem::create_directories(folder);
    const auto path = folder / file;
    auto workspace = std::filesystem::exists(path) ? geodatabase::Workspace::open(path)
                                                   : geodatabase::Workspace::createGeoPackage(path);
    auto source = workspace.createFeatureClass(
        name, geodatabase::Fields({{"Name", geodatabase::FieldType::String, 40, {}}}), kind,
        platform::geometry::SpatialReference::fromEpsg(epsg));
    geodatabase::InsertCursor insert = source->insert();
    for (const SourceFeature& feature : features) {
        auto row = source->createRow();
        row.setValue(2, feature.name);
        row.setShape(platform::geometry::Geometry::fromWkt(feature.wkt));
        insert.insertRow(row);
    }
    insert.flush();
    return path.string();
}

std::shared_ptr<geodatabase::FeatureClass> InventoryFixture::inventory(const std::string& name) const
{
    const std::string database =
        host::hostServices().createInventoryCatalogService()->GetDatabaseName(name);
    return regionClass(database, name);
}

std::vector<std::string> InventoryFixture::column(const geodatabase::Table& table,
                                                  const std::string& field)
{
    const int index = table.findField(field);
    std::vector<std::string> values;
    geodatabase::Cursor cursor = table.search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        values.push_back(row.value(index).isNull() ? "<null>" : row.value(index).toString());
    }
    return values;
}

std::map<std::string, std::string> InventoryFixture::byId(const geodatabase::Table& table,
                                                          const std::string& field)
{
    const int index = table.findField(field);
    std::map<std::string, std::string> values;
    geodatabase::Cursor cursor = table.search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        values[row.value(2).toString()] =
            row.value(index).isNull() ? "<null>" : row.value(index).toString();
    }
    return values;
}

} // namespace brevant::test
