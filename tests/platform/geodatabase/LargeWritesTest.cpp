#include "platform/automation/AutomationError.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RowCopy.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geodatabase/WriteBatch.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/FullDisk.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace brevant::platform::geodatabase {
namespace {

using automation::Variant;
using geometry::Geometry;
using geometry::ShapeType;

// Many points appended at once into a class that holds fewer: its spatial index is rebuilt
// once at the end instead of growing row by row.
class BulkAppend : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_path = m_dir.path() / "ef.mdb";
        m_sites = Workspace::createGeoPackage(m_path).createFeatureClass(
            "sites",
            Fields({{"Name", FieldType::String, 12, {}},
                    {"lqfsuscat", FieldType::SmallInteger, 0, {}}}),
            ShapeType::Point);
        fill(*m_sites, "old", 12000, -1);
        // Opened afresh, as a class on disk is: GDAL builds the index of a class it has just
        // created only when it lets go of the file.
        m_sites.reset();
        m_sites = Workspace::open(m_path).openFeatureClass("sites");
        m_incoming = Workspace::createGeoPackage(m_dir.path() / "user.gpkg")
                         .createFeatureClass("incoming",
                                             Fields({{"Name", FieldType::String, 12, {}},
                                                     {"lqfsuscat", FieldType::Integer, 0, {}}}),
                                             ShapeType::Point, geometry::SpatialReference::nad83(),
                                             "Shape", false);
    }

    // Points spread over ten degrees; row `overflowAt` holds a category no 16-bit field takes.
    void fill(FeatureClass& target, const std::string& prefix, int count, int overflowAt)
    {
        InsertCursor insert = target.insert();
        for (int i = 0; i < count; ++i) {
            Row row = target.createRow();
            row.setValue(2, prefix + std::to_string(i));
            row.setValue(3, Variant(int32_t{i == overflowAt ? 40000 : 1}));
            row.setShape(Geometry::point(
                {-124.0 + 10.0 * m_uniform(m_random), 32.0 + 10.0 * m_uniform(m_random)}));
            insert.insertRow(row);
        }
        insert.flush();
    }

    // What SQLite's own check says of the index, its entries and the triggers that keep it.
    struct IndexState {
        std::string check;
        int64_t entries = 0;
        int64_t triggers = 0;
        int64_t rows = 0;
    };
    IndexState indexState() const
    {
        tabular::SqliteDatabase db(m_path.string(), tabular::SqliteDatabase::Mode::ReadOnly);
        IndexState state;
        tabular::SqliteDatabase::Statement rows(db, "SELECT count(*) FROM sites");
        rows.step();
        state.rows = rows.int64(0);
        tabular::SqliteDatabase::Statement check(db, "SELECT rtreecheck('rtree_sites_Shape')");
        check.step();
        state.check = check.text(0);
        tabular::SqliteDatabase::Statement entries(db, "SELECT count(*) FROM rtree_sites_Shape");
        entries.step();
        state.entries = entries.int64(0);
        tabular::SqliteDatabase::Statement triggers(
            db, "SELECT count(*) FROM sqlite_master WHERE type = 'trigger' AND "
                "name LIKE 'rtree_sites_Shape_%'");
        triggers.step();
        state.triggers = triggers.int64(0);
        return state;
    }

    // Names found through the index in a box, and by looking at every row.
    std::pair<std::set<std::string>, std::set<std::string>> namesIn(double xmin, double ymin,
                                                                    double xmax, double ymax)
    {
        std::set<std::string> indexed;
        const Geometry box = Geometry::polygon(
            {{{xmin, ymin}, {xmax, ymin}, {xmax, ymax}, {xmin, ymax}, {xmin, ymin}}});
        Cursor search = m_sites->search(QueryFilter::spatial(box));
        Row row;
        while (search.next(row)) {
            indexed.insert(row.value(2).toString());
        }
        std::set<std::string> walked;
        Cursor all = m_sites->search();
        while (all.next(row)) {
            const auto p = row.shape().firstPoint();
            if (p.x >= xmin && p.x <= xmax && p.y >= ymin && p.y <= ymax) {
                walked.insert(row.value(2).toString());
            }
        }
        return {indexed, walked};
    }

    test::TempDir m_dir;
    std::filesystem::path m_path;
    std::shared_ptr<FeatureClass> m_sites;
    std::shared_ptr<FeatureClass> m_incoming;
    std::mt19937 m_random{20261124};
    std::uniform_real_distribution<double> m_uniform{0.0, 1.0};
};

TEST_F(BulkAppend, TheRebuiltIndexHoldsEveryRowAndKeepsUpWithLaterEdits)
{
    fill(*m_incoming, "new", 30000, -1);
    EXPECT_EQ(appendRows(*m_incoming, *m_sites), 30000);
    IndexState state = indexState();
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(state.entries, 42000);
    EXPECT_EQ(state.triggers, 6);
    const auto [indexed, walked] = namesIn(-120.0, 35.0, -119.0, 36.5);
    EXPECT_GT(walked.size(), 500U);
    EXPECT_EQ(indexed, walked);

    // The restored triggers keep the packed tree in step with row-by-row edits.
    {
        Cursor cursor = m_sites->update(QueryFilter::where("Name = 'new7'"));
        Row row;
        ASSERT_TRUE(cursor.next(row));
        row.setShape(Geometry::point({-100.0, 45.0}));
        cursor.updateRow(row);
        cursor.flush();
    }
    EXPECT_EQ(m_sites->deleteSearchedRows(QueryFilter::where("Name IN ('old3', 'new9')")), 2);
    state = indexState();
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(state.entries, 41998);
    EXPECT_EQ(namesIn(-100.5, 44.5, -99.5, 45.5).first, std::set<std::string>{"new7"});
}

