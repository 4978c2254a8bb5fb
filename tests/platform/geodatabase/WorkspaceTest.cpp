#include "platform/automation/AutomationError.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace brevant::platform::geodatabase {
namespace {

using automation::Variant;
using geometry::Geometry;
using geometry::ShapeType;
namespace fs = std::filesystem;

Fields tractFields()
{
    return Fields({{"Tract", FieldType::String, 11, "Census tract"},
                   {"Population", FieldType::Integer, 0, {}},
                   {"lqfsuscat", FieldType::SmallInteger, 0, {}},
                   {"w_depth", FieldType::Double, 0, {}}});
}

/// Adds tracts with a point each: (code, population, x).
void addTracts(Table& table, const std::vector<std::tuple<std::string, int, double>>& rows)
{
    InsertCursor insert = table.insert();
    for (const auto& [code, population, x] : rows) {
        Row row = table.createRow();
        row.setValue(table.findField("Tract"), code);
        row.setValue(table.findField("Population"), int32_t{population});
        row.setShape(Geometry::point({x, 37.5}));
        insert.insertRow(row);
    }
    insert.flush();
}

std::vector<std::string> tractsMatching(const Table& table, const std::string& clause)
{
    std::vector<std::string> codes;
    Cursor cursor = table.search(QueryFilter::where(clause));
    Row row;
    while (cursor.next(row)) {
        codes.push_back(row.value(table.findField("TRACT")).toString());
    }
    return codes;
}

class Storage : public ::testing::TestWithParam<Workspace::Kind> {
protected:
    Workspace create()
    {
        if (GetParam() == Workspace::Kind::GeoPackage) {
            return Workspace::createGeoPackage(m_dir.path() / "RegionBndry.mdb");
        }
        return Workspace::openShapefileFolder(m_dir.path() / "shapes");
    }

    test::TempDir m_dir;
};

TEST_P(Storage, FieldOrderIsIdentifierShapeThenAttributes)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    const Fields& fields = tracts->fields();
    ASSERT_EQ(fields.count(), 6);
    EXPECT_EQ(fields.field(0).type, FieldType::OID);
    EXPECT_EQ(fields.field(1).type, FieldType::Geometry);
    EXPECT_EQ(fields.field(2).name, "Tract");
    EXPECT_EQ(fields.field(4).type, FieldType::SmallInteger);
    EXPECT_EQ(fields.field(5).type, FieldType::Double);
    EXPECT_EQ(tracts->findField("tract"), 2);
    EXPECT_EQ(tracts->findField("missing"), -1);
    EXPECT_EQ(tracts->shapeType(), ShapeType::Point);
    EXPECT_EQ(tracts->spatialReference().name(), "GCS_North_American_1983");
    if (GetParam() == Workspace::Kind::GeoPackage) {
        EXPECT_EQ(fields.field(0).name, "OBJECTID");
        EXPECT_EQ(fields.field(1).name, "Shape");
        EXPECT_EQ(fields.field(2).alias(), "Census tract");
    }
}

TEST_P(Storage, InsertSearchUpdateDelete)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    addTracts(*tracts, {{"06001400100", 10, -122.0}, {"06001400200", 20, -121.0},
                        {"06013300100", 30, -120.0}});
    EXPECT_EQ(tracts->rowCount(), 3);
    EXPECT_EQ(tracts->rowCount(QueryFilter::where("[Population] > 15")), 2);

    {
        Cursor cursor = tracts->update(QueryFilter::where("Left([Tract], 5) = '06001'"));
        Row row;
        while (cursor.next(row)) {
            row.setValue(tracts->findField("w_depth"), 5.0);
            cursor.updateRow(row);
        }
    }
    EXPECT_EQ(tracts->rowCount(QueryFilter::where("[w_depth] = 5")), 2);
    EXPECT_EQ(tracts->deleteSearchedRows(QueryFilter::where("[Tract] = '06013300100'")), 1);
    EXPECT_EQ(tracts->rowCount(), 2);

    const auto envelope = tracts->extent();
    EXPECT_DOUBLE_EQ(envelope.xmin(), -122.0);
    EXPECT_DOUBLE_EQ(envelope.xmax(), -121.0);
}

