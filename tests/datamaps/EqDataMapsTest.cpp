#include "datamaps/EqDataMaps.h"

#include "context/EqUtilFunctions.h"
#include "datamaps/DataMapsFixture.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/Renderer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/FullDisk.h"
#include "support/Raised.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace brevant::datamaps {
namespace {

namespace fs = std::filesystem;
namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using test::kEast;
using test::kMiddle;
using test::kNorth;
using test::kSouth;
using test::kWest;
using test::MapPatch;
using Lines = std::vector<std::string>;

constexpr const char* kFailureMessage = "Korval: Some error occured in data maps processing, "
                                        "please refer to DataMapsLog.txt in study region";

/// Adds behind the registration's repair a self-crossing polygon that the geometry library
/// refuses to cut, from x = west to x = east at the region's latitudes.
void addBowTie(const std::filesystem::path& file, const std::string& field, const Variant& value,
               double west, double east)
{
    auto map = geodatabase::Workspace::open(file);
    auto shapes = map.openFeatureClass(map.datasetNames().front());
    geodatabase::InsertCursor insert = shapes->insert();
    auto row = shapes->createRow();
    row.setValue(shapes->findField(field), value);
    std::ostringstream wkt;
    wkt.precision(17);
    wkt << "POLYGON ((" << west << " 37.81, " << east << " 37.84, " << east << " 37.81, " << west
        << " 37.84, " << west << " 37.81))";
    row.setShape(platform::geometry::Geometry::fromWkt(wkt.str()));
    insert.insertRow(row);
}

/// Removes a template class from the system folder's copy of a database.
void removeTemplate(const std::filesystem::path& root, const std::string& database,
                    const std::string& name)
{
    geodatabase::Workspace::open(host::local::HostRoot::load(root).systemDataFolder() + database)
        .deleteDataset(name);
}

/// `expected` with "<time>" standing for a time of day in the long time format.
void expectLines(const Lines& actual, const Lines& expected)
{
    ASSERT_EQ(actual.size(), expected.size()) << ::testing::PrintToString(actual);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        std::string pattern;
        std::string text = expected[i];
        const std::string marker = "<time>";
        for (auto at = text.find(marker); at != std::string::npos; at = text.find(marker)) {
            pattern += std::regex_replace(text.substr(0, at), std::regex(R"([.^$|()\[\]{}*+?\\])"),
                                          R"(\$&)");
            pattern += "[0-9]{1,2}[:.][0-9]{2}[:.][0-9]{2}( ?[AaPp]\\.?[Mm]\\.?)?";
            text = text.substr(at + marker.size());
        }
        pattern += std::regex_replace(text, std::regex(R"([.^$|()\[\]{}*+?\\])"), R"(\$&)");
        EXPECT_TRUE(std::regex_match(actual[i], std::regex(pattern)))
            << "line " << i << ": \"" << actual[i] << "\" against \"" << expected[i] << "\"";
    }
}

/// The calls of one kind on the progress dialogs, as text.
std::vector<std::string> dialogTitles(const platform::ui::ScriptedPrompts& prompts)
{
    std::vector<std::string> titles;
    for (const auto& call : prompts.progressCalls()) {
        if (call.kind == platform::ui::ScriptedPrompts::ProgressCall::Kind::Title) {
            titles.push_back(call.text);
        }
    }
    return titles;
}

// The whole region in one patch, and its two halves along the tract line.
const MapPatch kWholeRegion{kWest, kSouth, kEast, kNorth, Variant("B")};
std::vector<MapPatch> halves(Variant west, Variant east)
{
    return {{kWest, kSouth, kMiddle, kNorth, std::move(west)},
            {kMiddle, kSouth, kEast, kNorth, std::move(east)}};
}
// A map far from the region.
std::vector<MapPatch> faraway(Variant value)
{
    return {{-100.0, 30.0, -99.9, 30.1, std::move(value)}};
}

class SiteMapClipping : public test::DataMapsFixture {};

