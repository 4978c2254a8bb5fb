#include "host/HostServices.h"
#include "host/local/HostBuilder.h"
#include "host/local/HostRoot.h"
#include "host/local/InventoryBuilder.h"
#include "host/local/LocalHostServices.h"
#include "host/local/LocalInventoryCatalogService.h"
#include "host/local/LocalSymbolCatalog.h"
#include "host/local/LocalUserMapRegistry.h"
#include "host/local/MapRegistration.h"
#include "host/local/RegionBuilder.h"
#include "host/local/RegionDatabase.h"
#include "host/local/Schemas.h"
#include "platform/automation/PlatformError.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/HostFixture.h"
#include "support/RealData.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace brevant::host::local {
namespace {

namespace fs = std::filesystem;
using platform::automation::PlatformError;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::Field;
using platform::geodatabase::Fields;
using platform::geodatabase::FieldType;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::QueryFilter;
using platform::geodatabase::Row;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;

std::string square(double x, double y, double size)
{
    std::ostringstream out;
    out << "[[" << x << "," << y << "],[" << x + size << "," << y << "],[" << x + size << ","
        << y + size << "],[" << x << "," << y + size << "],[" << x << "," << y << "]]";
    return out.str();
}

/// A GeoJSON file of polygon features, each with its properties.
void writeGeoJson(const fs::path& file,
                  const std::vector<std::pair<std::string, std::string>>& propertiesAndRings)
{
    std::ofstream out(file);
    out << R"({"type": "FeatureCollection", "features": [)";
    for (std::size_t i = 0; i < propertiesAndRings.size(); ++i) {
        out << (i ? "," : "") << R"({"type": "Feature", "properties": {)"
            << propertiesAndRings[i].first
            << R"(}, "geometry": {"type": "Polygon", "coordinates": [)"
            << propertiesAndRings[i].second << "]}}";
    }
    out << "]}";
}

/// Every file of a folder with its bytes, to prove a command left a host root untouched.
std::map<std::string, std::string> snapshot(const fs::path& root)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::ostringstream bytes;
        if (entry.is_regular_file()) {
            bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
        }
        files[entry.path().string()] = entry.is_regular_file() ? bytes.str() : "<folder>";
    }
    return files;
}

// A region of four tracts in a 2 x 2 degree square with a lake (a hole), tracts in a shapefile
// whose codes are numbers (leading zero lost), one tract outside the boundary and one with a
// bow-tie ring; maps in GeoJSON with the user's own field names.
class RegionAdmin : public ::testing::Test {
protected:
    void SetUp() override
    {
        initHost(m_root);
        writeGeoJson(
            m_sources / "boundary.geojson",
            {{R"("NAME": "Testville")", square(-100, 40, 2) + "," + square(-99.2, 40.8, 0.2)}});
        Workspace shapes = Workspace::openShapefileFolder(m_sources / "tracts");
        auto tracts = shapes.createFeatureClass(
            "tracts", Fields({{"TRACT_ID", FieldType::Double, 0, {}}}), ShapeType::Polygon);
        {
            InsertCursor insert = tracts->insert();
            const auto add = [&](double code, const Geometry& shape) {
                Row row = tracts->createRow();
                row.setValue(2, Variant(code));
                row.setShape(shape);
                insert.insertRow(row);
            };
            add(6001400100,
                Geometry::fromWkt("POLYGON ((-100 40, -99 40, -99 41, -100 41, -100 40))"));
            add(6001400200,
                Geometry::fromWkt("POLYGON ((-99 40, -98 40, -98 41, -99 41, -99 40))"));
            add(6001400300,
                Geometry::fromWkt("POLYGON ((-100 41, -99 41, -99 42, -100 42, -100 41))"));
            // A bow tie: its two triangles are what the repair keeps.
            add(6013400400,
                Geometry::fromWkt("POLYGON ((-99 41, -98 42, -98 41, -99 42, -99 41))"));
            add(6013400500,
                Geometry::fromWkt("POLYGON ((-90 40, -89 40, -89 41, -90 41, -90 40))"));
        }
        request.name = "Testville";
        request.boundary = {m_sources / "boundary.geojson", ""};
        request.tracts = {m_sources / "tracts", "tracts"};
        request.tractField = "TRACT_ID";
        request.aggLevel = 3;
    }

    void expectUnchanged(const std::function<void()>& command, const std::string& message)
    {
        const auto before = snapshot(m_root);
        try {
            command();
            ADD_FAILURE() << "no error for " << message;
        } catch (const PlatformError& e) {
            EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
        }
        EXPECT_EQ(snapshot(m_root), before) << message;
    }