TEST_F(BulkAppend, RowsFromAClassOfTheSameDatabase)
{
    auto neighbours = m_sites->workspace().createFeatureClass(
        "neighbours",
        Fields({{"Name", FieldType::String, 12, {}}, {"lqfsuscat", FieldType::Integer, 0, {}}}),
        ShapeType::Point);
    fill(*neighbours, "near", 15000, -1);
    EXPECT_EQ(appendRows(*neighbours, *m_sites), 15000);
    const IndexState state = indexState();
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(state.entries, 27000);
    EXPECT_EQ(state.triggers, 6);
}

TEST_F(BulkAppend, AttributeUpdatesPutBackTheTriggersTheyLeaveOut)
{
    m_sites->calculate(3, Variant(int32_t{2}));
    {
        Cursor cursor = m_sites->update(QueryFilter::fields({"lqfsuscat"}));
        Row row;
        for (int i = 0; i < 30000 && cursor.next(row); ++i) {
            row.setValue(3, Variant(int32_t{3}));
            cursor.updateRow(row);
            cursor.flush();
        }
    }
    const IndexState state = indexState();
    EXPECT_EQ(state.triggers, 6);
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(m_sites->rowCount(QueryFilter::where("lqfsuscat = 3")), 12000);
    EXPECT_EQ(m_sites->rowCount(QueryFilter::where("lqfsuscat = 3"), 100), 100);
}

TEST_F(BulkAppend, AnAppendThatFailsHalfWayLeavesTheIndexWhole)
{
    fill(*m_incoming, "new", 30000, 20000);
    try {
        appendRows(*m_incoming, *m_sites);
        FAIL() << "a category of 40000 went into a 16-bit field";
    } catch (const automation::AutomationError& error) {
        EXPECT_EQ(error.number(), 6);
    }
    // The rows stored before the failure stay, as they do without the deferred index; the
    // index holds them and its triggers are back.
    EXPECT_EQ(m_sites->rowCount(), 32000);
    const IndexState state = indexState();
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(state.entries, 32000);
    EXPECT_EQ(state.triggers, 6);
    const auto [indexed, walked] = namesIn(-118.0, 38.0, -116.0, 39.0);
    EXPECT_EQ(indexed, walked);
}

TEST_F(BulkAppend, AWriteBatchKeepsWhatSucceededBeforeAFailedStatement)
{
    {
        tabular::SqliteDatabase db(m_path.string(), tabular::SqliteDatabase::Mode::ReadWrite);
        db.execute("CREATE TRIGGER no_names BEFORE UPDATE OF Name ON sites "
                   "BEGIN SELECT RAISE(ABORT, 'names stay'); END");
    }
    try {
        const WriteBatch batch(*m_sites);
        // Taken back alone, with the index triggers it had left out.
        EXPECT_THROW(m_sites->calculate(2, Variant(std::string("x"))), automation::PlatformError);
        m_sites->addField({"pga", FieldType::Double, 0, {}});
        m_sites->calculate(4, Variant(0.5));
        m_sites->calculate(3, Variant(int32_t{2}));
        throw std::runtime_error("the caller fails after the statements");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(m_sites->rowCount(QueryFilter::where("lqfsuscat = 2 AND pga = 0.5")), 12000);
    EXPECT_EQ(m_sites->rowCount(QueryFilter::where("Name = 'x'")), 0);
    const IndexState state = indexState();
    EXPECT_EQ(state.triggers, 6);
    EXPECT_EQ(state.check, "ok");
}

TEST_F(BulkAppend, AFullDiskAtAnyStageLeavesTheIndexInStepWithTheRows)
{
    fill(*m_incoming, "new", 12000, -1);
    test::FullDisk disk;
    // Opened again, so that its database goes through the disk that fills up.
    m_sites.reset();
    m_sites = Workspace::open(m_path).openFeatureClass("sites");
    const int failures = test::fillAtEveryStage(
        disk, [&] { appendRows(*m_incoming, *m_sites); },
        [&] {
            m_sites.reset();
            EXPECT_EQ(test::unsoundDatabases(m_dir.path()), std::vector<std::string>{});
            const IndexState state = indexState();
            EXPECT_EQ(state.check, "ok") << "after " << disk.writes() << " writes";
            EXPECT_EQ(state.triggers, 6);
            EXPECT_EQ(state.entries, state.rows);
            m_sites = Workspace::open(m_path).openFeatureClass("sites");
        });
    EXPECT_GT(failures, 3);
    // Closed while the disk that opened it is still there.
    m_sites.reset();
    const IndexState state = indexState();
    EXPECT_EQ(state.check, "ok");
    EXPECT_EQ(state.entries, state.rows);
    EXPECT_GE(state.rows, 24000);
}

} // namespace
} // namespace brevant::platform::geodatabase
