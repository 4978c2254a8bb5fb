#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/FeatureDataConverter.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::platform::geodatabase {
namespace {

using automation::Variant;
using geometry::Geometry;
using geometry::ShapeType;

TEST(FieldChecker, ShapefileNamesAreShortenedCleanedAndKeptUnique)
{
    const Fields fields({{"OBJECTID", FieldType::OID, 0, {}},
                         {"Shape", FieldType::Geometry, 0, {}},
                         {"OccupancyClass", FieldType::String, 0, {}},
                         {"OccupancyCode", FieldType::String, 5, {}},
                         {"2ndFloor", FieldType::Integer, 0, {}},
                         {"w depth", FieldType::Double, 0, {}},
                         {"Tract", FieldType::String, 11, {}}});
    const FieldCheck check = checkFields(fields, Workspace::Kind::ShapefileFolder);
    std::vector<std::string> names;
    for (const Field& field : check.fields.all()) {
        names.push_back(field.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"OBJECTID", "Shape", "OccupancyC", "Occupanc_1",
                                               "F2ndFloor", "w_depth", "Tract"}));
    ASSERT_EQ(check.renamed.size(), 4u);
    EXPECT_EQ(check.renamed[0].index, 2);
    EXPECT_EQ(check.renamed[0].from, "OccupancyClass");
    EXPECT_EQ(check.fields.field(2).length, 254) << "unbounded text gets the shapefile limit";

    const FieldCheck geoPackage = checkFields(fields, Workspace::Kind::GeoPackage);
    EXPECT_TRUE(geoPackage.renamed.empty());
}

class Conversion : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_source = std::make_unique<Workspace>(
            Workspace::createGeoPackage(m_dir.path() / "huStormTrack.mdb"));
        m_tracks = m_source->createFeatureClass(
            "DeterministicStormTracks",
            Fields({{"huScenarioName", FieldType::String, 40, {}},
                    {"MaxWindSpeed", FieldType::Double, 0, {}}}),
            ShapeType::Polyline);
        InsertCursor insert = m_tracks->insert();
        const std::vector<std::pair<std::string, bool>> tracks{
            {"Andrew", true}, {"Hugo", true}, {"Andrew", false}, {"Iniki", true}};
        double speed = 100;
        for (const auto& [name, withShape] : tracks) {
            Row row = m_tracks->createRow();
            row.setValue(2, name);
            row.setValue(3, speed += 10);
            if (withShape) {
                row.setShape(Geometry::fromWkt("LINESTRING (-80 25, -81 26, -82 26.5)"));
            }
            insert.insertRow(row);
        }
    }

    test::TempDir m_dir;
    std::unique_ptr<Workspace> m_source;
    std::shared_ptr<FeatureClass> m_tracks;
};

TEST_F(Conversion, CopiesSelectedFeaturesToAShapefileWithCheckedNames)
{
    Workspace shapes = Workspace::openShapefileFolder(m_dir.path() / "Demo");
    const auto result = convertFeatureClass(
        *m_tracks, QueryFilter::where("huscenarioName = 'andrew'"), shapes, "eqHuStorm");
    EXPECT_EQ(result.converted, 1);
    ASSERT_EQ(result.invalid.size(), 1u) << "the Andrew record without a shape";
    EXPECT_EQ(result.invalid[0].oid, 3);
    ASSERT_EQ(result.renamed.size(), 2u);
    EXPECT_EQ(result.renamed[0].to, "huScenario");
    EXPECT_EQ(result.renamed[1].to, "MaxWindSpe");

    Workspace reopened = Workspace::open(m_dir.path() / "Demo");
    auto storm = reopened.openFeatureClass("eqHuStorm");
    EXPECT_EQ(storm->shapeType(), ShapeType::Polyline);
    Cursor cursor = storm->search();
    Row row;
    ASSERT_TRUE(cursor.next(row));
    EXPECT_EQ(row.value(storm->findField("huScenario")).toString(), "Andrew");
    EXPECT_DOUBLE_EQ(row.value(storm->findField("MaxWindSpe")).toDouble(), 110.0);
    EXPECT_EQ(row.shape().pointCount(), 3u);

    EXPECT_THROW(convertFeatureClass(*m_tracks, {}, shapes, "eqHuStorm"),
                 automation::PlatformError)
        << "an existing output is not overwritten";
}

TEST_F(Conversion, RelatesAndLeftOuterJoinsAServerTable)
{
    auto sites = m_source->createFeatureClass(
        "hzSchool", Fields({{"SchoolId", FieldType::String, 8, {}}}), ShapeType::Point);
    {
        InsertCursor insert = sites->insert();
        for (const char* id : {"CA000001", "CA000002", "CA000003"}) {
            Row row = sites->createRow();
            row.setValue(2, id);
            row.setShape(Geometry::point({-120, 37}));
            insert.insertRow(row);
        }
    }
    Workspace server = Workspace::createGeoPackage(m_dir.path() / "region.sqlite");
    auto results = server.createTable(
        "eqSchool", Fields({{"SchoolId", FieldType::String, 8, {}},
                            {"PGA", FieldType::Double, 0, {}}}));
    {
        InsertCursor insert = results->insert();
        for (const auto& [id, pga] : std::vector<std::pair<std::string, double>>{
                 {"CA000001", 0.3}, {"CA000003", 0.1}, {"CA000003", 0.2}}) {
            Row row = results->createRow();
            row.setValue(1, id);
            row.setValue(2, pga);
            insert.insertRow(row);
        }
    }

    auto relate = std::make_shared<RelationshipClass>(RelationshipClass::Definition{
        "SourceData", results, "SchoolId", sites, "SchoolId", "attribute data", "attribute data",
        Cardinality::OneToMany});
    Row third = *sites->row(3);
    EXPECT_EQ(relate->relatedOrigins(third).size(), 2u);
    EXPECT_TRUE(relate->relatedOrigins(*sites->row(2)).empty());

    const JoinedTable joined(relate, JoinedTable::Kind::LeftOuter);
    const int pga = joined.findField("eqSchool.PGA");
    ASSERT_GE(pga, 0);
    EXPECT_EQ(joined.findField("pga"), pga);
    const auto rows = joined.rows();
    ASSERT_EQ(rows.size(), 3u) << "every feature stays";
    EXPECT_DOUBLE_EQ(rows[0].value(pga).toDouble(), 0.3);
    EXPECT_TRUE(rows[1].value(pga).isNull());
    EXPECT_DOUBLE_EQ(rows[2].value(pga).toDouble(), 0.1) << "the first related row";
    EXPECT_EQ(JoinedTable(relate, JoinedTable::Kind::Inner).rows().size(), 2u);

    EXPECT_THROW(RelationshipClass({"SourceData", results, "Missing", sites, "SchoolId", {}, {},
                                    Cardinality::OneToMany}),
                 automation::PlatformError);
}

} // namespace
} // namespace brevant::platform::geodatabase
