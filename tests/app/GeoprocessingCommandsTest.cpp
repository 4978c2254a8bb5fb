#include "app/GeoprocessingCommands.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/FullDisk.h"
#include "support/HostFixture.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace brevant::app {
namespace {

using platform::geodatabase::Cursor;
using platform::geodatabase::FieldType;
using platform::geodatabase::Fields;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::ShapeType;

// Two hazard squares side by side with a gap, and three sites: inside the first, in the gap
// nearer the second, and far outside.
class GeoprocessingCommands : public ::testing::Test {
protected:
    void SetUp() override
    {
        Workspace data = Workspace::createGeoPackage(path("data.gpkg"));
        auto hazard = data.createFeatureClass(
            "hazard", Fields({{"type", FieldType::String, 8, {}}}), ShapeType::Polygon);
        add(*hazard, "A", "POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0))");
        add(*hazard, "B", "POLYGON ((20 0, 30 0, 30 10, 20 10, 20 0))");
        auto sites = data.createFeatureClass(
            "sites", Fields({{"type", FieldType::String, 8, {}}}), ShapeType::Point);
        add(*sites, "", "POINT (5 5)");
        add(*sites, "", "POINT (18 5)");
        add(*sites, "", "POINT (100 100)");
    }

    static void add(platform::geodatabase::FeatureClass& table, const std::string& value,
                    const std::string& wkt)
    {
        InsertCursor insert = table.insert();
        Row row = table.createRow();
        row.setValue(2, value);
        row.setShape(Geometry::fromWkt(wkt));
        insert.insertRow(row);
    }

    std::string path(const std::string& name) const { return (m_dir.path() / name).string(); }

    int run(int (*command)(const std::vector<std::string>&, std::ostream&, std::ostream&),
            std::vector<std::string> args)
    {
        m_out.str({});
        m_err.str({});
        return command(args, m_out, m_err);
    }

    std::vector<std::string> values(const std::string& source, const std::string& layer) const
    {
        Workspace workspace = Workspace::open(path(source), true);
        auto table = workspace.openFeatureClass(layer);
        std::vector<std::string> found;
        Cursor cursor = table->search();
        Row row;
        while (cursor.next(row)) {
            found.push_back(row.value(table->findField("type")).toString());
        }
        return found;
    }