TEST_F(SiteMapClipping, EmptyCollectionLogsStartAndFinishThenUpdatesAnalysisTables)
{
    addPointInventory("hzCareFlty", {{"H1", -122.27, 37.82}});
    clip({});
    expectLines(logLines(), {"Starting Clipping of User Defined Maps at  : <time>",
                             "",
                             "Finished Clipping of User Defined Maps at  : <time>",
                             "Starting Updation of Analyis files for Cliiped Maps  : <time>",
                             "Updating Sql Table hzCareFlty : <time>",
                             "Updated Sql Table hzCareFlty : <time>",
                             "",
                             "Finished Updation of Analyis files for Cliiped Maps  : <time>"});
    EXPECT_EQ(dialogTitles(*m_prompts),
              (Lines{"Clipping data maps", "Updating Analyis tables for clipped maps"}))
        << "no dependency update";
    EXPECT_EQ(sqlValue("SELECT count(*) FROM EqCareFlty"), "1") << "the host's table was updated";
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteMapClipping, CodesAreComparedExactly)
{
    registerMap("SOIL", {kWholeRegion});
    fill("RegionBndry.mdb", "eqsrsoil", "Type", {{kWest, kSouth, kEast, kNorth, Variant("A")}});
    clip({"soil", "Soil", "SOIL ", "PGAM", "DAMF"});
    expectLines(logLines(), {"Starting Clipping of User Defined Maps at  : <time>",
                             "",
                             "Finished Clipping of User Defined Maps at  : <time>",
                             "Starting Updation of Analyis files for Cliiped Maps  : <time>",
                             "",
                             "Finished Updation of Analyis files for Cliiped Maps  : <time>"});
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"A"}));
}

TEST_F(SiteMapClipping, CodeWithoutAMapEmptiesItsTargetAndCountsAsClipped)
{
    fill("RegionBndry.mdb", "eqsrsoil", "Type", {{kWest, kSouth, kEast, kNorth, Variant("A")}});
    auto sites = addPointInventory("hzCareFlty", {{"H1", -122.27, 37.82}});
    context::UpdateFieldValue(*sites, "stype", "A", "");
    setSetting("SiteDefaults", "stype", "C");
    clip({"SOIL"});
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqsrsoil")->rowCount(), 0);
    EXPECT_TRUE(logged("Clipped Soil at  : "));
    EXPECT_TRUE(logged("Opened Soil Map  : ")) << "the dependency update takes the code";
    EXPECT_EQ(valueOf(*regionClass("trn.mdb", "hzCareFlty"), "H1", "stype").toString(), "C")
        << "the inventory falls back on the region's default";
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteMapClipping, MapOutsideTheRegionEmptiesItsTargetAndCountsAsClipped)
{
    registerMap("LIQF", faraway(Variant(int16_t{4})));
    fill("RegionBndry.mdb", "eqsrlqf", "Type", {{kWest, kSouth, kEast, kNorth, Variant(int16_t{2})}});
    clip({"LIQF"});
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqsrlqf")->rowCount(), 0);
    EXPECT_TRUE(logged("Map to be Clipped does not overlay with the Region Boundary, default "
                       "Value assumed"));
    EXPECT_TRUE(logged("Clipped Lqf at  : "));
    EXPECT_TRUE(logged("Opened lqf Map  : "));
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteMapClipping, InvalidValuesGetTheDefaultAndShapesAreCutToTheBoundary)
{
    // Strips across the region; the last one reaches beyond its east edge.
    auto strips = [](std::vector<Variant> values) {
        std::vector<MapPatch> patches;
        double west = kWest;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double east = i + 1 == values.size() ? -122.10 : west + 0.02;
            patches.push_back({west, kSouth, east, kNorth, values[i]});
            west = east;
        }
        return patches;
    };
    registerMap("SOIL", strips({Variant("F"), Variant("B"), Variant::null(), Variant("E")}));
    registerMap("LIQF", strips({Variant(int16_t{7}), Variant(int16_t{3}), Variant(int16_t{-1})}));
    registerMap("LAND", strips({Variant(int16_t{11}), Variant(int16_t{10})}));
    registerMap("WATR", strips({Variant(-1.5), Variant(2.5)}));
    clip({"SOIL", "LIQF", "LAND", "WATR"});

    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"<null>", "B", "D", "E"}))
        << "a null is not selected by the repair";
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrlqf", "Type"), (Lines{"0", "0", "3"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrlnd", "Type"), (Lines{"0", "10"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrwdepth", "Type"), (Lines{"0", "2.5"}));
    for (const char* name : {"eqsrsoil", "eqsrlqf", "eqsrlnd", "eqsrwdepth"}) {
        const auto clipped = regionClass("RegionBndry.mdb", name);
        EXPECT_LE(clipped->extent().xmax(), kEast + 1e-12) << name;
        double area = 0.0;
        geodatabase::Cursor cursor = clipped->search();
        geodatabase::Row row;
        while (cursor.next(row)) {
            area += row.shape().area();
        }
        EXPECT_NEAR(area, (kEast - kWest) * (kNorth - kSouth), 1e-12) << name;
    }
    for (const char* line : {"Clipped Soil at  : ", "Clipped Lqf at  : ", "Clipped Lnd at  : ",
                             "Clipped Water Map at  : "}) {
        EXPECT_TRUE(logged(line)) << line;
    }
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteMapClipping, AClipTheGeometryRefusesFallsBackToTheWholeMapUnrepaired)
{
    registerMap("SOIL", {{kWest, kSouth, kMiddle, kNorth, Variant("F")},
                         {kMiddle, kSouth, -122.10, kNorth, Variant("C")}});
    addBowTie(userMapFile("SOIL"), "Type", Variant("BC"), -122.22, -122.10);
    clip({"SOIL"});
    // The copy is whole: it reaches past the boundary, and "BC" is not repaired to "D".
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"BC", "C", "F"}));
    EXPECT_NEAR(regionClass("RegionBndry.mdb", "eqsrsoil")->extent().xmax(), -122.10, 1e-12);
    EXPECT_TRUE(logged("Clipped Soil at  : "));
    EXPECT_TRUE(takeMessageTexts().empty()) << "the fallback is no failure";
}

