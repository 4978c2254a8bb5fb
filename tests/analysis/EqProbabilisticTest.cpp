#include "analysis/EqProbabilistic.h"

#include "analysis/AnalysisRegionFixture.h"
#include "analysis/AnalysisSupport.h"
#include "context/EqUtilFunctions.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace brevant::analysis {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using test::Zone;

// Two map zones side by side with values for the return periods 100 and 500; the first bridge
// lies in the west zone, the second in the east one, the third half a degree east of both.
class ProbabilisticAnalysis : public test::AnalysisRegionFixture {
protected:
    void SetUp() override
    {
        AnalysisRegionFixture::SetUp();
        addBridges();
    }

    void writeTwoZones()
    {
        writeUsgsMap({{-100,
                       40,
                       1,
                       {{"pga100", 0.01},
                        {"pga500", 0.11},
                        {"pgv500", 12.0},
                        {"sa03500", 0.21},
                        {"sa10500", 0.31}}},
                      {-99,
                       40,
                       1,
                       {{"pga100", 0.02},
                        {"pga500", 0.12},
                        {"pgv500", 22.0},
                        {"sa03500", 0.22},
                        {"sa10500", 0.32}}}});
    }

    void analyse(std::string table, int16_t period, bool isPoint = true)
    {
        AnalyzeProbDefinedScenario(table, period, Variant(), isPoint);
    }

    void catalogueTracts()
    {
        host::local::RegionDatabase(
            host::local::HostRoot::load(root()).regionDatabasePath("Testville"))
            .putInventoryClass({"eqTract", "RegionBndry.mdb", "P", ""});
    }
};

TEST_F(ProbabilisticAnalysis, ReturnPeriodPicksItsFieldsAndOutsideSitesTakeTheNearestZone)
{
    writeTwoZones();
    analyse("hzHighwayBridge", 500);

    const auto bridges = openClass("trn.mdb", "hzHighwayBridge");
    EXPECT_EQ(fieldNames(*bridges, 11), (std::vector<std::string>{"pgv", "pga", "sa03", "sa10"}));
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.11, 0.12, 0.12}));
    EXPECT_EQ(bridgeValues("pgv"), (std::vector<double>{12.0, 22.0, 22.0}));
    EXPECT_EQ(bridgeValues("sa03"), (std::vector<double>{0.21, 0.22, 0.22}));
    EXPECT_EQ(bridgeValues("sa10"), (std::vector<double>{0.31, 0.32, 0.32}));

    EXPECT_EQ(sqlValue("SELECT sa10 FROM EqHighwayBridge WHERE HighwayBridgeId = 'HB000003'"),
              "0.32");
    EXPECT_FALSE(probabilisticState().usgs) << "the map is released at the end";
    EXPECT_EQ(probabilisticState().returnPeriod, "500");
    const auto& list = probabilisticState().mapTypes.array().elements();
    EXPECT_EQ(list, (std::vector<Variant>{"PGVM", "PGAM", "SA03", "SA10"}));
    EXPECT_EQ(errorLog(), "");

    analyse("hzHighwayBridge", 100);
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.01, 0.02, 0.02}));
}

TEST_F(ProbabilisticAnalysis, UnknownReturnPeriodIsRecordedByTheFieldLookup)
{
    writeTwoZones();
    analyse("hzHighwayBridge", 500);

    const auto error = test::errorOf([&] { analyse("hzHighwayBridge", 123); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(error.description(), "The map engine failed in UpdateProbFieldValues");
    EXPECT_EQ(errorRecordCount(), 1);
    EXPECT_NE(errorLog().find("pga123"), std::string::npos) << errorLog();
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.0, 0.0, 0.0}))
        << "added and reset before the failure";
    EXPECT_TRUE(probabilisticState().usgs) << "a failure leaves the map open";
}

