#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/ValueTransfer.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::platform::geodatabase {
namespace {

using geometry::Geometry;
using geometry::ShapeType;

class Geoprocessing : public ::testing::Test {
protected:
    void SetUp() override { m_workspace = Workspace::createGeoPackage(m_dir.path() / "w.mdb"); }

    std::shared_ptr<FeatureClass> polygons(const std::string& name, const std::string& field,
                                           const std::vector<std::pair<std::string, std::string>>&
                                               valueAndWkt)
    {
        auto table = m_workspace->createFeatureClass(
            name, Fields({{field, FieldType::String, 10, {}}}), ShapeType::Polygon);
        InsertCursor insert = table->insert();
        for (const auto& [value, wkt] : valueAndWkt) {
            Row row = table->createRow();
            row.setValue(2, value);
            row.setShape(Geometry::fromWkt(wkt));
            insert.insertRow(row);
        }
        insert.flush();
        return table;
    }

    static std::map<std::string, double> areaByValue(const FeatureClass& table, int field)
    {
        std::map<std::string, double> areas;
        Cursor cursor = table.search();
        Row row;
        while (cursor.next(row)) {
            areas[row.value(field).toString()] += row.shape().area();
        }
        return areas;
    }

    test::TempDir m_dir;
    std::optional<Workspace> m_workspace;
};

TEST_F(Geoprocessing, ClipKeepsInsideCutsCrossingDropsOutside)
{
    auto soil = polygons("soil", "Type", {{"inside", "POLYGON ((1 1, 2 1, 2 2, 1 2, 1 1))"},
                                          {"crossing", "POLYGON ((3 1, 6 1, 6 2, 3 2, 3 1))"},
                                          {"outside", "POLYGON ((7 7, 8 7, 8 8, 7 8, 7 7))"}});
    auto region = polygons("hzboundary", "Name",
                           {{"a", "POLYGON ((0 0, 4 0, 4 4, 0 4, 0 0), "
                                  "(0.5 2.5, 0.8 2.5, 0.8 2.8, 0.5 2.8, 0.5 2.5))"},
                            {"b", "POLYGON ((4 0, 5 0, 5 4, 4 4, 4 0))"}});
    auto clipped =
        Geoprocessor::Clip(*soil, *region, OutputDescription{*m_workspace, "eqsrsoil", "Shape"});

    EXPECT_EQ(clipped->rowCount(), 2);
    EXPECT_EQ(clipped->fields().count(), 3) << "input attributes only";
    const auto areas = areaByValue(*clipped, clipped->findField("Type"));
    EXPECT_DOUBLE_EQ(areas.at("inside"), 1.0);
    EXPECT_DOUBLE_EQ(areas.at("crossing"), 2.0) << "cut by the union of both clip polygons";
    EXPECT_EQ(areas.count("outside"), 0u);
}

TEST_F(Geoprocessing, IntersectCarriesAttributesOfBothSides)
{
    auto flood = polygons("flood", "Zone", {{"AE", "POLYGON ((0 0, 3 0, 3 1, 0 1, 0 0))"}});
    auto tracts = polygons("hztract", "Tract",
                           {{"06001400100", "POLYGON ((0 0, 1 0, 1 2, 0 2, 0 0))"},
                            {"06001400200", "POLYGON ((1 0, 2 0, 2 2, 1 2, 1 0))"},
                            {"06001400300", "POLYGON ((5 5, 6 5, 6 6, 5 6, 5 5))"}});
    auto result = Geoprocessor::Intersect(*flood, *tracts,
                                          OutputDescription{*m_workspace, "srdamind", "Shape"});
    ASSERT_EQ(result->rowCount(), 2);
    const int zone = result->findField("Zone");
    const int tract = result->findField("Tract");
    ASSERT_GE(zone, 2);
    ASSERT_GE(tract, 2);
    EXPECT_GE(result->findField("FID_hztract"), 2);
    Cursor cursor = result->search();
    Row row;
    std::vector<std::string> tractCodes;
    while (cursor.next(row)) {
        EXPECT_EQ(row.value(zone).toString(), "AE");
        EXPECT_DOUBLE_EQ(row.shape().area(), 1.0);
        tractCodes.push_back(row.value(tract).toString());
    }
    EXPECT_EQ(tractCodes, (std::vector<std::string>{"06001400100", "06001400200"}));
}

TEST_F(Geoprocessing, TransferContainmentEdgeAndNearest)
{
    auto soil = polygons("soil", "Type", {{"A", "POLYGON ((0 0, 1 0, 1 1, 0 1, 0 0))"},
                                          {"B", "POLYGON ((2 0, 3 0, 3 1, 2 1, 2 0))"}});
    auto sites = m_workspace->createFeatureClass(
        "hzSchool", Fields({{"stype", FieldType::String, 1, {}}}), ShapeType::Point);
    {
        InsertCursor insert = sites->insert();
        for (const auto& [x, y] : std::vector<std::pair<double, double>>{
                 {0.5, 0.5},   // inside A
                 {1.0, 0.5},   // on A's edge
                 {1.6, 0.5},   // in the gap, nearer B
                 {9.0, 9.0}}) { // far away, nearest B
            Row row = sites->createRow();
            row.setValue(2, "D");
            row.setShape(Geometry::point({x, y}));
            insert.insertRow(row);
        }
    }
    auto values = [&] {
        std::vector<std::string> out;
        Cursor cursor = sites->search();
        Row row;
        while (cursor.next(row)) {
            out.push_back(row.value(2).toString());
        }
        return out;
    };

    const auto strict = transferValues(*sites, *soil, 2, 2, true);
    EXPECT_EQ(values(), (std::vector<std::string>{"A", "A", "D", "D"}));
    EXPECT_EQ(strict.contained, 2);
    EXPECT_EQ(strict.unmatched, 2);

    const auto loose = transferValues(*sites, *soil, 2, 2, false);
    EXPECT_EQ(values(), (std::vector<std::string>{"A", "A", "B", "B"}));
    EXPECT_EQ(loose.nearest, 2);
}

TEST_F(Geoprocessing, TransferLooksOnlyAtSourcesWhoseBoxMeetsTheTargets)
{
    // B is nearer to the second site, but its box lies east of every site.
    auto soil = polygons("soil", "Type", {{"A", "POLYGON ((-5 -5, 0.2 -5, 0.2 0.2, -5 0.2, -5 -5))"},
                                          {"B", "POLYGON ((1.5 0.4, 2.5 0.4, 2.5 0.6, 1.5 0.6, 1.5 0.4))"}});
    auto sites = m_workspace->createFeatureClass(
        "hzSchool", Fields({{"stype", FieldType::String, 1, {}}}), ShapeType::Point);
    {
        InsertCursor insert = sites->insert();
        for (const auto& [x, y] : std::vector<std::pair<double, double>>{{0.0, 0.0}, {1.0, 0.5}}) {
            Row row = sites->createRow();
            row.setValue(2, "D");
            row.setShape(Geometry::point({x, y}));
            insert.insertRow(row);
        }
    }
    const auto counts = transferValues(*sites, *soil, 2, 2, false);
    EXPECT_EQ(counts.contained, 1);
    EXPECT_EQ(counts.nearest, 1);
    Cursor cursor = sites->search();
    Row row;
    std::vector<std::string> values;
    while (cursor.next(row)) {
        values.push_back(row.value(2).toString());
    }
    EXPECT_EQ(values, (std::vector<std::string>{"A", "A"}));
}

} // namespace
} // namespace brevant::platform::geodatabase