TEST_F(SiteMapClipping, AFailedFallbackIsTheClipsFailureLineAndKeepsTheOldMap)
{
    registerMap("SOIL", {{kWest, kSouth, kEast, kNorth, Variant("C")}});
    addBowTie(userMapFile("SOIL"), "Type", Variant("BC"), -122.22, -122.10);
    fill("RegionBndry.mdb", "eqsrsoil", "Type", {{kWest, kSouth, kEast, kNorth, Variant("A")}});
    removeTemplate(root(), "RegionBndry.mdb", "eqsrsoil");
    clip({"SOIL"});
    EXPECT_TRUE(logged("Clipping  failed, error number : "));
    EXPECT_FALSE(logged("Clipped Soil at  : "));
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"A"}));
    EXPECT_FALSE(geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb").exists("eqsrsoil_partial"));
}

// A run cut short (a full disk, a killed process) must leave every map clippable again.
class InterruptedClipping : public test::DataMapsFixture {
protected:
    void execute(const std::string& sql) const
    {
        platform::tabular::SqliteDatabase(regionFolder() + "RegionBndry.mdb",
                                          platform::tabular::SqliteDatabase::Mode::ReadWrite)
            .execute(sql);
    }
};

TEST_F(InterruptedClipping, MissingTargetsAreMadeFromTheTemplateAndFilled)
{
    for (const char* name : {"eqsrsoil", "eqsrlqf"}) {
        geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb").deleteDataset(name);
    }
    registerMap("SOIL", halves(Variant("A"), Variant("C")));
    clip({"SOIL", "LIQF"});
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"A", "C"}));
    EXPECT_EQ(regionClass("RegionBndry.mdb", "eqsrlqf")->rowCount(), 0)
        << "a code without a map gets its empty target back";
    EXPECT_TRUE(logged("Clipped Soil at  : "));
    EXPECT_TRUE(logged("Clipped Lqf at  : "));
    EXPECT_TRUE(takeMessageTexts().empty());

    clip({"SOIL"});
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"A", "C"}))
        << "the next run replaces, never adds";
}

TEST_F(InterruptedClipping, AMissingInundationTargetIsMadeFromTheTemplate)
{
    geodatabase::Workspace::open(regionFolder() + "Inundation.mdb").deleteDataset("srdamind");
    registerMap("DAMF", {{-122.28, 37.81, -122.22, 37.84, Variant("1-3 ft")}});
    clipInundation({"DAMF"});
    EXPECT_EQ(valuesOf("Inundation.mdb", "srdamind", "type"), (Lines{"1-3 ft", "1-3 ft"}));
}

