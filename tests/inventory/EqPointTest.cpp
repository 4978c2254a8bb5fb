#include "inventory/EqPoint.h"

#include "context/CandidateClass.h"
#include "context/StudyRegionContext.h"
#include "host/local/RegionDatabase.h"
#include "inventory/InventoryFixture.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/FullDisk.h"

#include <filesystem>

namespace brevant::test {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Collection;
using platform::automation::Variant;
using platform::geometry::ShapeType;

constexpr int32_t kProcedure = static_cast<int32_t>(0x8004060C);
const std::string kWestTract = "06001400100";
const std::string kEastTract = "06001400200";

class EqPointTest : public InventoryFixture {
protected:
    void SetUp() override
    {
        InventoryFixture::SetUp();
        m_point = std::make_shared<inventory::EqPoint>();
    }

    /// A user's point file: two schools in the west tract, one in the east, `outside` beyond
    /// the region.
    std::string schools(int outside = 0, int epsg = 4269)
    {
        std::vector<SourceFeature> features{{"West A", "POINT (-122.29 37.81)"},
                                            {"West B", "POINT (-122.26 37.84)"},
                                            {"East", "POINT (-122.21 37.82)"}};
        for (int i = 0; i < outside; ++i) {
            features.push_back({"Far " + std::to_string(i), "POINT (-122.10 37.82)"});
        }
        if (epsg == 3857) {
            // The same places in web mercator metres.
            features = {{"West A", "POINT (-13613260.529 4552619.846)"},
                        {"East", "POINT (-13604354.97 4554028.963)"}};
        }
        return writeSource("schools" + std::to_string(++m_files) + ".gpkg", "schools",
                           ShapeType::Point, features, epsg);
    }

    std::shared_ptr<inventory::EqPoint> m_point;
    int m_files = 0;
};

TEST_F(EqPointTest, ImportKeepsInsideRecordsWithTractsCoordinatesAndNewIdentifiers)
{
    m_point->ImportData("hzSchool", schools(2), "schools");

    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{
                  "Korval: There are 2 objects outside the study region, they will not be stored."}));
    const auto classes = inventory("hzSchool");
    EXPECT_EQ(byId(*classes, "Tract"),
              (std::map<std::string, std::string>{
                  {"SC000001", kWestTract}, {"SC000002", kWestTract}, {"SC000003", kEastTract}}));
    EXPECT_EQ(column(*classes, "Name"), (std::vector<std::string>{"West A", "West B", "East"}));
    EXPECT_EQ(column(*classes, "Longitude"),
              (std::vector<std::string>{"-122.29", "-122.26", "-122.21"}));

    // A second import counts on from the identifiers the class holds.
    m_point->ImportData("hzSchool", schools(), "schools");
    EXPECT_EQ(byId(*inventory("hzSchool"), "Tract").rbegin()->first, "SC000006");
}

TEST_F(EqPointTest, ImportOfOnlyOutsidePointsTellsTheCountAndAppendsNothing)
{
    const std::string file = writeSource(
        "far.gpkg", "far", ShapeType::Point,
        {{"A", "POINT (-121 37)"}, {"B", "POINT (-121 38)"}, {"C", "POINT (-120 37)"}});
    m_point->ImportData("hzSchool", file, "far");
    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{
                  "Korval: There are 3 objects outside the study region, they will not be stored."}));
    EXPECT_EQ(inventory("hzSchool")->rowCount(), 0);
}

TEST_F(EqPointTest, ImportOfAFileInAnotherCoordinateSystemLandsInTheRightTracts)
{
    m_point->ImportData("hzSchool", schools(0, 3857), "schools");
    const auto classes = inventory("hzSchool");
    EXPECT_EQ(column(*classes, "Tract"), (std::vector<std::string>{kWestTract, kEastTract}));
    EXPECT_NEAR(std::stod(column(*classes, "Latitude")[0]), 37.81, 1e-4);
}

