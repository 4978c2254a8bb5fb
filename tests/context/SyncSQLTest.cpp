#include "context/SyncSQL.h"

#include "context/EqShape.h"
#include "context/InventoryRegionFixture.h"
#include "context/StudyRegionContext.h"
#include "host/HostServices.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalHostServices.h"
#include "samplehost/SampleHost.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/tabular/SqliteDatabase.h"

#include <gtest/gtest.h>

namespace brevant::context {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::geometry::Geometry;

class EditSync : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        m_bridges =
            addPointInventory("hzHighwayBridge", {{"HB000001", -120, 37}, {"HB000002", -121, 38}});
        executeSql("INSERT INTO hzHighwayBridge (HighwayBridgeId, Name, Latitude) VALUES "
                   "('HB000001', 'Old', 0), ('HB000002', 'Old', 0);"
                   "INSERT INTO EqHighwayBridge (HighwayBridgeId, stype) VALUES "
                   "('HB000001', 'D'), ('HB000002', 'D')");
    }

    // Applies `edit` to the first record and stores it.
    template <class Edit> void editFirst(Edit&& edit)
    {
        geodatabase::Cursor cursor = m_bridges->update();
        geodatabase::Row row;
        cursor.next(row);
        edit(row);
        cursor.updateRow(row);
    }

    std::string server(const std::string& table, const std::string& id, const std::string& column)
    {
        return sqlValue("SELECT " + column + " FROM " + table + " WHERE HighwayBridgeId = '" + id +
                        "'");
    }

    std::shared_ptr<geodatabase::FeatureClass> m_bridges;
};

TEST_F(EditSync, MovedLocationsAndTheirTractsReachTheAttributeTable)
{
    editFirst([&](geodatabase::Row& row) {
        row.setShape(Geometry::point({-121.5, 38.25}));
        row.setValue(m_bridges->findField("Tract"), "06001400200");
    });
    SyncLocMovedFromMap("hzHighwayBridge");
    EXPECT_EQ(server("hzHighwayBridge", "HB000001", "Latitude || ' ' || Longitude || ' ' || Tract"),
              "38.25 -121.5 06001400200");
    EXPECT_EQ(server("hzHighwayBridge", "HB000002", "Latitude"), "38.0");
    EXPECT_EQ(server("hzHighwayBridge", "HB000002", "Name"), "Old") << "a move copies locations";
}

TEST_F(EditSync, EditedAndImportedRecordsReachBothServerTables)
{
    editFirst([&](geodatabase::Row& row) {
        row.setValue(m_bridges->findField("Name"), "Renamed");
        row.setValue(m_bridges->findField("stype"), "C");
    });
    {
        geodatabase::InsertCursor insert = m_bridges->insert();
        auto row = m_bridges->createRow();
        row.setValue(2, "HB000003");
        row.setValue(m_bridges->findField("lqfsuscat"), int16_t{4});
        row.setShape(Geometry::point({-122, 39.5}));
        insert.insertRow(row);
    }
    SyncTabEditedFromMap("hzHighwayBridge", false);
    EXPECT_EQ(server("hzHighwayBridge", "HB000001", "Name"), "Old") << "nothing processed";

    SyncTabEditedFromMap("hzHighwayBridge", true);
    EXPECT_EQ(server("hzHighwayBridge", "HB000001", "Name"), "Renamed");
    EXPECT_EQ(server("EqHighwayBridge", "HB000001", "stype"), "C");
    EXPECT_EQ(server("EqHighwayBridge", "HB000003", "lqfsuscat"), "4");
    EXPECT_EQ(server("EqHighwayBridge", "HB000003", "pga"), "<null>");
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM hzHighwayBridge"), "3");

    addPointInventory("eqAebm", {{"AE000001", -120, 37}}, "uds.mdb");
    SyncTabEditedFromMap("eqAebm", true);
    EXPECT_EQ(sqlValue("SELECT AebmId FROM EqAebm"), "AE000001") << "no hzAebm to fail on";
}

TEST_F(EditSync, FailuresAreRecordedAndLeaveTheServerTablesAsTheyWere)
{
    const auto error = test::errorOf([] { SyncLocMovedFromMap("hzNotCatalogued"); });
    EXPECT_EQ(error.description(), "The map engine failed in SyncLocMovedFromMap");
    EXPECT_NE(errorLog().find("Source = Brevant.LocalHost\n"), std::string::npos) << errorLog();

    editFirst([&](geodatabase::Row& row) { row.setValue(m_bridges->findField("Name"), "New"); });
    executeSql("CREATE TRIGGER refuse BEFORE UPDATE ON hzHighwayBridge WHEN "
               "NEW.HighwayBridgeId = 'HB000002' BEGIN SELECT RAISE(ABORT, 'refused'); END");
    test::errorOf([] { SyncTabEditedFromMap("hzHighwayBridge", true); });
    EXPECT_EQ(server("hzHighwayBridge", "HB000001", "Name"), "Old");
}

// A sample region as the administration commands build it, with filled server tables.
TEST(SampleRegionSync, MovedSchoolReachesItsServerRow)
{
    struct HostGuard {
        ~HostGuard()
        {
            resetStudyRegionContext();
            host::installHostServices(nullptr);
        }
    } guard;
    test::TempDir dir;
    samplehost::writeSampleHost(dir.path(), samplehost::SampleSize::Small, 7);
    host::installHostServices(std::make_shared<host::local::LocalHostServices>(dir.path()));
    resetStudyRegionContext();
    openStudyRegion(true);

    platform::automation::Variant opened;
    OpenMap("hzSchool", studyRegionContext().RegionFolder + "ef.mdb", opened);
    auto schools = opened.objectAs<geodatabase::FeatureClass>();
    std::string id;
    platform::geometry::Point moved;
    {
        geodatabase::Cursor cursor = schools->update();
        geodatabase::Row row;
        ASSERT_TRUE(cursor.next(row));
        id = row.value(2).toString();
        moved = {row.shape().firstPoint().x + 0.001, row.shape().firstPoint().y - 0.002};
        row.setShape(Geometry::point(moved));
        cursor.updateRow(row);
    }
    SyncLocMovedFromMap("hzSchool");

    const auto host = host::local::HostRoot::load(dir.path());
    platform::tabular::SqliteDatabase db(host.regionDatabasePath(host.currentRegion()).string(),
                                         platform::tabular::SqliteDatabase::Mode::ReadOnly);
    platform::tabular::SqliteDatabase::Statement query(
        db, "SELECT Latitude, Longitude FROM hzSchool WHERE SchoolId = ?1");
    query.bind(1, id);
    ASSERT_TRUE(query.step()) << id;
    EXPECT_DOUBLE_EQ(query.real(0), moved.y);
    EXPECT_DOUBLE_EQ(query.real(1), moved.x);
}

} // namespace
} // namespace brevant::context
