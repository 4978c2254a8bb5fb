#include "context/InventoryRegionFixture.h"

#include "context/EqShape.h"
#include "host/local/DefaultCatalogues.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/Schemas.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "platform/ui/ScriptedPrompts.h"

namespace brevant::test {

namespace geodatabase = platform::geodatabase;
using platform::tabular::SqliteDatabase;

namespace {
std::string regionDatabase(const std::filesystem::path& root)
{
    return host::local::HostRoot::load(root).regionDatabasePath("Testville").string();
}
} // namespace

void InventoryRegionFixture::SetUp()
{
    HostFixture::SetUp();
    host::local::writeDefaultSymbols(root() / "System");
    context::openStudyRegion(true);
    m_map = std::make_shared<platform::carto::Map>();
    context::setCurrentMap(m_map);
    m_prompts = std::make_shared<platform::ui::ScriptedPrompts>();
    platform::ui::installUserPrompts(m_prompts);
}

void InventoryRegionFixture::TearDown()
{
    platform::ui::installUserPrompts(nullptr);
    HostFixture::TearDown();
}

std::shared_ptr<geodatabase::FeatureClass>
InventoryRegionFixture::addPointInventory(const std::string& name, const std::vector<Site>& sites,
                                          const std::string& database)
{
    const std::string path = regionFolder() + database;
    auto workspace = std::filesystem::exists(path) ? geodatabase::Workspace::open(path)
                                                   : geodatabase::Workspace::createGeoPackage(path);
    auto points = workspace.createFeatureClass(
        name, geodatabase::Fields(host::local::inventoryFields(name, 'P')),
        platform::geometry::ShapeType::Point);
    {
        geodatabase::InsertCursor insert = points->insert();
        for (const Site& site : sites) {
            auto row = points->createRow();
            row.setValue(2, site.id);
            row.setValue(points->findField("Name"), "Site " + site.id);
            row.setValue(points->findField("Tract"), site.tract);
            row.setValue(points->findField("Latitude"), site.y);
            row.setValue(points->findField("Longitude"), site.x);
            row.setShape(platform::geometry::Geometry::point({site.x, site.y}));
            insert.insertRow(row);
        }
    }
    host::local::RegionDatabase(regionDatabase(root()))
        .putInventoryClass({name, database, "P", ""});
    for (const auto& table : host::local::inventoryServerTables(name, 'P')) {
        executeSql(host::local::createTableStatement(table));
    }
    return points;
}

void InventoryRegionFixture::executeSql(const std::string& sql) const
{
    SqliteDatabase db(regionDatabase(root()), SqliteDatabase::Mode::ReadWrite);
    db.execute(sql);
}

std::string InventoryRegionFixture::sqlValue(const std::string& query) const
{
    SqliteDatabase db(regionDatabase(root()), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement statement(db, query);
    if (!statement.step()) {
        return "<none>";
    }
    return statement.isNull(0) ? "<null>" : statement.text(0);
}

platform::automation::Variant InventoryRegionFixture::valueOf(const geodatabase::Table& table,
                                                              const std::string& id,
                                                              const std::string& field)
{
    geodatabase::Cursor cursor = table.search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        if (row.value(2).toString() == id) {
            return row.value(table.findField(field));
        }
    }
    ADD_FAILURE() << "no record " << id << " in " << table.name();
    return {};
}

} // namespace brevant::test