TEST_F(InterruptedClipping, AReplacementTheDatabaseRefusesKeepsTheOldMap)
{
    fill("RegionBndry.mdb", "eqsrsoil", "Type", {{kWest, kSouth, kEast, kNorth, Variant("A")}});
    registerMap("SOIL", halves(Variant("B"), Variant("C")));
    execute("CREATE TRIGGER keep_soil BEFORE DELETE ON gpkg_contents "
            "WHEN old.table_name = 'eqsrsoil' BEGIN SELECT RAISE(ABORT, 'disk is full'); END");
    clip({"SOIL"});
    EXPECT_TRUE(logged("Clipping  failed, error number : "));
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"A"}));
    EXPECT_FALSE(geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb").exists("eqsrsoil_partial"));

    execute("DROP TRIGGER keep_soil");
    m_dataMaps = std::make_shared<EqDataMaps>();
    clip({"SOIL"});
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"B", "C"}));
}

TEST_F(InterruptedClipping, AFullDiskAtAnyStageKeepsTheOldMapOrLeavesTheNewOne)
{
    fill("RegionBndry.mdb", "eqsrsoil", "Type", {{kWest, kSouth, kEast, kNorth, Variant("A")}});
    fill("RegionBndry.mdb", "eqsrlqf", "Type", {{kWest, kSouth, kEast, kNorth, Variant(1)}});
    registerMap("SOIL", halves(Variant("B"), Variant("C")));
    registerMap("LIQF", halves(Variant(2), Variant(3)));
    test::FullDisk disk;
    const int failures = test::fillAtEveryStage(
        disk,
        [&] {
            m_dataMaps = std::make_shared<EqDataMaps>();
            clip({"SOIL", "LIQF"});
        },
        [&] {
            const auto soil = valuesOf("RegionBndry.mdb", "eqsrsoil", "Type");
            EXPECT_TRUE(soil == Lines{"A"} || soil == (Lines{"B", "C"}))
                << ::testing::PrintToString(soil) << " after " << disk.writes() << " writes";
            const auto liquefaction = valuesOf("RegionBndry.mdb", "eqsrlqf", "Type");
            EXPECT_TRUE(liquefaction == Lines{"1"} || liquefaction == (Lines{"2", "3"}))
                << ::testing::PrintToString(liquefaction) << " after " << disk.writes()
                << " writes";
            if (takeMessageTexts().empty()) {
                EXPECT_EQ(soil, (Lines{"B", "C"})) << "a run that reports no failure clipped";
                EXPECT_EQ(liquefaction, (Lines{"2", "3"}));
            }
            EXPECT_EQ(test::unsoundDatabases(regionFolder()), Lines{});
        });
    EXPECT_GT(failures, 3) << "the disk filled at several stages of the batch";
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrsoil", "Type"), (Lines{"B", "C"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqsrlqf", "Type"), (Lines{"2", "3"}));
}

TEST_F(SiteMapClipping, OnlyTheClippedMapsAreReappliedToTheInventory)
{
    auto sites = addPointInventory("hzCareFlty", {{"W", -122.27, 37.82}, {"E", -122.22, 37.82}});
    context::UpdateFieldValue(*sites, "lqfsuscat", "4", "");
    registerMap("SOIL", halves(Variant("A"), Variant("C")));
    registerMap("LIQF", halves(Variant(int16_t{1}), Variant(int16_t{2})));
    clip({"SOIL"});
    const auto after = regionClass("trn.mdb", "hzCareFlty");
    EXPECT_EQ(valueOf(*after, "W", "stype").toString(), "A");
    EXPECT_EQ(valueOf(*after, "E", "stype").toString(), "C");
    EXPECT_EQ(valueOf(*after, "W", "lqfsuscat").toInt32(), 4);
    EXPECT_EQ(valueOf(*after, "E", "lqfsuscat").toInt32(), 4);
    EXPECT_FALSE(logged("Opening Lqf Map  : "));
}