    test::TempDir m_dir;
    fs::path m_root = m_dir.path() / "host";
    fs::path m_sources = [this] {
        fs::create_directories(m_dir.path() / "sources");
        return m_dir.path() / "sources";
    }();
    RegionRequest request;
};

TEST_F(RegionAdmin, RegionFromShapefileAndGeoJson)
{
    const RegionReport report = createRegion(m_root, request);
    EXPECT_EQ(report.number, 1);
    EXPECT_TRUE(report.current);
    EXPECT_EQ(report.tracts, 4);
    EXPECT_EQ(report.tractsOutside, 1);
    EXPECT_EQ(report.counties, 2) << "dissolved from the tract codes";
    EXPECT_EQ(report.repaired, 1);

    const HostRoot host = HostRoot::load(m_root);
    EXPECT_EQ(host.currentRegion(), "Testville");
    const fs::path folder(host.regionFolder("Testville"));
    Workspace bounds = Workspace::open(folder / "RegionBndry.mdb", true);
    auto tracts = bounds.openFeatureClass("hztract");
    EXPECT_EQ(tracts->fields().field(0).type, FieldType::OID);
    EXPECT_EQ(tracts->fields().field(1).type, FieldType::Geometry);
    EXPECT_EQ(tracts->findField("Tract"), 2);
    EXPECT_EQ(tracts->spatialReference().name(), "GCS_North_American_1983");
    std::map<std::string, Geometry> shapes;
    {
        Cursor cursor = tracts->search();
        Row row;
        while (cursor.next(row)) {
            shapes[row.value(2).toString()] = row.shape();
            EXPECT_TRUE(row.shape().isValid());
        }
    }
    EXPECT_EQ(shapes.size(), 4u);
    EXPECT_TRUE(shapes.count("06001400100")) << "codes padded back to 11 digits";
    EXPECT_NEAR(shapes["06013400400"].area(), 0.5, 1e-12) << "the bow tie's two triangles";

    auto boundary = bounds.openFeatureClass("hzboundary");
    EXPECT_EQ(boundary->rowCount(), 1);
    EXPECT_NEAR(boundary->search().next()->shape().area(), 4.0 - 0.04, 1e-9);
    EXPECT_EQ(
        bounds.openFeatureClass("hzCounty")->rowCount(QueryFilter::where("CountyFips = '06013'")),
        1);
    EXPECT_EQ(bounds.openFeatureClass("eqTract")->rowCount(), 4);
    EXPECT_EQ(bounds.openFeatureClass("eqsrsoil")->rowCount(), 0);

    platform::tabular::SqliteDatabase db((folder / "region.sqlite").string(),
                                         platform::tabular::SqliteDatabase::Mode::ReadOnly);
    platform::tabular::SqliteDatabase::Statement centroids(
        db, "SELECT Tract, CenLat, CenLongit FROM hztract");
    int count = 0;
    while (centroids.step()) {
        ++count;
        const Geometry centre = Geometry::point({centroids.real(2), centroids.real(1)});
        EXPECT_TRUE(shapes[centroids.text(0)].contains(centre)) << centroids.text(0);
    }
    EXPECT_EQ(count, 4);
    const RegionDatabase settings(folder / "region.sqlite");
    EXPECT_EQ(settings.readInt32("General", "AggLevel"), 3);
    EXPECT_EQ(settings.readInt32("General", "CurrentRegionID"), 1);
    EXPECT_EQ(settings.readString("GENERAL", "EorW"), "E");
    EXPECT_EQ(settings.readInt32("PESH", "ScenarioID"), 0);

    // Every class of the region's databases has the catalogue's fields in the catalogue's order.
    for (const auto& schema : hostDatabases()) {
        if (schema.folder != HostFolder::Region) {
            continue;
        }
        Workspace database = Workspace::open(folder / schema.fileName, true);
        for (const auto& expected : schema.classes) {
            if (!database.exists(expected.name)) {
                continue; // inventory arrives with `inventory add`
            }
            auto table = database.openTable(expected.name);
            const int first = expected.hasShape() ? 2 : 1;
            ASSERT_EQ(table->fields().count(), first + static_cast<int>(expected.fields.size()))
                << expected.name;
            for (std::size_t i = 0; i < expected.fields.size(); ++i) {
                EXPECT_EQ(table->fields().field(first + static_cast<int>(i)).name,
                          expected.fields[i].name)
                    << expected.name;
            }
        }
    }

    request.name = "Second";
    request.makeCurrent = false;
    EXPECT_EQ(createRegion(m_root, request).number, 2);
    EXPECT_EQ(HostRoot::load(m_root).currentRegion(), "Testville");
}

