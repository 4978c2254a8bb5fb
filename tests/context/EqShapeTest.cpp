#include "context/EqShape.h"

#include "context/StudyRegionContext.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/Map.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::context {
namespace {

using platform::automation::AutomationError;
namespace LibraryCode = platform::automation::LibraryCode;

class StudyRegionInit : public test::HostFixture {
protected:
    static AutomationError initError()
    {
        try {
            Init();
        } catch (const AutomationError& e) {
            return e;
        }
        ADD_FAILURE() << "Init did not fail";
        return AutomationError(0, "", "");
    }
};

TEST_F(StudyRegionInit, FillsFoldersPathsAndSettings)
{
    openStudyRegion(true);
    const auto& ctx = studyRegionContext();
    EXPECT_TRUE(ctx.ContextReady);
    EXPECT_EQ(ctx.RegionFolder, regionFolder());
    EXPECT_EQ(ctx.RegionFolder.back(), '/');
    EXPECT_EQ(ctx.SystemDataFolder, (root() / "System").string() + "/");
    EXPECT_EQ(ctx.StateDataFolder, (root() / "State").string() + "/");
    EXPECT_EQ(ctx.ScenarioFolder, (root() / "Scenario").string() + "/");
    EXPECT_EQ(ctx.ErrorLogPath, regionFolder() + "EqErrorLog.txt");
    EXPECT_EQ(ctx.RegionBoundaryPath, regionFolder() + "RegionBndry.mdb");
    EXPECT_EQ(ctx.RegionDatabaseName, "sqlite:" + regionFolder() + "region.sqlite");
    EXPECT_EQ(ctx.AggLevel, 2);
    EXPECT_EQ(ctx.HazardFlags, (std::array<bool, 3>{true, false, true}));
    EXPECT_NE(ctx.GisDataService, nullptr);
    EXPECT_NE(ctx.RegionSelectionStore, nullptr);
}

TEST_F(StudyRegionInit, HostObjectsAreCreatedOnceAndRegionReadEveryTime)
{
    openStudyRegion(true);
    addRegion("Lakeside", 2, false, true, false);
    setCurrentRegion("Lakeside");
    openStudyRegion(false);

    EXPECT_EQ(created().at("RegionContextService"), 1);
    EXPECT_EQ(created().at("RegionSettingsStore"), 1);
    EXPECT_EQ(created().at("GisDataService"), 1);
    EXPECT_EQ(created().at("RegionSelectionStore"), 1);
    EXPECT_EQ(studyRegionContext().RegionFolder, regionFolder("Lakeside"));
    // Opened by a class that does not refresh them, the flags stay those of Testville.
    EXPECT_EQ(studyRegionContext().HazardFlags, (std::array<bool, 3>{true, false, true}));
    EXPECT_EQ(created().at("RegionHazardService"), 1);

    openStudyRegion(true);
    EXPECT_EQ(studyRegionContext().HazardFlags, (std::array<bool, 3>{false, true, false}));
}

TEST_F(StudyRegionInit, RegionNumberBelowOneKeepsTheFlags)
{
    openStudyRegion(true);
    for (const char* id : {"0", "-3"}) {
        setSetting("General", "CurrentRegionID", id);
        openStudyRegion(true);
        EXPECT_EQ(created().at("RegionHazardService"), 1) << id;
        EXPECT_EQ(studyRegionContext().HazardFlags, (std::array<bool, 3>{true, false, true}));
    }
}

TEST_F(StudyRegionInit, FailingStepKeepsWhatWasSetBeforeIt)
{
    openStudyRegion(true);
    addRegion("Lakeside", 2, false, true, false);
    setCurrentRegion("Lakeside");
    setSetting("General", "AggLevel", "4");
    removeSetting("General", "CurrentRegionID");

    const auto error = initError();
    EXPECT_EQ(error.number(), LibraryCode::Procedure);
    EXPECT_EQ(error.description(), "The map engine failed in Init");
    const auto& ctx = studyRegionContext();
    EXPECT_EQ(ctx.RegionFolder, regionFolder("Lakeside"));
    EXPECT_EQ(ctx.AggLevel, 4);
    EXPECT_EQ(ctx.HazardFlags, (std::array<bool, 3>{true, false, true}));

    const std::string log = errorLog("Lakeside");
    EXPECT_NE(log.find("Source = Brevant.LocalHost"), std::string::npos) << log;
    EXPECT_NE(log.find("General/CurrentRegionID"), std::string::npos) << log;
}

TEST_F(StudyRegionInit, SettingBeyondSixteenBitsIsAnOverflow)
{
    openStudyRegion(true);
    setSetting("General", "AggLevel", "40000");
    const auto error = initError();
    EXPECT_EQ(error.number(), LibraryCode::Procedure);
    EXPECT_NE(errorLog().find("Code = 6\nSource = Brevant\nDescription = Overflow\n"),
              std::string::npos)
        << errorLog();
    EXPECT_EQ(studyRegionContext().AggLevel, 2);
}

TEST_F(StudyRegionInit, InventoryDatabaseByTypeCode)
{
    openStudyRegion(true);
    const char* names[] = {"trn.mdb", "util.mdb", "ef.mdb", "hplf.mdb", "uds.mdb"};
    for (int16_t code = 0; code < 5; ++code) {
        EXPECT_EQ(InventoryDatabasePath(code), regionFolder() + names[code]);
    }
    EXPECT_EQ(InventoryDatabasePath(5), "");
    EXPECT_EQ(InventoryDatabasePath(-1), "");
}

TEST(CurrentMapTest, LastAssignmentWins)
{
    auto first = std::make_shared<platform::carto::Map>("first");
    auto second = std::make_shared<platform::carto::Map>("second");
    setCurrentMap(first);
    setCurrentMap(second);
    EXPECT_EQ(CurrentMap(), second);
    setCurrentMap(nullptr);
    EXPECT_EQ(CurrentMap(), nullptr);
}

} // namespace
} // namespace brevant::context