TEST_F(ProbabilisticAnalysis, MissingMapEndsTheAnalysisAfterTheFieldsWereReset)
{
    writeTwoZones();
    analyse("hzHighwayBridge", 500);
    std::filesystem::remove(regionFolder() + "USGS.mdb");

    const auto error = test::errorOf([&] { analyse("hzHighwayBridge", 500); });
    EXPECT_EQ(error.description(), "The map engine failed in UpdateProbFieldValues");
    EXPECT_EQ(errorRecordCount(), 1);
    EXPECT_NE(errorLog().find("USGS.mdb"), std::string::npos) << "the reason is kept";
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.0, 0.0, 0.0}))
        << "no site keeps the values of the earlier run";
    EXPECT_EQ(bridgeValues("sa10"), (std::vector<double>{0.0, 0.0, 0.0}));
}

TEST_F(ProbabilisticAnalysis, ContainingPolygonWinsOverOneTheSiteOnlyTouches)
{
    // The east zone overlaps the west one: a site on the west zone's east edge lies inside the
    // east zone, while both are at distance 0 from it.
    writeUsgsMap(
        {{-100, 40, 1, {{"pga500", 0.11}, {"pgv500", 1.0}, {"sa03500", 0.0}, {"sa10500", 0.0}}},
         {-99.5, 40, 1, {{"pga500", 0.12}, {"pgv500", 2.0}, {"sa03500", 0.0}, {"sa10500", 0.0}}}});
    addPointInventory(
        "hzSchool",
        {{"HS000001", -99.0, 40.5}, {"HS000002", -99.8, 40.5}, {"HS000003", -60.0, 10.0}},
        "ef.mdb");

    analyse("hzSchool", 500);

    const auto schools = openClass("ef.mdb", "hzSchool");
    EXPECT_DOUBLE_EQ(valueOf(*schools, "HS000001", "pga").toDouble(), 0.12);
    EXPECT_DOUBLE_EQ(valueOf(*schools, "HS000002", "pga").toDouble(), 0.11);
    EXPECT_DOUBLE_EQ(valueOf(*schools, "HS000003", "pgv").toDouble(), 2.0)
        << "far outside, the nearest zone still gives its values";
}

TEST_F(ProbabilisticAnalysis, EachProcedureRecordsItsFailureUnderItsOwnTag)
{
    writeTwoZones();
    const auto description = [](auto&& body) { return test::errorOf(body).description(); };

    EXPECT_EQ(description([&] { analyse("hzUncatalogued", 500); }),
              "The map engine failed in AnalyzeProbDefinedScenario");
    EXPECT_EQ(description([] { UpdatePointInvtForProbabilistic("trn.mdb", "hzGhost"); }),
              "The map engine failed in UpdatePointInvtForProbabilistic hzGhost in trn.mdb");

    const auto readOnly = geodatabase::Workspace::open(regionFolder() + "trn.mdb", true)
                              .openFeatureClass("hzHighwayBridge");
    EXPECT_EQ(description([&] { EqProbabilistic::AddField(*readOnly, "pga"); }),
              "The map engine failed in AddField ");
    EXPECT_EQ(description([&] { AddFields(*readOnly); }), "The map engine failed in AddField ");

    // Without the server's tract table the rebuild of an empty eqTract fails.
    catalogueTracts();
    executeSql("DROP TABLE hztract");
    EXPECT_EQ(description([&] { analyse("eqTract", 500); }),
              "The map engine failed in RecreateTractHFT");
    EXPECT_EQ(errorRecordCount(), 5);
}