TEST_F(RegionAdmin, MapsAreRegisteredWithTheCodesValueField)
{
    createRegion(m_root, request);
    writeGeoJson(m_sources / "water.geojson", {{R"("GW_DEPTH": 12.5)", square(-100, 40, 1)},
                                               {R"("GW_DEPTH": "deep")", square(-99, 40, 1)}});
    MapRequest water{"", "watr", {m_sources / "water.geojson", ""}, "GW_DEPTH", std::nullopt};
    const MapReport report = registerMap(m_root, water);
    EXPECT_EQ(report.code, "WATR");
    EXPECT_EQ(report.polygons, 2);
    EXPECT_EQ(report.emptyValues, 1) << "a text where a depth belongs";

    MapRequest zones{"Testville", "LIQF", {m_sources / "boundary.geojson", ""}, "", "5"};
    EXPECT_EQ(registerMap(m_root, zones).polygons, 1);

    // Polygons and multipolygons in one file are one map.
    std::ofstream(m_sources / "land.geojson") << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"Type": 3}, "geometry": {"type": "Polygon",
         "coordinates": [)" << square(-100, 40, 1)
                                              << R"(]}},
        {"type": "Feature", "properties": {"Type": 7}, "geometry": {"type": "MultiPolygon",
         "coordinates": [[)" << square(-99, 40, 1)
                                              << "],[" << square(-99, 41, 0.5) << "]]}}]}";
    MapRequest land{"", "LAND", {m_sources / "land.geojson", ""}, "", std::nullopt};
    EXPECT_EQ(registerMap(m_root, land).polygons, 2);

    LocalUserMapRegistry registry(m_root);
    std::string file;
    std::string className;
    std::string folder;
    registry.GetUserMap("WATR", file, className, folder);
    ASSERT_FALSE(file.empty());
    EXPECT_EQ(folder.back(), '/');
    auto map = Workspace::open(folder + file, true).openFeatureClass(className);
    EXPECT_EQ(map->fields().field(map->findField("Type")).type, FieldType::Double);
    EXPECT_DOUBLE_EQ(map->search().next()->value(map->findField("Type")).toDouble(), 12.5);
    registry.GetUserMap("LIQF", file, className, folder);
    map = Workspace::open(folder + file, true).openFeatureClass(className);
    EXPECT_EQ(map->search().next()->value(map->findField("Type")).toInt32(), 5)
        << "the highest category is one";

    registry.GetUserMap("SOIL", file, className, folder);
    EXPECT_EQ(file + className + folder, "") << "no map: three empty strings";
    registry.MarkMapProcessed("WATR");
    registry.MarkMapProcessed("SOIL");
    EXPECT_FALSE(
        RegionDatabase(HostRoot::load(m_root).regionDatabasePath("Testville")).userMap("SOIL"))
        << "a code without a map stays without one";
    EXPECT_TRUE(RegionDatabase(HostRoot::load(m_root).regionDatabasePath("Testville"))
                    .userMap("WATR")
                    ->processed);

    MapRequest soil{"", "SOIL", {m_sources / "boundary.geojson", ""}, "", "c"};
    registerMap(m_root, soil);
    registry.GetUserMap("SOIL", file, className, folder);
    map = Workspace::open(folder + file, true).openFeatureClass(className);
    EXPECT_EQ(map->search().next()->value(map->findField("Type")).toString(), "C");
}

TEST_F(RegionAdmin, InventoryIsCataloguedAndLoadedInsideTheRegion)
{
    createRegion(m_root, request);
    // A footprint polygon becomes its interior point; the last site is outside every tract.
    std::ofstream(m_sources / "schools.geojson") << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"SCHOOL_NO": "S-1", "Name": "North"},
         "geometry": {"type": "Point", "coordinates": [-99.5, 41.5]}},
        {"type": "Feature", "properties": {"SCHOOL_NO": "S-2", "Name": "Footprint"},
         "geometry": {"type": "Polygon", "coordinates": [[[-98.6,40.2],[-98.4,40.2],[-98.4,40.4],[-98.6,40.4],[-98.6,40.2]]]}},
        {"type": "Feature", "properties": {"SCHOOL_NO": "S-3", "Name": "Away"},
         "geometry": {"type": "Point", "coordinates": [-80, 30]}}]})";
    InventoryRequest schools{
        "", "hzSchool", 'P', "", VectorSource{m_sources / "schools.geojson", ""}, "SCHOOL_NO"};
    const InventoryReport report = addInventory(m_root, schools);
    EXPECT_EQ(report.database, "ef.mdb");
    EXPECT_EQ(report.loaded, 2);
    EXPECT_EQ(report.outside, 1);

    const fs::path folder(HostRoot::load(m_root).regionFolder("Testville"));
    auto table = Workspace::open(folder / "ef.mdb", true).openFeatureClass("hzSchool");
    EXPECT_EQ(table->findField("SchoolId"), 2);
    Cursor cursor = table->search();
    Row row;
    std::map<std::string, std::string> tractOf;
    while (cursor.next(row)) {
        tractOf[row.value(2).toString()] = row.value(table->findField("Tract")).toString();
        EXPECT_DOUBLE_EQ(row.value(table->findField("Latitude")).toDouble(),
                         row.shape().firstPoint().y);
    }
    EXPECT_EQ(tractOf,
              (std::map<std::string, std::string>{{"S-1", "06001400300"}, {"S-2", "06001400200"}}));

    InventoryRequest roads{"", "hzHighwaySegment", 'L', "", std::nullopt, ""};
    EXPECT_EQ(addInventory(m_root, roads).hazardTable, "EqHighwaySegmenthft");
    InventoryRequest shelters{"", "hzCoolingCenter", 'p', "", std::nullopt, ""};
    EXPECT_EQ(addInventory(m_root, shelters).database, "uds.mdb");
    InventoryRequest levees{"", "hzLevees", 'L', "", std::nullopt, ""};
    EXPECT_EQ(addInventory(m_root, levees).hazardTable, "");
    EXPECT_GT(LocalSymbolCatalog(m_root).OpenSymbol("hzCoolingCenter"), 0)
        << "a class of the user's own gets a symbol";

    LocalInventoryCatalogService catalogue(m_root);
    Variant names;
    Variant databases;
    Variant kinds;
    catalogue.GetInventoryClasses(names, databases, kinds);
    std::vector<std::string> listed;
    for (const auto& name : names.array().elements()) {
        listed.push_back(name.toString());
    }
    EXPECT_EQ(listed, (std::vector<std::string>{"eqTract", "eqGrid", "hzSchool", "hzHighwaySegment",
                                                "hzCoolingCenter"}))
        << "the levees have no hazard table to keep site conditions in";
    EXPECT_EQ(catalogue.GetHazardTableName("hzHighwaySegment"), "EqHighwaySegmenthft");
    EXPECT_EQ(catalogue.GetDatabaseName("HZSCHOOL"), "ef.mdb");
    EXPECT_THROW(catalogue.GetDatabaseName("hzNothing"), PlatformError);
}