TEST_F(SiteMapClipping, FailureIsReportedOnEveryLaterCallOfTheSameObject)
{
    registerMap("SOIL", {kWholeRegion});
    registerMap("LIQF", halves(Variant(int16_t{1}), Variant(int16_t{2})));
    fs::remove(userMapFile("SOIL"));
    clip({"SOIL", "LIQF"});
    EXPECT_TRUE(logged("Clipping for soil failed, error number : "));
    EXPECT_FALSE(logged("Clipped Soil at  : "));
    EXPECT_TRUE(logged("Clipped Lqf at  : ")) << "the loop goes on after a failed map";
    EXPECT_FALSE(logged("Opening Soil Map  : "));
    EXPECT_TRUE(logged("Opened lqf Map  : ")) << "dependencies of the maps that did clip";
    EXPECT_FALSE(logged("Starting Updation of Analyis files"));
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage}));

    clip({});
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage})) << "the flag is never cleared";
    EXPECT_FALSE(logged("Starting Updation of Analyis files"));

    m_dataMaps = std::make_shared<EqDataMaps>();
    clip({});
    EXPECT_TRUE(takeMessageTexts().empty()) << "a new object starts clear";
    EXPECT_TRUE(logged("Starting Updation of Analyis files"));
}

// Inundation maps ------------------------------------------------------------------------------

class InundationMaps : public test::DataMapsFixture {};

TEST_F(InundationMaps, AnIntersectTheGeometryRefusesLeavesAnEmptyTargetAndNoFlag)
{
    registerMap("DAMF", {{-122.28, 37.81, -122.22, 37.84, Variant("1-3 ft")}});
    addBowTie(userMapFile("DAMF"), "type", Variant("bow tie"), -122.29, -122.21);
    fill("Inundation.mdb", "srdamind", "type", {{kWest, kSouth, kEast, kNorth, Variant("old")}});
    clipInundation({"DAMF"});
    EXPECT_EQ(regionClass("Inundation.mdb", "srdamind")->rowCount(), 0);
    EXPECT_NE(regionClass("Inundation.mdb", "srdamind")->findField("Tract"), -1)
        << "made again from the template";
    EXPECT_FALSE(logged("Intersection  failed", "DataMapsLog1.txt"));
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(InundationMaps, AFailedFallbackIsTheIntersectionsFailureLine)
{
    registerMap("DAMF", {{-122.28, 37.81, -122.22, 37.84, Variant("1-3 ft")}});
    addBowTie(userMapFile("DAMF"), "type", Variant("bow tie"), -122.29, -122.21);
    removeTemplate(root(), "Inundation.mdb", "srdamind");
    clipInundation({"DAMF"});
    EXPECT_TRUE(logged("Intersection  failed, error number : ", "DataMapsLog1.txt"));
    EXPECT_EQ(takeMessageTexts().size(), 1u) << "the flag brings the closing message";
}

TEST_F(InundationMaps, MapIsCutByTheTractsIntoItsTarget)
{
    registerMap("DAMF", {{-122.28, 37.81, -122.22, 37.84, Variant("1-3 ft")}});
    fill("Inundation.mdb", "srdamind", "type", {{kWest, kSouth, kEast, kNorth, Variant("old")}});
    clipInundation({"DAMF", "damf"});

    EXPECT_EQ(valuesOf("Inundation.mdb", "srdamind", "type"), (Lines{"1-3 ft", "1-3 ft"}));
    EXPECT_EQ(valuesOf("Inundation.mdb", "srdamind", "Tract"),
              (Lines{"06001400100", "06001400200"}));
    double area = 0.0;
    geodatabase::Cursor cursor = regionClass("Inundation.mdb", "srdamind")->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        area += row.shape().area();
    }
    EXPECT_NEAR(area, 0.06 * 0.03, 1e-12);
    const Lines lines = logLines("DataMapsLog1.txt");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& l) { return l.rfind("Clipped at  : ", 0) == 0; }),
              1)
        << "lower-case codes are skipped";
    EXPECT_EQ(lines.back().rfind("completed Intersection of Inundation Maps at  : ", 0), 0u);
    EXPECT_FALSE(logged("Starting Updation", "DataMapsLog1.txt")) << "no dependency update";
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(InundationMaps, CodeWithoutAMapKeepsItsTargetAndCountsAsProcessed)
{
    fill("Inundation.mdb", "srseiind", "type", {{kWest, kSouth, kEast, kNorth, Variant("old")}});
    clipInundation({"SEIC"});
    EXPECT_EQ(valuesOf("Inundation.mdb", "srseiind", "type"), (Lines{"old"}));
    EXPECT_TRUE(logged("Clipped at  : ", "DataMapsLog1.txt"));
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(InundationMaps, MapOutsideTheRegionIsNotProcessedAndRaisesNoMessage)
{
    registerMap("TSUN", faraway(Variant("3-6 ft")));
    fill("Inundation.mdb", "srtsuind", "type", {{kWest, kSouth, kMiddle, kNorth, Variant("0-1 ft")}});
    clipInundation({"TSUN"});
    EXPECT_TRUE(logged("Intersecting TSunami Map at  : ", "DataMapsLog1.txt"));
    EXPECT_TRUE(logged("Map to be Intersected does not overlay with the Region Boundary",
                       "DataMapsLog1.txt"));
    EXPECT_FALSE(logged("Clipped at  : ", "DataMapsLog1.txt"));
    EXPECT_EQ(valuesOf("Inundation.mdb", "srtsuind", "type"), (Lines{"0-1 ft"}));
    EXPECT_FALSE(m_dataMaps->errorFlag());
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(InundationMaps, EachCallStartsWithAClearErrorFlag)
{
    registerMap("DAMF", {kWholeRegion});
    fs::remove(userMapFile("DAMF"));
    clipInundation({"DAMF"});
    EXPECT_TRUE(logged("Intersection for soil failed, error number : ", "DataMapsLog1.txt"));
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage}));
    clipInundation({});
    EXPECT_TRUE(takeMessageTexts().empty());

    // Nor does a failure of the site maps carry over.
    registerMap("SOIL", {kWholeRegion});
    fs::remove(userMapFile("SOIL"));
    clip({"SOIL"});
    EXPECT_EQ(takeMessageTexts(), (Lines{kFailureMessage}));
    clipInundation({});
    EXPECT_TRUE(takeMessageTexts().empty());
    EXPECT_FALSE(m_dataMaps->errorFlag());
}