TEST_F(ProbabilisticAnalysis, EmptyTractTableIsRebuiltWithDefaultSiteValues)
{
    writeTwoZones();
    catalogueTracts();
    executeSql("INSERT INTO hztract (Tract, CenLat, CenLongit) VALUES "
               "('06001400100', 40.5, -99.5), ('06001400200', 40.25, -97.75)");

    analyse("eqTract", 500);

    {
        const auto tracts = openClass("RegionBndry.mdb", "eqTract");
        ASSERT_EQ(tracts->rowCount(), 2);
        geodatabase::Cursor cursor = tracts->search();
        geodatabase::Row row;
        ASSERT_TRUE(cursor.next(row));
        EXPECT_EQ(row.value(tracts->findField("Tract")).toString(), "06001400100");
        EXPECT_DOUBLE_EQ(row.shape().firstPoint().x, -99.5);
        EXPECT_DOUBLE_EQ(row.shape().firstPoint().y, 40.5);
        EXPECT_DOUBLE_EQ(row.value(tracts->findField("Longitude")).toDouble(), -99.5);
        EXPECT_DOUBLE_EQ(row.value(tracts->findField("Latitude")).toDouble(), 40.5);
        for (const char* id : {"06001400100", "06001400200"}) {
            EXPECT_EQ(valueOf(*tracts, id, "stype").toString(), "D");
            EXPECT_EQ(valueOf(*tracts, id, "lqfsuscat").toInt32(), 0);
            EXPECT_EQ(valueOf(*tracts, id, "lndsuscat").toInt32(), 0);
            EXPECT_DOUBLE_EQ(valueOf(*tracts, id, "w_depth").toDouble(), 5.0);
        }
        EXPECT_DOUBLE_EQ(valueOf(*tracts, "06001400200", "pga").toDouble(), 0.12);
        EXPECT_EQ(sqlValue("SELECT w_depth || ' ' || pga FROM eqTract WHERE Tract = '06001400100'"),
                  "5.0 0.11");
    }

    // Only an empty table is rebuilt (the reads above are closed, so the file is not locked).
    analyse("eqTract", 100);
    EXPECT_EQ(openClass("RegionBndry.mdb", "eqTract")->rowCount(), 2);
}

TEST_F(ProbabilisticAnalysis, EveryFeatureIsWrittenAcrossFlushBatches)
{
    writeTwoZones();
    std::vector<test::Site> sites;
    for (int i = 0; i < 250; ++i) {
        const std::string id = std::to_string(100000 + i);
        sites.push_back({"HS" + id, -99.95 + 0.0075 * i, 40.5});
    }
    addPointInventory("hzSchool", sites, "ef.mdb");

    analyse("hzSchool", 500);

    const auto schools = openClass("ef.mdb", "hzSchool");
    geodatabase::Cursor cursor = schools->search();
    geodatabase::Row row;
    int west = 0;
    int east = 0;
    while (cursor.next(row)) {
        const double pga = row.value(schools->findField("pga")).toDouble();
        west += pga == 0.11;
        east += pga == 0.12;
    }
    EXPECT_EQ(west + east, 250);
    EXPECT_EQ(west, 127) << "west of -99 up to the 127th site";
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqSchool WHERE pga > 0"), "250");
}

TEST_F(ProbabilisticAnalysis, LineClassIsAnalysedInItsHazardTable)
{
    writeTwoZones();
    addLineInventory("hzRailwaySegment", {{"RS000001", "LINESTRING (-99.8 40.2, -99.2 40.8)"},
                                          {"RS000002", "LINESTRING (-97.8 40.2, -97.2 40.2)"}});

    analyse("hzRailwaySegment", 500, false);

    const auto hazard = openClass("trn.mdb", "EqRailwaySegmenthft");
    EXPECT_DOUBLE_EQ(valueOf(*hazard, "RS000001", "pgv").toDouble(), 12.0);
    EXPECT_DOUBLE_EQ(valueOf(*hazard, "RS000002", "pgv").toDouble(), 22.0) << "nearest zone";
    EXPECT_EQ(sqlValue("SELECT pgv FROM EqRailwaySegment WHERE RailwaySegmentId = 'RS000002'"),
              "22.0");

    // No blank between the procedure's name and the table in its tag.
    const auto error = test::errorOf([] { UpdateLineInvtForProbabilistic("trn.mdb", "hzNone"); });
    EXPECT_EQ(error.description(),
              "The map engine failed in UpdateLineInvtForProbabilistichzNone in trn.mdb");
}

} // namespace
} // namespace brevant::analysis