TEST_F(RegionAdmin, BadInputChangesNothing)
{
    std::ofstream(m_sources / "points.geojson")
        << R"({"type": "FeatureCollection", "features": [{"type": "Feature", "properties": {},
        "geometry": {"type": "Point", "coordinates": [-99, 41]}}]})";
    std::ofstream(m_sources / "garbage.gpkg") << "not a database";

    RegionRequest bad = request;
    bad.boundary = {m_sources / "points.geojson", ""};
    expectUnchanged([&] { createRegion(m_root, bad); }, "must hold polygons");
    bad = request;
    bad.tractField = "";
    expectUnchanged([&] { createRegion(m_root, bad); }, "no tracts code field");
    bad.tracts = {m_sources / "garbage.gpkg", ""};
    expectUnchanged([&] { createRegion(m_root, bad); }, "garbage.gpkg");
    bad = request;
    bad.tracts = {m_sources / "missing.shp", ""};
    expectUnchanged([&] { createRegion(m_root, bad); }, "does not exist");

    createRegion(m_root, request);
    MapRequest map{"", "QUAK", {m_sources / "boundary.geojson", ""}, "", "3"};
    expectUnchanged([&] { registerMap(m_root, map); }, "not a hazard code");
    map.code = "LIQF";
    for (const char* value : {"high", "9", "-1", "2.5"}) {
        map.value = value;
        expectUnchanged(
            [&] { registerMap(m_root, map); },
            "\"" + std::string(value) +
                "\" is not a value of LIQF (liquefaction susceptibility category, 0 to 5)");
    }
    map.code = "LAND";
    map.value = "11";
    expectUnchanged([&] { registerMap(m_root, map); }, "is not a value of LAND");
    map.code = "SOIL";
    for (const char* value : {"Q", "CD", ""}) {
        map.value = value;
        expectUnchanged([&] { registerMap(m_root, map); }, "is not a value of SOIL");
    }
    map.code = "LIQF";
    map.value.reset();
    map.valueField = "SUSC";
    expectUnchanged([&] { registerMap(m_root, map); }, "no value field SUSC");
    fs::remove(m_sources / "tracts" / "tracts.dbf");
    map = {"", "LIQF", {m_sources / "tracts" / "tracts.shp", ""}, "", "3"};
    expectUnchanged([&] { registerMap(m_root, map); }, "tracts.dbf is missing");
    InventoryRequest inventory{
        "", "hzSchool", 'P', "", VectorSource{m_sources / "garbage.gpkg", ""}, ""};
    expectUnchanged([&] { addInventory(m_root, inventory); }, "garbage.gpkg");
    inventory.from.reset();
    inventory.database = "nowhere.mdb";
    expectUnchanged([&] { addInventory(m_root, inventory); }, "not an inventory database");
}