TEST_P(Storage, CalculateSetsOneFieldWhereTheClauseSays)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    addTracts(*tracts, {{"06001400100", 10, -122.0}, {"06001400200", 20, -121.0},
                        {"06013300100", 30, -120.0}});
    const int depth = tracts->findField("w_depth");
    const int category = tracts->findField("lqfsuscat");
    // Text in, the field's own type stored, as a row would store it.
    EXPECT_EQ(tracts->calculate(depth, Variant("5.0")), 3);
    EXPECT_EQ(tracts->calculate(category, Variant("3"), QueryFilter::where("[Population] > 15")), 2);
    EXPECT_EQ(tracts->calculate(depth, Variant::null(), QueryFilter::where("[Tract] = '06013300100'")),
              1);
    EXPECT_EQ(tracts->calculate(depth, Variant(1.0), QueryFilter::where("[Population] > 99")), 0);

    const auto text = [](const Variant& v) { return v.isNull() ? "null" : v.toString(); };
    std::vector<std::string> seen;
    Cursor cursor = tracts->search();
    Row row;
    while (cursor.next(row)) {
        seen.push_back(text(row.value(2)) + " " + text(row.value(depth)) + " " +
                       text(row.value(category)));
        EXPECT_FALSE(row.shape().isNull()) << "the shape stays";
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"06001400100 5 null", "06001400200 5 3",
                                              "06013300100 null 3"}));

    // A value the field cannot hold changes nothing.
    EXPECT_THROW(tracts->calculate(category, Variant("many")), automation::AutomationError);
    EXPECT_EQ(tracts->rowCount(QueryFilter::where("[lqfsuscat] = 3")), 2);
    EXPECT_THROW(tracts->calculate(0, Variant(int32_t{1})), automation::PlatformError);
}

TEST_P(Storage, NamesAndTextCompareWithoutRegardToCase)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hzTract", tractFields(), ShapeType::Point);
    addTracts(*tracts, {{"06001ab0100", 1, 0.0}, {"06001AB0200", 2, 1.0}});
    EXPECT_TRUE(workspace.exists("HZTRACT"));
    EXPECT_EQ(workspace.openFeatureClass("hztract")->rowCount(), 2);
    EXPECT_EQ(tractsMatching(*tracts, "[TRACT] = '06001AB0100'"),
              std::vector<std::string>{"06001ab0100"});
    EXPECT_EQ(tractsMatching(*tracts, "tract In ('06001ab0200', 'x')"),
              std::vector<std::string>{"06001AB0200"});
}

TEST_P(Storage, SpatialFilterKeepsIntersectingShapes)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    addTracts(*tracts, {{"a", 1, 0.5}, {"b", 2, 3.0}, {"c", 3, 1.0}});
    const auto box = Geometry::fromWkt("POLYGON ((0 37, 1 37, 1 38, 0 38, 0 37))");
    Cursor cursor = tracts->search(QueryFilter::spatial(box));
    std::vector<std::string> found;
    Row row;
    while (cursor.next(row)) {
        found.push_back(row.value(2).toString());
    }
    EXPECT_EQ(found, (std::vector<std::string>{"a", "c"})) << "the edge counts as intersecting";
}

TEST_P(Storage, UnknownFieldInClauseNamesIt)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    try {
        tracts->rowCount(QueryFilter::where("[CountyFips] = '06001'"));
        FAIL();
    } catch (const automation::PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("CountyFips"), std::string::npos) << e.what();
    }
}

TEST_P(Storage, AddFieldAndDeleteDataset)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Polygon);
    tracts->addField({"stype", FieldType::String, 1, {}});
    EXPECT_EQ(tracts->findField("stype"), 6);
    EXPECT_THROW(tracts->addField({"STYPE", FieldType::String, 1, {}}),
                 automation::PlatformError);
    EXPECT_TRUE(workspace.deleteDataset("HZTRACT"));
    EXPECT_FALSE(workspace.exists("hztract"));
    EXPECT_FALSE(workspace.deleteDataset("hztract"));
    EXPECT_THROW(tracts->rowCount(), automation::PlatformError) << "the class is gone";
}

TEST_P(Storage, RowsStoredBeforeAFailureStayChanged)
{
    Workspace workspace = create();
    auto tracts = workspace.createFeatureClass("hztract", tractFields(), ShapeType::Point);
    addTracts(*tracts, {{"a", 1, 0.0}, {"b", 2, 1.0}, {"c", 3, 2.0}});
    try {
        Cursor cursor = tracts->update();
        Row row;
        while (cursor.next(row)) {
            if (row.value(2).toString() == "c") {
                throw std::runtime_error("failure half-way");
            }
            row.setValue(tracts->findField("w_depth"), 9.0);
            cursor.updateRow(row);
        }
    } catch (const std::runtime_error&) {
    }
    Workspace reopened = Workspace::open(workspace.path());
    EXPECT_EQ(reopened.openFeatureClass("hztract")->rowCount(QueryFilter::where("[w_depth] = 9")),
              2);
}