TEST_F(EqPointTest, ImportFailuresEndInTheTrapAndLeaveTheClassAsItWas)
{
    m_point->ImportData("hzSchool", schools(), "schools");
    const auto before = column(*inventory("hzSchool"), "SchoolId");

    const auto missing = errorOf([&] { m_point->ImportData("hzSchool", schools(), "nothing"); });
    EXPECT_EQ(missing.number(), kProcedure);
    EXPECT_NE(missing.description().find(" ImportData"), std::string::npos);
    const auto notCatalogued =
        errorOf([&] { m_point->ImportData("hzNoSuchClass", schools(), "schools"); });
    EXPECT_EQ(notCatalogued.number(), kProcedure);

    EXPECT_EQ(column(*inventory("hzSchool"), "SchoolId"), before);
    EXPECT_NE(errorLog().find(" ImportData"), std::string::npos);
}

TEST_F(EqPointTest, AFullDiskDuringAnImportKeepsTheRowsStoredBefore)
{
    m_point->ImportData("hzSchool", schools(), "schools");
    const auto names = column(*inventory("hzSchool"), "Name");
    const auto ids = column(*inventory("hzSchool"), "SchoolId");
    const std::string file = schools(1);
    FullDisk disk;
    bool raised = false;
    int64_t rowsBefore = 0;
    const int failures = fillAtEveryStage(
        disk,
        [&] {
            raised = true;
            rowsBefore = inventory("hzSchool")->rowCount();
            m_point->ImportData("hzSchool", file, "schools");
            raised = false;
        },
        [&] {
            const auto classes = inventory("hzSchool");
            auto nowNames = column(*classes, "Name");
            auto nowIds = column(*classes, "SchoolId");
            ASSERT_GE(nowNames.size(), names.size()) << "after " << disk.writes() << " writes";
            if (!raised) {
                EXPECT_EQ(static_cast<int64_t>(nowNames.size()), rowsBefore + 3)
                    << "an import that raised nothing stored every record";
            }
            EXPECT_EQ(classes->rowCount(), static_cast<int64_t>(nowNames.size()))
                << "the stored count follows the rows";
            nowNames.resize(names.size());
            nowIds.resize(ids.size());
            EXPECT_EQ(nowNames, names);
            EXPECT_EQ(nowIds, ids);
            EXPECT_EQ(unsoundDatabases(regionFolder()), std::vector<std::string>{});
        });
    EXPECT_GT(failures, 3) << "the disk filled at several stages of the import";
    EXPECT_GE(inventory("hzSchool")->rowCount(), 6);
}

TEST_F(EqPointTest, TheTractLookupTakesTheFirstTractAPointOnTheirCommonEdgeTouches)
{
    const std::string file =
        writeSource("edge.gpkg", "edge", ShapeType::Point, {{"Edge", "POINT (-122.25 37.82)"}});
    m_point->ImportData("hzSchool", file, "edge");
    EXPECT_EQ(column(*inventory("hzSchool"), "Tract"), (std::vector<std::string>{kWestTract}));
}