    test::TempDir m_dir;
    std::ostringstream m_out;
    std::ostringstream m_err;
};

TEST_F(GeoprocessingCommands, TransferCountsContainedNearestAndUnmatched)
{
    const std::string sites = path("data.gpkg") + ":sites";
    const std::string hazard = path("data.gpkg") + ":hazard";
    ASSERT_EQ(run(runTransfer, {"transfer", "--target", sites, "--source", hazard, "--field",
                                "type", "--contained-only"}),
              0)
        << m_err.str();
    EXPECT_NE(m_out.str().find("3 features: 1 contained, 0 nearest, 2 unmatched"),
              std::string::npos)
        << m_out.str();
    EXPECT_EQ(values("data.gpkg", "sites"), (std::vector<std::string>{"A", "", ""}));

    ASSERT_EQ(run(runTransfer,
                  {"transfer", "--target", sites, "--source", hazard, "--field", "type"}),
              0);
    EXPECT_NE(m_out.str().find("3 features: 1 contained, 2 nearest, 0 unmatched"),
              std::string::npos)
        << m_out.str();
    EXPECT_EQ(values("data.gpkg", "sites"), (std::vector<std::string>{"A", "B", "B"}));
}

TEST_F(GeoprocessingCommands, BadInputIsAClearErrorAndChangesNothing)
{
    const std::string sites = path("data.gpkg") + ":sites";
    EXPECT_EQ(run(runTransfer, {"transfer", "--target", sites, "--source",
                                path("data.gpkg") + ":hazard", "--field", "depth"}),
              1);
    EXPECT_EQ(m_err.str(), "brevant transfer: the target sites has no attribute depth\n");
    EXPECT_EQ(run(runTransfer, {"transfer", "--target", sites, "--source",
                                path("data.gpkg") + ":flood", "--field", "type"}),
              1);
    EXPECT_NE(m_err.str().find("flood"), std::string::npos) << m_err.str();
    EXPECT_EQ(run(runClip, {"clip", "--input", sites}), 2) << "missing options are usage errors";
    EXPECT_NE(m_err.str().find("missing --clip"), std::string::npos) << m_err.str();
    EXPECT_EQ(values("data.gpkg", "sites"), (std::vector<std::string>{"", "", ""}));
}

TEST_F(GeoprocessingCommands, FailedOverlayKeepsTheEarlierResult)
{
    const std::string output = path("out.gpkg") + ":kept";
    ASSERT_EQ(run(runClip, {"clip", "--input", path("data.gpkg") + ":sites", "--clip",
                            path("data.gpkg") + ":hazard", "--output", output}),
              0)
        << m_err.str();
    EXPECT_NE(m_out.str().find("clip: 1 features written to kept"), std::string::npos)
        << m_out.str();

    // Points cannot clip: the run fails after the output was opened.
    EXPECT_EQ(run(runClip, {"clip", "--input", path("data.gpkg") + ":hazard", "--clip",
                            path("data.gpkg") + ":sites", "--output", output}),
              1);
    EXPECT_NE(m_err.str().find("must hold polygons"), std::string::npos) << m_err.str();
    EXPECT_EQ(values("out.gpkg", "kept"), (std::vector<std::string>{""}));
    EXPECT_EQ(Workspace::open(path("out.gpkg"), true).datasetNames(),
              (std::vector<std::string>{"kept"}));

    ASSERT_EQ(run(runIntersect, {"intersect", "--input", path("data.gpkg") + ":hazard", "--with",
                                 path("data.gpkg") + ":hazard", "--output", output}),
              0)
        << m_err.str();
    EXPECT_NE(m_out.str().find("intersect: 2 features"), std::string::npos) << m_out.str();

    // A failure into a new file leaves no file; a shapefile name is refused before anything.
    EXPECT_EQ(run(runClip, {"clip", "--input", path("data.gpkg") + ":hazard", "--clip",
                            path("data.gpkg") + ":sites", "--output", path("new.gpkg") + ":x"}),
              1);
    EXPECT_FALSE(std::filesystem::exists(path("new.gpkg")));
    EXPECT_EQ(run(runClip, {"clip", "--input", path("data.gpkg") + ":sites", "--clip",
                            path("data.gpkg") + ":hazard", "--output", path("out.shp") + ":x"}),
              2);
    EXPECT_NE(m_err.str().find("names a shapefile"), std::string::npos) << m_err.str();
    EXPECT_FALSE(std::filesystem::exists(path("out.shp")));
}

TEST_F(GeoprocessingCommands, AFullDiskAtAnyStageKeepsTheEarlierResultAndTargetValues)
{
    using Values = std::vector<std::string>;
    const std::string data = path("data.gpkg");
    const std::string output = path("out.gpkg") + ":kept";
    ASSERT_EQ(run(runClip, {"clip", "--input", data + ":sites", "--clip", data + ":hazard",
                            "--output", output}),
              0)
        << m_err.str();
    test::FullDisk disk;
    // Each overlay replaces the previous one's result, so the two differ.
    const auto overlay = [&](auto command, std::vector<std::string> args, const Values& before,
                             const Values& after) {
        int status = 0;
        const int failures = test::fillAtEveryStage(
            disk, [&] { status = run(command, args); },
            [&] {
                const auto kept = values("out.gpkg", "kept");
                EXPECT_TRUE(kept == before || kept == after)
                    << args[0] << ": " << ::testing::PrintToString(kept) << " after "
                    << disk.writes() << " writes";
                if (status == 0) {
                    EXPECT_EQ(kept, after) << args[0] << " reported success";
                }
                EXPECT_EQ(test::unsoundDatabases(m_dir.path()), Values{});
            });
        EXPECT_GT(failures, 3) << args[0] << " met the full disk at several stages";
        EXPECT_EQ(values("out.gpkg", "kept"), after) << m_err.str();
    };
    overlay(runClip,
            {"clip", "--input", data + ":hazard", "--clip", data + ":hazard", "--output", output},
            Values{""}, Values{"A", "B"});
    overlay(
        runIntersect,
        {"intersect", "--input", data + ":sites", "--with", data + ":hazard", "--output", output},
        Values{"A", "B"}, Values{""});

    int status = 0;
    const Values transferred{"A", "B", "B"};
    const int failures = test::fillAtEveryStage(
        disk,
        [&] {
            status = run(runTransfer, {"transfer", "--target", data + ":sites", "--source",
                                       data + ":hazard", "--field", "type"});
        },
        [&] {
            const auto sites = values("data.gpkg", "sites");
            ASSERT_EQ(sites.size(), 3u);
            if (status == 0) {
                EXPECT_EQ(sites, transferred) << "transfer reported success";
            }
            for (std::size_t i = 0; i < sites.size(); ++i) {
                EXPECT_TRUE(sites[i].empty() || sites[i] == transferred[i])
                    << "site " << i << ": " << sites[i];
            }
            EXPECT_EQ(test::unsoundDatabases(m_dir.path()), Values{});
        });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(values("data.gpkg", "sites"), (Values{"A", "B", "B"}));
}

TEST_F(GeoprocessingCommands, AResultLargerThanOneBatchGoesIntoTheFileItIsReadFrom)
{
    {
        Workspace data = Workspace::open(path("data.gpkg"));
        auto many = data.createFeatureClass(
            "many", Fields({{"type", FieldType::String, 8, {}}}), ShapeType::Point);
        InsertCursor insert = many->insert();
        for (int i = 0; i < 51000; ++i) {
            Row row = many->createRow();
            row.setShape(Geometry::point({(i % 200) * 0.05, (i / 200) * 0.039}));
            insert.insertRow(row);
        }
    }
    const std::string data = path("data.gpkg");
    ASSERT_EQ(run(runClip, {"clip", "--input", data + ":many", "--clip", data + ":hazard",
                            "--output", data + ":clipped"}),
              0)
        << m_err.str();
    EXPECT_EQ(Workspace::open(data, true).openFeatureClass("clipped")->rowCount(), 51000);
    ASSERT_EQ(run(runIntersect, {"intersect", "--input", data + ":hazard", "--with",
                                 data + ":hazard", "--output", data + ":hazard"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("data.gpkg", "hazard"), (std::vector<std::string>{"A", "B"}))
        << "the class met itself and took its own place";
}

TEST_F(GeoprocessingCommands, InputsInAnotherCoordinateSystemAreMovedIntoTheFirsts)
{
    // A site in each square and a zone over square A, in web mercator metres; a copy of the
    // zone without any coordinate system.
    {
        Workspace web = Workspace::createGeoPackage(path("web.gpkg"));
        const auto mercator = platform::geometry::SpatialReference::fromEpsg(3857);
        const Fields fields({{"type", FieldType::String, 8, {}}});
        auto sites = web.createFeatureClass("sites", fields, ShapeType::Point, mercator);
        add(*sites, "", "POINT (556597.454 557305.257)");
        add(*sites, "", "POINT (2782987.270 557305.257)");
        const std::string zone = "POLYGON ((-111319.49 -111325.14, 1224514.40 -111325.14, "
                                 "1224514.40 1232106.80, -111319.49 1232106.80, "
                                 "-111319.49 -111325.14))";
        add(*web.createFeatureClass("zone", fields, ShapeType::Polygon, mercator), "Z", zone);
        add(*web.createFeatureClass("nowhere", fields, ShapeType::Polygon,
                                    platform::geometry::SpatialReference()),
            "Z", zone);
    }
    const std::string hazard = path("data.gpkg") + ":hazard";
    ASSERT_EQ(run(runTransfer, {"transfer", "--target", path("web.gpkg") + ":sites", "--source",
                                hazard, "--field", "type"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("web.gpkg", "sites"), (std::vector<std::string>{"A", "B"}));

    ASSERT_EQ(run(runClip, {"clip", "--input", hazard, "--clip", path("web.gpkg") + ":zone",
                            "--output", path("out.gpkg") + ":clipped"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "clipped"), (std::vector<std::string>{"A"}));
    ASSERT_EQ(run(runIntersect, {"intersect", "--input", hazard, "--with",
                                 path("web.gpkg") + ":zone", "--output", path("out.gpkg") + ":pieces"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "pieces"), (std::vector<std::string>{"A"}));

    EXPECT_EQ(run(runClip, {"clip", "--input", hazard, "--clip", path("web.gpkg") + ":nowhere",
                            "--output", path("out.gpkg") + ":clipped"}),
              1);
    EXPECT_NE(m_err.str().find("nowhere (no coordinate system)"), std::string::npos) << m_err.str();
    EXPECT_NE(m_err.str().find("GCS_North_American_1983"), std::string::npos) << m_err.str();
    EXPECT_EQ(values("out.gpkg", "clipped"), (std::vector<std::string>{"A"})) << "kept";
}

TEST_F(GeoprocessingCommands, GeoJsonMixingPolygonsAndMultipolygonsIsOneKindOfShape)
{
    // A polygon over the left half of square A and a multipolygon over the left half of B.
    std::ofstream(path("zones.geojson")) << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"type": "P"}, "geometry": {"type": "Polygon",
         "coordinates": [[[0,0],[5,0],[5,10],[0,10],[0,0]]]}},
        {"type": "Feature", "properties": {"type": "M"}, "geometry": {"type": "MultiPolygon",
         "coordinates": [[[[20,0],[25,0],[25,10],[20,10],[20,0]]]]}}]})";
    const std::string zones = path("zones.geojson");
    const std::string hazard = path("data.gpkg") + ":hazard";
    const std::string out = path("out.gpkg");

    ASSERT_EQ(run(runClip, {"clip", "--input", hazard, "--clip", zones, "--output", out + ":a"}), 0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "a"), (std::vector<std::string>{"A", "B"}));
    ASSERT_EQ(run(runClip, {"clip", "--input", zones, "--clip", hazard, "--output", out + ":b"}), 0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "b"), (std::vector<std::string>{"P", "M"}));
    ASSERT_EQ(run(runIntersect,
                  {"intersect", "--input", zones, "--with", hazard, "--output", out + ":c"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "c"), (std::vector<std::string>{"P", "M"}));
    EXPECT_EQ(Workspace::open(out, true).openFeatureClass("c")->shapeType(), ShapeType::Polygon);

    // Shapes of different dimensions still make no polygon class.
    std::ofstream(path("both.geojson")) << R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {}, "geometry": {"type": "Polygon",
         "coordinates": [[[0,0],[5,0],[5,10],[0,10],[0,0]]]}},
        {"type": "Feature", "properties": {}, "geometry": {"type": "Point", "coordinates": [1,1]}}]})";
    EXPECT_EQ(run(runClip, {"clip", "--input", hazard, "--clip", path("both.geojson"), "--output",
                            out + ":d"}),
              1);
    EXPECT_NE(m_err.str().find("must hold polygons"), std::string::npos) << m_err.str();
}