TEST_F(RegionAdmin, AnInventoryTheRegionDatabaseRefusesLeavesNothingBehind)
{
    createRegion(m_root, request);
    std::ofstream(m_sources / "schools.geojson") << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"SCHOOL_NO": "S-1"},
         "geometry": {"type": "Point", "coordinates": [-99.5, 41.5]}}]})";
    const InventoryRequest schools{
        "", "hzSchool", 'P', "", VectorSource{m_sources / "schools.geojson", ""}, "SCHOOL_NO"};
    const HostRoot host = HostRoot::load(m_root);
    const fs::path folder(host.regionFolder("Testville"));
    platform::tabular::SqliteDatabase region(host.regionDatabasePath("Testville").string(),
                                             platform::tabular::SqliteDatabase::Mode::ReadWrite);
    // The catalogue entry is the last the region database is given: the classes are loaded and
    // the server tables filled by then.
    region.execute("CREATE TRIGGER Refuse BEFORE INSERT ON InventoryClasses "
                   "BEGIN SELECT RAISE(ABORT, 'the catalogue is closed'); END");
    EXPECT_THROW(addInventory(m_root, schools), PlatformError);

    EXPECT_FALSE(Workspace::open(folder / "ef.mdb", true).exists("hzSchool"));
    EXPECT_FALSE(RegionDatabase(host.regionDatabasePath("Testville")).inventoryClass("hzSchool"));
    const auto serverTables = inventoryServerTables("hzSchool", 'P');
    ASSERT_FALSE(serverTables.empty());
    for (const auto& table : serverTables) {
        platform::tabular::SqliteDatabase::Statement find(
            region, "SELECT 1 FROM sqlite_master WHERE name = ?1 COLLATE NOCASE");
        EXPECT_FALSE(find.bind(1, table.name).step()) << table.name << " was left behind";
    }
    region.execute("DROP TRIGGER Refuse");
    EXPECT_EQ(addInventory(m_root, schools).loaded, 1) << "the failed attempt is not in the way";
}

// San Francisco from census files: tracts, the county as boundary (with its islands), the Bay
// Area liquefaction zones (one invalid multipolygon) and the Bay Area hospitals.
TEST(RegionFromRealData, SanFrancisco)
{
    const fs::path data = test::sharedData();
    if (!fs::exists(data / "tracts/sf_tracts_2010_clipped.geojson")) {
        GTEST_SKIP() << "no real data in " << data;
    }
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    initHost(root);
    const RegionReport region = test::createSanFranciscoRegion(root, dir.path());
    EXPECT_GT(region.tracts, 190);
    EXPECT_EQ(region.counties, 1);

    MapRequest zones{"",
                     "LIQF",
                     {data / "hazard-zones/bayarea_LiquefactionSusceptibility.geojson", ""},
                     "",
                     "3"};
    const MapReport map = registerMap(root, zones);
    EXPECT_EQ(map.repaired, 1) << "the dissolved zones self-intersect";
    auto copy = Workspace::open(map.database, true).openFeatureClass(map.className);
    Cursor cursor = copy->search();
    Row row;
    while (cursor.next(row)) {
        EXPECT_TRUE(row.shape().isValid());
    }

    InventoryRequest hospitals{"",
                               "hzCareFlty",
                               'P',
                               "",
                               VectorSource{data / "facilities/bayarea_hospitals_spc.geojson", ""},
                               "id"};
    const InventoryReport inventory = addInventory(root, hospitals);
    EXPECT_GT(inventory.loaded, 5);
    EXPECT_GT(inventory.outside, 30) << "most Bay Area hospitals lie outside the city";
    EXPECT_EQ(inventory.loaded + inventory.outside, 83);
}

} // namespace
} // namespace brevant::host::local