TEST_F(EqPointTest, MovedObjectsAreSelectedByTheirIdentifiersAndHandedToTheHost)
{
    m_point->ImportData("hzSchool", schools(), "schools");
    auto classes = inventory("hzSchool");
    // The user moves the first and the third school across the tract line.
    {
        geodatabase::Cursor cursor = classes->update();
        geodatabase::Row row;
        while (cursor.next(row)) {
            if (row.value(2).toString() != "SC000002") {
                row.setShape(platform::geometry::Geometry::point(
                    {row.shape().firstPoint().x < kMiddle ? -122.22 : -122.28, 37.83}));
                cursor.updateRow(row);
            }
        }
    }
    executeSql("INSERT INTO hzSchool (SchoolId, Latitude, Longitude, Tract) VALUES "
               "('SC000001', 0, 0, ''), ('SC000002', 0, 0, '')");

    Variant layerClass(classes);
    m_point->UpdateMovedObjects(layerClass, Variant(Collection::of({Variant("SC000001"),
                                                                    Variant("SC000003")})));
    EXPECT_EQ(byId(*inventory("hzSchool"), "Tract"),
              (std::map<std::string, std::string>{
                  {"SC000001", kEastTract}, {"SC000002", kWestTract}, {"SC000003", kWestTract}}));
    EXPECT_EQ(sqlValue("SELECT Tract || ' ' || Longitude FROM hzSchool WHERE SchoolId = 'SC000001'"),
              kEastTract + " -122.22");

    // The clause names the identifier field, then " In  (" with two spaces: a broken id shows it.
    const auto error = errorOf([&] {
        m_point->UpdateMovedObjects(layerClass, Variant(Collection::of({Variant("a'b")})));
    });
    EXPECT_EQ(error.number(), kProcedure);
    EXPECT_NE(errorLog().find("SchoolId In  ('a'b')"), std::string::npos)
        << errorLog();

    m_point->UpdateMovedObjects(layerClass, Variant(std::make_shared<Collection>()));
}

TEST_F(EqPointTest, PendingRecordsTakeGeometryFromTheirCoordinatesOrTheOtherWayRound)
{
    auto classes = inventory("hzSchool");
    {
        geodatabase::InsertCursor insert = classes->insert();
        for (const auto& [x, y] : std::vector<std::pair<double, double>>{{-122.28, 37.81},
                                                                         {-122.0, 37.0}}) {
            auto row = classes->createRow();
            row.setValue(2, "OLD");
            row.setValue(classes->findField("Tract"), "IMPORT");
            row.setValue(classes->findField("Longitude"), x);
            row.setValue(classes->findField("Latitude"), y);
            insert.insertRow(row);
        }
    }
    m_point->SyncronizePointMap("hzSchool", 2);
    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{
                  "Korval: There are 1 objects outside the study region, they will not be stored."}));
    classes = inventory("hzSchool");
    EXPECT_EQ(column(*classes, "Tract"), (std::vector<std::string>{kWestTract}));
    // Coordinates are the truth here: the identifier stays, the server tables follow.
    EXPECT_EQ(column(*classes, "SchoolId"), (std::vector<std::string>{"OLD"}));
    EXPECT_EQ(sqlValue("SELECT Tract FROM hzSchool WHERE SchoolId = 'OLD'"), kWestTract);

    // With the geometry as the truth, a pending record gets an identifier and coordinates.
    {
        geodatabase::Cursor cursor = classes->update();
        geodatabase::Row row;
        ASSERT_TRUE(cursor.next(row));
        row.setValue(classes->findField("Tract"), "IMPORT");
        row.setShape(platform::geometry::Geometry::point({-122.21, 37.84}));
        cursor.updateRow(row);
    }
    m_point->UpdateMapData(Variant(classes));
    EXPECT_EQ(byId(*inventory("hzSchool"), "Tract"),
              (std::map<std::string, std::string>{{"SC000001", kEastTract}}));
}

TEST_F(EqPointTest, SynchronisingByDatabaseNameReportsWhetherTheRecordLanded)
{
    auto classes = inventory("hzSchool");
    const auto addPending = [&](double x) {
        geodatabase::InsertCursor insert = classes->insert();
        auto row = classes->createRow();
        row.setValue(2, "NEW");
        row.setValue(classes->findField("Tract"), "IMPORT");
        row.setValue(classes->findField("Longitude"), x);
        row.setValue(classes->findField("Latitude"), 37.82);
        insert.insertRow(row);
    };
    const std::string database = classes->workspace().path().string();
    addPending(-122.0);
    m_point->SyncronizePointMapUsingDBName("hzSchool", database);
    EXPECT_EQ(host::local::RegionDatabase(root() / "Regions/Testville/region.sqlite")
                  .readInt32("General", "AddRecord"),
              0);
    EXPECT_EQ(inventory("hzSchool")->rowCount(), 0);

    addPending(-122.22);
    m_point->SyncronizePointMapUsingDBName("hzSchool", database);
    EXPECT_EQ(host::local::RegionDatabase(root() / "Regions/Testville/region.sqlite")
                  .readInt32("General", "AddRecord"),
              1);
}

