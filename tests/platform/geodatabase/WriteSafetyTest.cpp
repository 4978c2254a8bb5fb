#include "platform/automation/AutomationError.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RowCopy.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::platform::geodatabase {
namespace {

using automation::Variant;
using geometry::Geometry;
using geometry::ShapeType;

class WriteSafety : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_path = m_dir.path() / "trn.mdb";
        auto workspace = Workspace::createGeoPackage(m_path);
        m_sites = workspace.createFeatureClass(
            "sites",
            Fields({{"Name", FieldType::String, 10, {}}, {"lqfsuscat", FieldType::SmallInteger, 0, {}}}),
            ShapeType::Point);
        InsertCursor insert = m_sites->insert();
        for (int i = 0; i < 5; ++i) {
            Row row = m_sites->createRow();
            row.setValue(2, "S" + std::to_string(i));
            row.setValue(3, int16_t{1});
            row.setShape(Geometry::point({-122.0 + i, 37.0}));
            insert.insertRow(row);
        }
    }

    std::vector<std::string> categories() const
    {
        std::vector<std::string> values;
        Cursor cursor = m_sites->search();
        Row row;
        while (cursor.next(row)) {
            values.push_back(row.value(3).toString());
        }
        return values;
    }

    test::TempDir m_dir;
    std::filesystem::path m_path;
    std::shared_ptr<FeatureClass> m_sites;
};

int32_t errorNumber(const std::function<void()>& body)
{
    try {
        body();
    } catch (const automation::AutomationError& error) {
        return error.number();
    }
    return 0;
}

TEST_F(WriteSafety, ASixteenBitFieldRefusesWhatDoesNotFitOnEveryWritePath)
{
    EXPECT_EQ(errorNumber([&] { m_sites->calculate(3, Variant(40000.0)); }), 6);
    EXPECT_EQ(errorNumber([&] {
                  Cursor cursor = m_sites->update();
                  Row row;
                  cursor.next(row);
                  row.setValue(3, Variant(int32_t{-40000}));
                  cursor.updateRow(row);
              }),
              6);
    EXPECT_EQ(categories(), std::vector<std::string>(5, "1"));
    m_sites->calculate(3, Variant(int32_t{32767}));
    EXPECT_EQ(categories(), std::vector<std::string>(5, "32767"));
}

TEST_F(WriteSafety, AClassKeepsItsShapeType)
{
    InsertCursor insert = m_sites->insert();
    Row row = m_sites->createRow();
    row.setShape(Geometry::polyline({{{-122.0, 37.0}, {-121.0, 37.0}}}));
    EXPECT_THROW(insert.insertRow(row), automation::PlatformError);
    insert.flush();
    EXPECT_EQ(m_sites->rowCount(), 5);
}

TEST_F(WriteSafety, DeletingSelectedRowsIsAllOrNothing)
{
    {
        // The fourth row cannot go: the database itself refuses half-way through.
        tabular::SqliteDatabase db(m_path.string(), tabular::SqliteDatabase::Mode::ReadWrite);
        db.execute("CREATE TRIGGER keep_s3 BEFORE DELETE ON sites WHEN old.Name = 'S3' "
                   "BEGIN SELECT RAISE(ABORT, 'S3 is kept'); END");
    }
    EXPECT_THROW(m_sites->deleteSearchedRows(QueryFilter::where("lqfsuscat = 1")),
                 automation::PlatformError);
    EXPECT_EQ(m_sites->rowCount(), 5);
    EXPECT_EQ(m_sites->deleteSearchedRows(QueryFilter::where("Name <> 'S3'")), 4);
    EXPECT_EQ(m_sites->rowCount(), 1);
}

TEST_F(WriteSafety, AppendedShapesMoveIntoTheTargetsCoordinateSystem)
{
    auto workspace = Workspace::open(m_path);
    auto mercator = workspace.createFeatureClass(
        "mercator", Fields({{"Name", FieldType::String, 10, {}}}), ShapeType::Point,
        geometry::SpatialReference::fromEpsg(3857));
    {
        InsertCursor insert = mercator->insert();
        Row row = mercator->createRow();
        row.setValue(2, "SF");
        row.setShape(Geometry::point({-13627361.0, 4544761.0}));
        insert.insertRow(row);
    }
    EXPECT_EQ(appendRows(*mercator, *m_sites), 1);
    Cursor cursor = m_sites->search(QueryFilter::where("Name = 'SF'"));
    Row row;
    ASSERT_TRUE(cursor.next(row));
    EXPECT_NEAR(row.shape().firstPoint().x, -122.4167, 1e-3);
    EXPECT_NEAR(row.shape().firstPoint().y, 37.7542, 1e-3);
}

TEST_F(WriteSafety, ACursorOfSomeFieldsChangesThoseAndKeepsTheRest)
{
    {
        Cursor cursor = m_sites->update(QueryFilter::fields({"lqfsuscat"}));
        Row row;
        while (cursor.next(row)) {
            EXPECT_TRUE(row.value(2).isNull() || row.value(2).isEmpty());
            EXPECT_FALSE(row.shape().isNull());
            row.setValue(3, int16_t{2});
            cursor.updateRow(row);
        }
        cursor.flush();
    }
    EXPECT_EQ(categories(), std::vector<std::string>(5, "2"));
    Cursor names = m_sites->search(QueryFilter::where("Name = 'S4'"));
    Row row;
    ASSERT_TRUE(names.next(row));

    // A moved shape would need the whole row, which this cursor never read.
    Cursor partial = m_sites->update(QueryFilter::fields({"lqfsuscat"}));
    ASSERT_TRUE(partial.next(row));
    row.setShape(Geometry::point({-100.0, 30.0}));
    EXPECT_THROW(partial.updateRow(row), automation::PlatformError);
    EXPECT_THROW(m_sites->search(QueryFilter::fields({"NoSuchField"})), automation::PlatformError);
}

TEST_F(WriteSafety, AFlushCommitsOnceTheRowsRanOut)
{
    const auto seenElsewhere = [&] {
        const auto other = Workspace::open(m_path, true).openFeatureClass("sites");
        Cursor cursor = other->search(QueryFilter::where("lqfsuscat = 7"));
        int count = 0;
        Row row;
        while (cursor.next(row)) {
            ++count;
        }
        return count;
    };
    Cursor cursor = m_sites->update();
    Row row;
    ASSERT_TRUE(cursor.next(row));
    row.setValue(3, int16_t{7});
    cursor.updateRow(row);
    // Mid-walk flushes are frequent; they need not reach the disk each time.
    cursor.flush();
    while (cursor.next(row)) {
        row.setValue(3, int16_t{7});
        cursor.updateRow(row);
    }
    cursor.flush();
    EXPECT_EQ(seenElsewhere(), 5);
}

} // namespace
} // namespace brevant::platform::geodatabase
