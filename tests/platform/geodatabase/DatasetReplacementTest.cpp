#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/DatasetReplacement.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::platform::geodatabase {
namespace {

using geometry::Geometry;
using geometry::ShapeType;

/// A map "soil" with rows of type "old", replaced by rows of type "new".
class Replacement : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_path = m_dir.path() / "RegionBndry.mdb";
        m_workspace = Workspace::createGeoPackage(m_path);
        m_soil = m_workspace->createFeatureClass(
            "soil", Fields({{"Type", FieldType::String, 2, {}}}), ShapeType::Polygon);
        fill(*m_soil, "old", 3);
    }

    static void fill(FeatureClass& table, const std::string& type, int count)
    {
        InsertCursor insert = table.insert();
        for (int i = 0; i < count; ++i) {
            Row row = table.createRow();
            row.setValue(2, type);
            row.setShape(Geometry::fromWkt("POLYGON ((0 0, 1 0, 1 1, 0 0))"));
            insert.insertRow(row);
        }
    }

    /// The types stored under `name`, read through a connection of their own.
    std::vector<std::string> stored(const std::string& name) const
    {
        std::vector<std::string> types;
        Cursor cursor = Workspace::open(m_path, true).openFeatureClass(name)->search();
        Row row;
        while (cursor.next(row)) {
            types.push_back(row.value(2).toString());
        }
        return types;
    }

    void execute(const std::string& sql) const
    {
        tabular::SqliteDatabase(m_path.string(), tabular::SqliteDatabase::Mode::ReadWrite)
            .execute(sql);
    }

    test::TempDir m_dir;
    std::filesystem::path m_path;
    std::optional<Workspace> m_workspace;
    std::shared_ptr<FeatureClass> m_soil;
    using Types = std::vector<std::string>;
};

TEST_F(Replacement, PublishedContentTakesTheNameAndNothingElseRemains)
{
    {
        DatasetReplacement replacement(*m_workspace, "soil", *m_soil);
        fill(*replacement.featureClass(), "new", 2);
        EXPECT_EQ(stored("soil"), (Types{"old", "old", "old"})) << "not before it is published";
        replacement.publish();
    }
    EXPECT_EQ(stored("soil"), (Types{"new", "new"}));
    EXPECT_EQ(Workspace::open(m_path, true).datasetNames(), (Types{"soil"}));
}

TEST_F(Replacement, AWriteThatFailsHalfWayLeavesTheOldRows)
{
    EXPECT_THROW(
        {
            DatasetReplacement replacement(*m_workspace, "soil", *m_soil);
            // The database refuses the third row, as a full disk would.
            execute("CREATE TRIGGER full_disk BEFORE INSERT ON soil_partial "
                    "WHEN (SELECT count(*) FROM soil_partial) >= 2 "
                    "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END");
            fill(*replacement.featureClass(), "new", 5);
            replacement.publish();
        },
        automation::PlatformError);
    EXPECT_EQ(stored("soil"), (Types{"old", "old", "old"}));
    EXPECT_EQ(Workspace::open(m_path, true).datasetNames(), (Types{"soil"}))
        << "the unfinished content is dropped";
}

TEST_F(Replacement, ASwapTheStorageRefusesKeepsBothAndTheWorkspaceUsable)
{
    DatasetReplacement replacement(*m_workspace, "soil", *m_soil);
    fill(*replacement.featureClass(), "new", 2);
    execute("CREATE TRIGGER keep_soil BEFORE DELETE ON gpkg_contents "
            "WHEN old.table_name = 'soil' BEGIN SELECT RAISE(ABORT, 'soil is kept'); END");
    EXPECT_THROW(replacement.publish(), automation::PlatformError);
    EXPECT_EQ(stored("soil"), (Types{"old", "old", "old"}));
    EXPECT_EQ(stored("soil_partial"), (Types{"new", "new"}));
    EXPECT_EQ(m_soil->rowCount(), 3) << "open handles still read the stored table";
    fill(*m_soil, "old", 1);
    EXPECT_EQ(stored("soil").size(), 4u);

    execute("DROP TRIGGER keep_soil");
    replacement.publish();
    EXPECT_EQ(stored("soil"), (Types{"new", "new"}));
}

TEST_F(Replacement, AScratchClassAKilledRunLeftIsDroppedByTheNextOne)
{
    auto leftover = m_workspace->createFeatureClass(
        "soil_partial", Fields({{"Type", FieldType::String, 2, {}}}), ShapeType::Polygon);
    fill(*leftover, "xx", 4);
    DatasetReplacement replacement(*m_workspace, "soil", *m_soil);
    fill(*replacement.featureClass(), "new", 1);
    replacement.publish();
    EXPECT_EQ(stored("soil"), (Types{"new"}));
}

} // namespace
} // namespace brevant::platform::geodatabase