// One inventory table --------------------------------------------------------------------------

class SiteConditionSync : public test::DataMapsFixture {
protected:
    /// West half soil "A", east half "C", in the registry and clipped.
    void soilHalves()
    {
        registerMap("SOIL", halves(Variant("A"), Variant("C")));
        fill("RegionBndry.mdb", "eqsrsoil", "Type", halves(Variant("A"), Variant("C")));
    }
    void catalogue(const std::string& name, const std::string& database)
    {
        const auto host = host::local::HostRoot::load(root());
        host::local::RegionDatabase(host.regionDatabasePath(host.currentRegion()))
            .putInventoryClass({name, database, "P", ""});
    }
    void sync(std::string name) { m_dataMaps->SyncInvtHft(name); }
};

TEST_F(SiteConditionSync, PointsTakeThePolygonUnderThemElseTheRegionDefault)
{
    soilHalves();
    setSetting("SiteDefaults", "stype", "B");
    auto sites = addPointInventory(
        "hzCareFlty", {{"IN", -122.27, 37.82}, {"EDGE", kMiddle, 37.82}, {"OUT", -122.10, 37.82}});
    context::UpdateFieldValue(*sites, "stype", "E", "");
    context::UpdateFieldValue(*sites, "lqfsuscat", "4", "");
    sync("hzCareFlty");

    const auto after = regionClass("trn.mdb", "hzCareFlty");
    EXPECT_EQ(valueOf(*after, "IN", "stype").toString(), "A");
    const std::string edge = valueOf(*after, "EDGE", "stype").toString();
    EXPECT_TRUE(edge == "A" || edge == "C") << "a point on the common edge got " << edge;
    EXPECT_EQ(valueOf(*after, "OUT", "stype").toString(), "B");
    EXPECT_EQ(valueOf(*after, "IN", "lqfsuscat").toInt32(), 4) << "no liquefaction map";
    EXPECT_TRUE(logged("Updated new hzCareFlty for Soil Map   : "));
    EXPECT_FALSE(logged("Updating hzCareFlty for Lqf Map"));
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteConditionSync, RegionWithoutMapsWritesAnEmptyLogAndChangesNothing)
{
    fill("RegionBndry.mdb", "eqsrsoil", "Type", halves(Variant("A"), Variant("C")));
    auto sites = addPointInventory("hzCareFlty", {{"IN", -122.27, 37.82}});
    context::UpdateFieldValue(*sites, "stype", "E", "");
    sync("hzCareFlty");
    EXPECT_TRUE(fs::exists(regionFolder() + "DataMapsLog.txt"));
    EXPECT_TRUE(logLines().empty());
    EXPECT_EQ(valueOf(*regionClass("trn.mdb", "hzCareFlty"), "IN", "stype").toString(), "E");
}

