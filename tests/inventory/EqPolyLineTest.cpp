#include "inventory/EqPolyLine.h"

#include "inventory/InventoryFixture.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"

namespace brevant::test {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::geometry::ShapeType;

constexpr int32_t kProcedure = static_cast<int32_t>(0x8004060C);

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class EqPolyLineTest : public InventoryFixture {
protected:
    void SetUp() override
    {
        InventoryFixture::SetUp();
        m_line = std::make_shared<inventory::EqPolyLine>();
    }

    /// Roads: one in the west tract, one leaving the region eastwards, one wholly outside.
    std::string roads()
    {
        return writeSource("roads.gpkg", "roads", ShapeType::Polyline,
                           {{"West", "LINESTRING (-122.29 37.83, -122.26 37.83)"},
                            {"Leaving", "LINESTRING (-122.22 37.82, -122.10 37.82)"},
                            {"Away", "LINESTRING (-122.30 37.90, -122.20 37.95)"}});
    }

    std::shared_ptr<inventory::EqPolyLine> m_line;
};

TEST_F(EqPolyLineTest, ImportCutsLinesAtTheBoundaryAndFillsCountiesIdentifiersAndTracts)
{
    m_line->ImportData("hzHighwaySegment", roads(), "roads");

    const auto segments = inventory("hzHighwaySegment");
    EXPECT_EQ(byId(*segments, "CountyFips"),
              (std::map<std::string, std::string>{{"HI000001", "06001"}, {"HI000002", "06013"}}));
    geodatabase::Cursor cursor = segments->search();
    geodatabase::Row row;
    double east = -180.0;
    while (cursor.next(row)) {
        east = std::max(east, row.shape().envelope().xmax());
    }
    EXPECT_NEAR(east, kEast, 1e-9) << "the leaving road ends at the boundary";

    const auto hazard = regionClass(segments->workspace().path().filename().string(),
                                    "EqHighwaySegmenthft");
    EXPECT_EQ(byId(*hazard, "Tract"), (std::map<std::string, std::string>{
                                          {"HI000001", "06001400100"}, {"HI000002", "06001400200"}}));
    // The first pass is gone; the clipped copy stays for the host.
    const auto temp = geodatabase::Workspace::open(root() / "System/temp.mdb");
    EXPECT_FALSE(temp.exists("ImphzHighwaySegment"));
    EXPECT_TRUE(temp.exists("hzHighwaySegment"));
}

TEST_F(EqPolyLineTest, AnEmptyOrFarSourceFailsWithItsReasonAndImportsNothing)
{
    const std::string empty = writeSource("empty.gpkg", "roads", ShapeType::Polyline, {});
    const auto none = errorOf([&] { m_line->ImportData("hzHighwaySegment", empty, "roads"); });
    EXPECT_EQ(none.number(), kProcedure);
    EXPECT_TRUE(endsWith(none.description(), " ClipImportData ,  Table to be imported is empty"))
        << none.description();

    const std::string far = writeSource("far.gpkg", "roads", ShapeType::Polyline,
                                        {{"Far", "LINESTRING (-100 40, -99 41)"}});
    const auto outside = errorOf([&] { m_line->ImportData("hzHighwaySegment", far, "roads"); });
    EXPECT_TRUE(endsWith(outside.description(),
                         " ClipImportData ,  Table has no objects inside the study region"))
        << outside.description();

    EXPECT_EQ(inventory("hzHighwaySegment")->rowCount(), 0);
    // A failed import leaves nothing behind that would double the next one.
    m_line->ImportData("hzHighwaySegment", roads(), "roads");
    EXPECT_EQ(inventory("hzHighwaySegment")->rowCount(), 2);
}

TEST_F(EqPolyLineTest, LeveesGetNoHazardTableRecords)
{
    m_line->ImportData("hzLevees", roads(), "roads");
    EXPECT_EQ(inventory("hzLevees")->rowCount(), 2);
    const auto database = inventory("hzLevees")->workspace();
    EXPECT_FALSE(database.exists("EqLeveeshft"));
}

TEST_F(EqPolyLineTest, UpdateTractValueTakesTheContainingOrNearestTract)
{
    m_line->ImportData("hzHighwaySegment", roads(), "roads");
    const auto segments = inventory("hzHighwaySegment");
    auto hazard = regionClass(segments->workspace().path().filename().string(),
                              "EqHighwaySegmenthft");
    hazard->calculate(hazard->findField("Tract"), Variant::null());
    m_line->UpdateTractValue(Variant(hazard));
    EXPECT_EQ(column(*hazard, "Tract"),
              (std::vector<std::string>{"06001400100", "06001400200"}));
    EXPECT_EQ(errorOf([&] { m_line->UpdateTractValue(Variant()); }).number(), kProcedure);
}

TEST_F(EqPolyLineTest, ObsoleteMembersTellTheUserAndTheProbabilisticOneStillRuns)
{
    m_line->ImportLineData("hzHighwaySegment", 0, false, "", "");
    m_line->AnalyzeInvtForUserDefinedScenario("hzHighwaySegment", Variant(), Variant());
    const auto error =
        errorOf([&] { m_line->AnalyzeInvtForProbScenario("no such set", 500, Variant()); });
    EXPECT_EQ(takeMessageTexts(), (std::vector<std::string>{": Obsolete Method", ": Obsolete method",
                                                            ": Obsolete Method"}));
    EXPECT_NE(error.description().find(" AnalyzeInvtForProbScenario"), std::string::npos);
}

TEST_F(EqPolyLineTest, IsValidWantsAPolylineClass)
{
    Variant count;
    int16_t isGeoDb = 0;
    const auto segments = inventory("hzHighwaySegment");
    const std::string database = segments->workspace().path().filename().string();
    m_line->IsValid(database, "hzHighwaySegment", regionFolder(), count, isGeoDb);
    EXPECT_EQ(isGeoDb, 1);
    EXPECT_EQ(count.toInt32(), 0);
    m_line->IsValid("RegionBndry.mdb", "hztract", regionFolder(), count, isGeoDb);
    EXPECT_EQ(isGeoDb, -1);
}

} // namespace
} // namespace brevant::test