TEST_F(GeoprocessingCommands, AShapefileWithoutItsAttributeFileIsRefused)
{
    {
        Workspace folder = Workspace::openShapefileFolder(path("shapes"));
        auto zones = folder.createFeatureClass(
            "zones", Fields({{"type", FieldType::String, 8, {}}}), ShapeType::Polygon);
        add(*zones, "Z", "POLYGON ((0 0, 5 0, 5 10, 0 10, 0 0))");
    }
    const std::string hazard = path("data.gpkg") + ":hazard";
    ASSERT_EQ(run(runClip, {"clip", "--input", path("shapes/zones.shp"), "--clip", hazard,
                            "--output", path("out.gpkg") + ":a"}),
              0)
        << m_err.str();
    EXPECT_EQ(values("out.gpkg", "a"), (std::vector<std::string>{"Z"}));

    std::filesystem::remove(path("shapes/zones.dbf"));
    for (const std::string& zones : {path("shapes/zones.shp"), path("shapes") + ":zones"}) {
        EXPECT_EQ(run(runClip, {"clip", "--input", zones, "--clip", hazard, "--output",
                                path("out.gpkg") + ":a"}),
                  1)
            << zones;
        EXPECT_NE(m_err.str().find("zones.dbf is missing"), std::string::npos) << m_err.str();
        EXPECT_EQ(run(runTransfer, {"transfer", "--target", path("data.gpkg") + ":sites",
                                    "--source", zones, "--field", "type"}),
                  1)
            << zones;
        EXPECT_NE(m_err.str().find("zones.dbf is missing"), std::string::npos) << m_err.str();
    }
    EXPECT_EQ(values("out.gpkg", "a"), (std::vector<std::string>{"Z"})) << "kept";
}

} // namespace
} // namespace brevant::app