TEST_F(SiteConditionSync, TablesOfOtherHazardModelsAreLeftAloneInAnyCase)
{
    soilHalves();
    {
        std::ofstream(regionFolder() + "DataMapsLog.txt") << "earlier\n";
    }
    for (const char* name : {"hzdams", "HZHAZMAT", "hzLevees", "HzDaMs"}) {
        sync(name);
    }
    EXPECT_EQ(logLines(), (Lines{"earlier"}));
    EXPECT_TRUE(m_prompts->progressCalls().empty());
}

TEST_F(SiteConditionSync, EmptyTractTableIsRebuiltThenUpdated)
{
    soilHalves();
    catalogue("eqTract", "RegionBndry.mdb");
    ASSERT_EQ(regionClass("RegionBndry.mdb", "eqTract")->rowCount(), 0);
    sync("eqTract");
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqTract", "Tract"), (Lines{"06001400100", "06001400200"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqTract", "stype"), (Lines{"A", "C"}));
    EXPECT_FALSE(logged("Table  eqTract is Empty"));
    EXPECT_TRUE(takeMessageTexts().empty());
}

TEST_F(SiteConditionSync, InventoryClassesGainTheSiteFieldsButTheGridNever)
{
    soilHalves();
    registerMap("LIQF", halves(Variant(int16_t{1}), Variant(int16_t{2})));
    fill("RegionBndry.mdb", "eqsrlqf", "Type", halves(Variant(int16_t{1}), Variant(int16_t{2})));
    auto create = [&](const std::string& name, std::vector<geodatabase::Field> fields) {
        auto workspace = geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb");
        workspace.deleteDataset(name);
        auto points = workspace.createFeatureClass(name, geodatabase::Fields(std::move(fields)),
                                                   platform::geometry::ShapeType::Point);
        geodatabase::InsertCursor insert = points->insert();
        auto row = points->createRow();
        row.setValue(2, Variant(int32_t{1}));
        row.setShape(platform::geometry::Geometry::point({-122.22, 37.82}));
        insert.insertRow(row);
        insert.flush();
        catalogue(name, "RegionBndry.mdb");
    };
    using geodatabase::FieldType;
    create("eqGrid", {{"EqGridId", FieldType::Integer, 0, "EqGridId"},
                      {"stype", FieldType::String, 1, "stype"}});
    create("hzSchool", {{"SchoolId", FieldType::Integer, 0, "SchoolId"}});
    sync("eqGrid");
    sync("hzSchool");

    auto names = [&](const std::string& name) {
        const auto table = regionClass("RegionBndry.mdb", name);
        Lines fields;
        for (int i = 2; i < table->fields().count(); ++i) {
            fields.push_back(table->fields().field(i).name);
        }
        return fields;
    };
    EXPECT_EQ(names("eqGrid"), (Lines{"EqGridId", "stype"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "eqGrid", "stype"), (Lines{"C"}));
    EXPECT_EQ(names("hzSchool"), (Lines{"SchoolId", "stype", "lqfsuscat", "lndsuscat", "w_depth"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "hzSchool", "stype"), (Lines{"C"}));
    EXPECT_EQ(valuesOf("RegionBndry.mdb", "hzSchool", "lqfsuscat"), (Lines{"2"}));
    EXPECT_TRUE(takeMessageTexts().empty());
}

// Drawing --------------------------------------------------------------------------------------

class DataMapDrawing : public test::DataMapsFixture {
protected:
    std::vector<std::shared_ptr<platform::carto::FeatureLayer>> layers() const
    {
        return m_map->featureLayers();
    }
};

TEST_F(DataMapDrawing, ClippedMapIsDrawnWithItsOwnType)
{
    fill("RegionBndry.mdb", "eqsrsoil", "Type", halves(Variant("A"), Variant("C")));
    std::optional<int16_t> type;
    std::optional<double> minimum;
    std::optional<double> maximum;
    m_dataMaps->GenerateThematicMap("SOIL", type, minimum, maximum);
    EXPECT_EQ(type, int16_t{8});
    ASSERT_EQ(layers().size(), 1u);
    EXPECT_EQ(layers()[0]->featureClass()->name(), "eqsrsoil");
}

TEST_F(DataMapDrawing, GroundMotionTakesTheCallersTypeAndNeedsOne)
{
    registerMap("PGAM", halves(Variant(0.2), Variant(0.6)));
    std::optional<int16_t> type = int16_t{0};
    std::optional<double> minimum = 0.1;
    std::optional<double> maximum = 0.7;
    const auto error =
        test::raisedBy([&] { m_dataMaps->GenerateThematicMap("PGAM", type, minimum, maximum); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_NE(errorLog().find(" GenerateThematicMap , invalid thematic Mapping type"),
              std::string::npos);
    EXPECT_TRUE(layers().empty());

    type = int16_t{2};
    m_dataMaps->GenerateThematicMap("PGAM", type, minimum, maximum);
    EXPECT_EQ(type, int16_t{2});
    ASSERT_EQ(layers().size(), 1u);
    EXPECT_EQ(layers()[0]->featureClass()->name(),
              geodatabase::Workspace::open(userMapFile("PGAM")).datasetNames().front());
    EXPECT_TRUE(std::holds_alternative<platform::carto::ClassBreaksRenderer>(layers()[0]->renderer()));
}

TEST_F(DataMapDrawing, UnregisteredGroundMotionDrawsNothingAndLowerCaseIsUnknown)
{
    std::optional<int16_t> type = int16_t{2};
    std::optional<double> minimum;
    std::optional<double> maximum;
    m_dataMaps->GenerateThematicMap("PGVM", type, minimum, maximum);
    EXPECT_TRUE(layers().empty());
    EXPECT_TRUE(errorLog().empty());

    fill("RegionBndry.mdb", "eqsrsoil", "Type", halves(Variant("A"), Variant("C")));
    std::optional<int16_t> none;
    const auto error =
        test::raisedBy([&] { m_dataMaps->GenerateThematicMap("soil", none, minimum, maximum); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_TRUE(layers().empty());

    // With a type of the caller's, an unknown code is no type error: the builder fails on it.
    std::optional<int16_t> eight = int16_t{8};
    const auto built =
        test::raisedBy([&] { m_dataMaps->GenerateThematicMap("soil", eight, minimum, maximum); });
    EXPECT_EQ(built.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(built.description(), "The map engine failed in GenerateThematicMap");
    EXPECT_NE(errorLog().find("failed in GetSimpleThmMap for \n"), std::string::npos);
    EXPECT_TRUE(layers().empty());
}

TEST_F(DataMapDrawing, UserShakeMapsAreDrawnUnderTheirNameAndFailAsMapProcedures)
{
    registerMap("PGAM", halves(Variant(0.2), Variant(0.6)));
    const std::string file = userMapFile("PGAM").string();
    const std::string table = geodatabase::Workspace::open(file).datasetNames().front();
    m_dataMaps->MapUserDefinedShakeMap(file, table, "Hayward M7");
    ASSERT_EQ(layers().size(), 1u);
    EXPECT_EQ(layers()[0]->name(), "Shake Map for Hayward M7");

    const auto error =
        test::raisedBy([&] { m_dataMaps->MapUserDefinedShakeMap(file, "missing", "M6"); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::MapLayer);
    EXPECT_NE(error.description().find(" for water map"), std::string::npos);
}

} // namespace
} // namespace brevant::datamaps