TEST_F(EqPointTest, AnUnknownDatabaseTypeEndsTheMemberThroughItsTrap)
{
    const auto error = errorOf([&] { m_point->SyncronizePointMap("hzSchool", 5); });
    EXPECT_EQ(error.number(), kProcedure);
    EXPECT_NE(error.description().find(" SyncronizePointMap"), std::string::npos);
    const auto mapError = errorOf([&] { m_point->MapPointdata("hzSchool", 5); });
    EXPECT_EQ(mapError.number(), static_cast<int32_t>(0x80040608));
}

TEST_F(EqPointTest, IsEditableComparesTheDatabasePathWithoutRegardToCase)
{
    // The same folder under another spelling: a link whose name differs in case.
    std::filesystem::create_directory_symlink(root() / "Regions", root() / "REGIONS");
    const auto otherCase = geodatabase::Workspace::open(root() / "REGIONS/Testville/ef.mdb")
                               .openFeatureClass("hzSchool");
    auto layer = std::make_shared<platform::carto::FeatureLayer>();
    layer->setFeatureClass(otherCase);
    Variant layerVariant(layer);
    bool editable = false;
    m_point->IsEditable(layerVariant, editable);
    EXPECT_TRUE(editable);

    layer->setFeatureClass(
        geodatabase::Workspace::open(regionFolder() + "RegionBndry.mdb").openFeatureClass("hztract"));
    m_point->IsEditable(layerVariant, editable);
    EXPECT_FALSE(editable);
}

TEST_F(EqPointTest, IsValidCountsPointClassesAndFailsSilently)
{
    Variant count;
    int16_t isGeoDb = 7;
    m_point->IsValid("ef.mdb", "hzSchool", regionFolder(), count, isGeoDb);
    EXPECT_EQ(isGeoDb, 1);
    EXPECT_EQ(count.toInt32(), 0);
    m_point->IsValid("RegionBndry.mdb", "hztract", regionFolder(), count, isGeoDb);
    EXPECT_EQ(isGeoDb, -1);
    m_point->IsValid("nothing.mdb", "hzSchool", regionFolder(), count, isGeoDb);
    EXPECT_EQ(isGeoDb, 0);
    EXPECT_EQ(errorLog(), "");
}

TEST_F(EqPointTest, ObsoleteMembersOnlyTellTheUser)
{
    int16_t type = 2;
    std::string field = "pga";
    m_point->GenerateThmMap("eqSchool", 0, type, field);
    m_point->AnalyzeInvtForUserDefinedScenario("hzSchool", Variant(), Variant());
    m_point->AnalyzeInvtForProbScenario("hzSchool", 500, Variant());
    EXPECT_EQ(takeMessageTexts(),
              (std::vector<std::string>{": This Method is obsolete , Call GenerateThematicMap",
                                        ": Obsolete method"}));
}

TEST_F(EqPointTest, DeleteTempTableRemovesTheScratchCopyAndToleratesNone)
{
    m_point->DeleteTempTable("hzSchool");
    m_point->ImportData("hzSchool", schools(), "schools");
    const std::string temp = context::studyRegionContext().SystemDataFolder + "temp.mdb";
    EXPECT_TRUE(geodatabase::Workspace::open(temp).exists("hzSchool"));
    m_point->DeleteTempTable("hzSchool");
    EXPECT_FALSE(geodatabase::Workspace::open(temp).exists("hzSchool"));
}

} // namespace
} // namespace brevant::test