INSTANTIATE_TEST_SUITE_P(GeoPackageAndShapefile, Storage,
                         ::testing::Values(Workspace::Kind::GeoPackage,
                                           Workspace::Kind::ShapefileFolder),
                         [](const auto& kind) {
                             return kind.param == Workspace::Kind::GeoPackage ? "GeoPackage"
                                                                              : "Shapefile";
                         });

TEST(WorkspaceFiles, MissingOrCorruptDatabaseIsAClearErrorAndChangesNothing)
{
    test::TempDir dir;
    try {
        Workspace::open(dir.path() / "trn.mdb");
        FAIL();
    } catch (const automation::PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("trn.mdb"), std::string::npos);
    }
    EXPECT_FALSE(fs::exists(dir.path() / "trn.mdb"));

    const fs::path corrupt = dir.path() / "util.mdb";
    std::ofstream(corrupt) << "SQLite format 3 but then nothing a database holds";
    const fs::path neighbour = dir.path() / "ef.mdb";
    Workspace::createGeoPackage(neighbour).createTable("hzSchool", tractFields());
    const auto before = fs::file_size(corrupt);
    try {
        Workspace::open(corrupt).openTable("hzSchool");
        FAIL();
    } catch (const automation::PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("util.mdb"), std::string::npos) << e.what();
        EXPECT_EQ(e.source(), "GDAL");
    }
    EXPECT_EQ(fs::file_size(corrupt), before);
    EXPECT_EQ(Workspace::open(neighbour).openTable("hzSchool")->rowCount(), 0);
}

TEST(WorkspaceFiles, GeoPackageUnderAnyNameAndMissingTables)
{
    test::TempDir dir;
    Workspace::createGeoPackage(dir.path() / "temp.mdb").createTable("RegionSelection",
                                                                      tractFields());
    Workspace reopened = Workspace::open(dir.path() / "temp.mdb");
    EXPECT_EQ(reopened.kind(), Workspace::Kind::GeoPackage);
    EXPECT_EQ(reopened.datasetNames(), std::vector<std::string>{"RegionSelection"});
    EXPECT_FALSE(reopened.openTable("RegionSelection")->hasShape());
    EXPECT_THROW(reopened.openFeatureClass("RegionSelection"), automation::PlatformError);
    try {
        reopened.openTable("HazardSelection");
        FAIL();
    } catch (const automation::PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("HazardSelection in "), std::string::npos);
    }
    EXPECT_THROW(Workspace::createGeoPackage(dir.path() / "temp.mdb"), automation::PlatformError);
}

TEST(WorkspaceFiles, ReadOnlyWorkspaceRefusesWrites)
{
    test::TempDir dir;
    Workspace::createGeoPackage(dir.path() / "a.mdb").createTable("t", tractFields());
    Workspace readOnly = Workspace::open(dir.path() / "a.mdb", true);
    auto table = readOnly.openTable("t");
    EXPECT_THROW(table->update(), automation::PlatformError);
    EXPECT_THROW(table->addField({"x", FieldType::Double, 0, {}}), automation::PlatformError);
}

TEST(WorkspaceFiles, ForeignFilesWithDegeneratePartsStillRead)
{
    // A polygon whose second part is a two-point ring, and a path whose second part is a point.
    test::TempDir dir;
    std::ofstream(dir.path() / "zones.geojson") << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"id": 1}, "geometry": {"type": "MultiPolygon",
         "coordinates": [[[[0,0],[4,0],[4,4],[0,4],[0,0]]], [[[9,9],[9,8],[9,9]]]]}},
        {"type": "Feature", "properties": {"id": 2}, "geometry": {"type": "MultiLineString",
         "coordinates": [[[0,0],[1,1]], [[5,5]]]}}]})";
    Workspace workspace = Workspace::open(dir.path() / "zones.geojson", true);
    Cursor cursor = workspace.openFeatureClass(workspace.datasetNames().front())->search();
    Row row;
    ASSERT_TRUE(cursor.next(row));
    EXPECT_DOUBLE_EQ(row.shape().area(), 16.0);
    ASSERT_TRUE(cursor.next(row));
    EXPECT_DOUBLE_EQ(row.shape().length(), std::sqrt(2.0));
}

} // namespace
} // namespace brevant::platform::geodatabase
